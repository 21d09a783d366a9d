/* A shop that orders by a simple rule: when stock and orders on the way fall to a reorder point, order
 * a fixed lot. Both numbers are whole, the price per piece comes from the supplier's table, and what a
 * rule costs is known only by trying it on a year of demand: a model of steps and jumps. */
#include <stdio.h>
#include <tarnwick.h>

enum { DAYS = 365, LEAD = 7, WEEK = 7 };

/* Pieces sold on each day of a week, and in some weeks of the year twice as many. */
static int demand(int day)
{
    static const int of_weekday[WEEK] = {4, 6, 5, 8, 12, 15, 0};
    const int week = day / WEEK;
    return of_weekday[day % WEEK] * (week % 13 == 12 ? 2 : 1) + day * 7 % 3;
}

/* The supplier's table: the price of a piece in lots of so many. */
static double price(double lot)
{
    static const struct {
        double from, price;
    } table[] = {
        {200, 8.7 },
        {120, 9.1 },
        {50,  9.6 },
        {0,   10.0}
    };
    int k = 0;
    while (lot < table[k].from) ++k;
    return table[k].price;
}

/* Simulates the rule "at var[0] order var[1]": the cost of a day, and the share of demand met. */
static int32_t TARNWICK_CALL simulate(Problem* lp, int32_t numcols, int32_t numrows, double* objval,
                                      double* lhs, double* var, int32_t varone, int32_t vartwo)
{
    const double point = var[0], lot = var[1];
    double stock = point + lot, on_the_way = 0, due[DAYS + LEAD] = {0};
    double cost = 0, asked = 0, met = 0;
    (void)lp, (void)numcols, (void)numrows, (void)varone, (void)vartwo;

    for (int day = 0; day < DAYS; ++day) {
        stock += due[day];
        on_the_way -= due[day];
        const double want = demand(day), sold = want < stock ? want : stock;
        stock -= sold;
        asked += want;
        met += sold;
        if (stock + on_the_way <= point) {
            cost += 35 + lot * price(lot);
            due[day + LEAD] = lot;
            on_the_way += lot;
        }
        cost += 0.02 * stock;
        if (stock > 150) cost += 6; /* a second room must be rented for the day */
    }
    *objval = (cost - 9 * (stock + on_the_way)) / DAYS; /* what is left has its value */
    lhs[0] = met / asked;
    return 0;
}

/* Called after each new generation of points; 0 goes on. */
static int32_t TARNWICK_CALL show_progress(Problem* lp, int32_t event)
{
    static double shown = 1e30;
    double best = 0;
    int32_t generations = 0;
    (void)event;
    getcallbackinfo(lp, NULL, CB_BESTINTEGER, &best);
    getcallbackinfo(lp, NULL, CB_NODES, &generations);
    if (best != 0 && best < shown) {
        shown = best;
        printf("  after %4d generations: %.4f a day\n", (int)generations, best);
    }
    return generations < 3000 ? 0 : STAT_MIP_NODELIM_FEAS;
}

int main(void)
{
    double gradient[2], derivative[2]; /* buffers that a non-smooth model leaves alone */
    double service[] = {0.97};         /* sell at least so much of what is asked for */
    char sense[] = {'G'}, whole[] = {'I', 'I'};
    double rule[] = {100, 60}, lower[] = {0, 1}, upper[] = {300, 400};

    Problem* lp = loadnlp("shop", 2, 1, 1, gradient, service, sense, NULL, NULL, NULL, derivative,
                          rule, lower, upper, NULL, 2, simulate, NULL);
    if (!lp || loadnltype(lp, NULL, NULL) != 0 || loadctype(lp, whole) != 0) return 1;
    setmipcallbackfunc(lp, show_progress);
    setintparam(lp, PARAM_NSPSTALLTIME, 5);

    int32_t status = 0;
    double cost = 0, slack = 0;
    if (mipoptimize(lp) == 0) solution(lp, &status, &cost, rule, NULL, &slack, NULL);
    printf("status %d: at %.0f order %.0f, %.4f a day, %.2f%% of the demand met\n", (int)status,
           rule[0], rule[1], cost, 100 * (service[0] - slack));

    /* What the other members of the final population look like. */
    const char* const name[] = {"reorder point", "lot", "demand met"};
    double mean[3], spread[3], least[3], most[3];
    varstat(lp, 0, 1, mean, spread, least, most);
    constat(lp, 0, 0, mean + 2, spread + 2, least + 2, most + 2);
    for (int i = 0; i < 3; ++i)
        printf("%-14s mean %8.3f  deviation %8.3f  from %8.3f to %8.3f\n", name[i], mean[i],
               spread[i], least[i], most[i]);
    unloadprob(&lp);
    return status == STAT_CONVERGED || status == STAT_STALLED || status == STAT_MIP_NODELIM_FEAS
               ? 0
               : 1;
}
