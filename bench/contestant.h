#pragma once

#include <vector>

#include "bench/smalllp.h"

namespace bench {

// Where a host wants the results: n elements each.
struct Results {
    explicit Results(int n) : x(static_cast<std::size_t>(n)), duals(x), slacks(x), reducedcosts(x)
    {
    }
    std::vector<double> x, duals, slacks, reducedcosts;
};

struct Outcome {
    bool optimal = false;
    double objective = 0.0;
    int pivots = 0;
};

// All that a host does for one model: hands it over from arrays in memory, solves it from nothing,
// reads objective, point, duals, slacks and reduced costs, and releases it.
using SolveOne = Outcome (*)(SmallLp& lp, Results& results);

struct Contestant {
    const char* name;
    SolveOne solve;
};

// The other solvers of this build. Each stands in a file of its own, which puts it on the list.
inline std::vector<Contestant>& peers()
{
    static std::vector<Contestant> list;
    return list;
}

struct AddPeer {
    AddPeer(const char* name, SolveOne solve) { peers().push_back({name, solve}); }
};

}  // namespace bench
