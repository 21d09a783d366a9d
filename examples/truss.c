/* Three bars hold a load over a wall's two hinges and their middle. Their cross-sections are to be
 * as light as the stress in each bar allows. The outer two bars are alike:
 *
 *     minimise  100 (2 sqrt(2) a + b)                  volume, a and b being the cross-sections
 *     stress of bar 1   2 (sqrt(2) a + b) / d <= 2     d = sqrt(2) a a + 2 a b
 *     stress of bar 2   2 sqrt(2) a / d       <= 2
 *     stress of bar 3   2 b / d               <= 2
 */
#include <math.h>
#include <stdio.h>
#include <tarnwick.h>

static const double load = 2, root2 = 1.4142135623730951;

/* Objective and rows at the point var. */
static int32_t TARNWICK_CALL truss(Problem* lp, int32_t numcols, int32_t numrows, double* objval,
                                   double* lhs, double* var, int32_t varone, int32_t vartwo)
{
    double a = var[0], b = var[1], d = root2 * a * a + 2 * a * b;
    (void)lp, (void)numcols, (void)numrows, (void)varone, (void)vartwo;
    if (!(d > 0)) return 1; /* no truss at all: the evaluation fails */
    *objval = 100 * (2 * root2 * a + b);
    lhs[0] = load * (root2 * a + b) / d;
    lhs[1] = load * root2 * a / d;
    lhs[2] = load * b / d;
    return 0;
}

/* Their derivatives: obj by variable, matval by variable and row. */
static int32_t TARNWICK_CALL slopes(Problem* lp, int32_t numcols, int32_t numrows, int32_t matnz,
                                    double* objval, double* obj, int32_t* matbeg, int32_t* matcnt,
                                    int32_t* matind, double* matval, double* x, char* objtype,
                                    char* matvaltype)
{
    double a = x[0], b = x[1], d = root2 * a * a + 2 * a * b;
    double by_a = 2 * root2 * a + 2 * b, by_b = 2 * a, factor = load / (d * d);
    (void)lp, (void)numcols, (void)numrows, (void)matnz, (void)objval, (void)matbeg;
    (void)matcnt, (void)matind, (void)objtype, (void)matvaltype;
    obj[0] = 200 * root2;
    obj[1] = 100;
    matval[0] = factor * (root2 * d - (root2 * a + b) * by_a);
    matval[1] = factor * (root2 * d - root2 * a * by_a);
    matval[2] = factor * -b * by_a;
    matval[3] = factor * (d - (root2 * a + b) * by_b);
    matval[4] = factor * -root2 * a * by_b;
    matval[5] = factor * (d - b * by_b);
    return 0;
}

int main(void)
{
    double gradient[2], derivatives[6]; /* the library's buffers for obj and matval */
    double limit[] = {2, 2, 2};
    char sense[] = {'L', 'L', 'L'};
    double start[] = {1, 1}, lower[] = {0.01, 0.01}, upper[] = {10, 10};

    Problem* lp = loadnlp("truss", 2, 3, 1, gradient, limit, sense, NULL, NULL, NULL, derivatives,
                          start, lower, upper, NULL, 6, truss, slopes);
    if (!lp) return 1;
    setintparam(lp, PARAM_NLPDERIVMODE, 2); /* derivatives come from slopes */

    int32_t status = 0;
    double volume = 0, bar[2] = {0}, price[3] = {0}, slack[3] = {0};
    if (optimize(lp) == 0) solution(lp, &status, &volume, bar, price, slack, NULL);
    unloadprob(&lp);

    printf("status %d, volume %.3f\n", (int)status, volume);
    printf("outer bars %.2f, middle bar %.2f\n", bar[0], bar[1]);
    printf("stress to spare: %.2f, %.2f, %.2f\n", fabs(slack[0]), slack[1], slack[2]);
    return status == STAT_OPTIMAL || status == STAT_CONVERGED ? 0 : 1;
}
