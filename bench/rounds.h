#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

namespace bench {

// Seconds of processor time of this process: what other processes take does not count.
inline double processor_seconds()
{
    return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
}

inline double median(std::vector<double> values)
{
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 ? values[half] : 0.5 * (values[half - 1] + values[half]);
}

// The times of several contestants that work in turn, round after round, so that a machine whose
// pace drifts, or that is busy at times, treats all of them alike.
class Rounds {
  public:
    explicit Rounds(std::size_t contestants) : seconds_(contestants) {}

    template <class Work>
    void time(std::size_t contestant, const Work& work)
    {
        const double start = processor_seconds();
        work();
        add(contestant, processor_seconds() - start);
    }
    void add(std::size_t contestant, double seconds) { seconds_[contestant].push_back(seconds); }

    double last(std::size_t contestant) const { return seconds_[contestant].back(); }
    double median_of(std::size_t contestant) const { return median(seconds_[contestant]); }

    // How many times as long one takes as another: the median of what the rounds say, each of
    // which compares two neighbours in time.
    double ratio(std::size_t slow, std::size_t fast) const
    {
        std::vector<double> ratios;
        for (std::size_t k = 0; k < seconds_[fast].size(); ++k)
            ratios.push_back(seconds_[slow][k] / seconds_[fast][k]);
        return median(ratios);
    }

  private:
    std::vector<std::vector<double>> seconds_;  // one list for each contestant
};

}  // namespace bench
