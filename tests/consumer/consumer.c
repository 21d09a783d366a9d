/* A host program in C: loads a small model, solves it and checks the answer.
 *
 *     maximise 3 x + 5 y   subject to   x <= 4,   2 y <= 12,   3 x + 2 y <= 18,   x, y >= 0
 *
 * The optimum is 36 at (2, 6), with the duals 0, 1.5 and 1. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <tarnwick.h>

enum { COLUMNS = 2, ROWS = 3, ENTRIES = 4 };

static void expect(const char* what, double got, double want)
{
    printf("%s = %g\n", what, got);
    if (!(fabs(got - want) <= 1e-9)) {
        fprintf(stderr, "%s should be %g\n", what, want);
        exit(1);
    }
}

int main(void)
{
    double obj[COLUMNS] = {3.0, 5.0};
    double rhs[ROWS] = {4.0, 12.0, 18.0};
    char sense[ROWS] = {'L', 'L', 'L'};
    int32_t matbeg[COLUMNS] = {0, 2};
    int32_t matcnt[COLUMNS] = {2, 2};
    int32_t matind[ENTRIES] = {0, 2, 1, 2};
    double matval[ENTRIES] = {1.0, 3.0, 2.0, 2.0};
    double lb[COLUMNS] = {0.0, 0.0};
    double ub[COLUMNS] = {1e30, 1e30};

    int32_t status = STAT_NONE;
    double objval = 0.0;
    double x[COLUMNS], piout[ROWS], slack[ROWS], dj[COLUMNS];

    Problem* lp = loadlp("consumer", COLUMNS, ROWS, -1, obj, rhs, sense, matbeg, matcnt, matind,
                         matval, lb, ub, NULL, 0, 0, ENTRIES);
    if (!lp) {
        fputs("loadlp refused the model\n", stderr);
        return 1;
    }
    expect("optimize", optimize(lp), 0);
    expect("solution", solution(lp, &status, &objval, x, piout, slack, dj), 0);
    expect("status", status, STAT_OPTIMAL);
    expect("objective", objval, 36.0);
    expect("x", x[0], 2.0);
    expect("y", x[1], 6.0);
    expect("dual of the first row", piout[0], 0.0);
    expect("dual of the second row", piout[1], 1.5);
    expect("dual of the third row", piout[2], 1.0);
    expect("slack of the first row", slack[0], 2.0);
    expect("unloadprob", unloadprob(&lp), 0);
    return 0;
}
