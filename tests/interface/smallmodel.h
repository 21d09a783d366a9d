#pragma once

#include <vector>

#include "include/tarnwick.h"
#include "interface/problem.h"

namespace tarnwick {

// A loaded model of two columns and three rows, and the arrays behind it:
//
//     min x + y   subject to   x <= 4,   x + y >= 1,   y = 2,   0 <= x, y <= 9
class SmallModel {
  public:
    SmallModel()
    {
        lp = loadlp("small", 2, 3, 1, obj.data(), rhs.data(), sense.data(), matbeg.data(),
                    matcnt.data(), matind.data(), matval.data(), lb.data(), ub.data(), nullptr, 0,
                    0, 4);
    }
    ~SmallModel() { unloadprob(&lp); }
    SmallModel(const SmallModel&) = delete;
    SmallModel& operator=(const SmallModel&) = delete;

    Problem* lp = nullptr;
    std::vector<double> obj{1.0, 1.0}, rhs{4.0, 1.0, 2.0};
    std::vector<char> sense{'L', 'G', 'E'};
    std::vector<std::int32_t> matbeg{0, 2}, matcnt{2, 2}, matind{0, 1, 1, 2};
    std::vector<double> matval{1.0, 1.0, 1.0, 1.0};
    std::vector<double> lb{0.0, 0.0}, ub{9.0, 9.0};
};

}  // namespace tarnwick
