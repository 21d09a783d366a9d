/* A brewery makes ale and beer from limited corn, hops and malt, for the highest profit. */
#include <stdio.h>
#include <tarnwick.h>

int main(void)
{
    double profit[] = {13, 23};                 /* for a barrel of ale, of beer */
    double stock[] = {480, 160, 1190};          /* of corn, hops and malt */
    char sense[] = {'L', 'L', 'L'};             /* use no more than the stock */
    int32_t begin[] = {0, 3}, count[] = {3, 3}; /* where a product's column lies */
    int32_t row[] = {0, 1, 2, 0, 1, 2};         /* what it takes of which row */
    double amount[] = {5, 4, 35, 15, 4, 20};
    double lower[] = {0, 0}, upper[] = {1e30, 1e30};

    Problem* lp = loadlp("brewery", 2, 3, -1, profit, stock, sense, begin, count, row, amount,
                         lower, upper, NULL, 0, 0, 6);
    if (!lp) return 1;

    int32_t status = 0;
    double best = 0, barrels[2] = {0}, price[3] = {0}, left[3] = {0};
    if (optimize(lp) == 0) solution(lp, &status, &best, barrels, price, left, NULL);
    unloadprob(&lp);

    printf("status %d, profit %.2f\n", (int)status, best);
    printf("ale %.2f, beer %.2f barrels\n", barrels[0], barrels[1]);
    printf("one more of corn is worth %.2f, of hops %.2f\n", price[0], price[1]);
    printf("malt left over: %.2f\n", left[2]);
    return status == STAT_OPTIMAL ? 0 : 1;
}
