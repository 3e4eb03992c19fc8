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

// The median of the rounds' ratios a[i] / b[i]. The two runs of a round are neighbours in time,
// so a disk or machine that slows down from one round to the next leaves their ratio alone,
// where it moves the ratio of the two medians.
inline double medianRatio(const std::vector<double>& a, const std::vector<double>& b) {
    std::vector<double> ratios;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i)
        ratios.push_back(b[i] > 0 ? a[i] / b[i] : 0);
    return medianOf(std::move(ratios));
}
