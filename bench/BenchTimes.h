#pragma once

#include <algorithm>
#include <vector>

// The median of a list of times; 0 for none.
inline double medianOf(std::vector<double> times) {
    if (times.empty())
        return 0;
    std::sort(times.begin(), times.end());
    const size_t mid = times.size() / 2;
    return times.size() % 2 ? times[mid] : (times[mid - 1] + times[mid]) / 2;
}
