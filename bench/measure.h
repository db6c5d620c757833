#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace opane::bench {

inline constexpr int kRounds = 7;
inline constexpr double kBitsPerByte = 10;

class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count(); }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Processor time used so far. @param clock  CLOCK_THREAD_CPUTIME_ID or CLOCK_PROCESS_CPUTIME_ID
inline double processorSeconds(clockid_t clock) {
    timespec used{};
    clock_gettime(clock, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// A number for a remark.
inline std::string number(double value, const char* unit) {
    char text[48];
    std::snprintf(text, sizeof text, "%.4g %s", value, unit);
    return text;
}

}  // namespace opane::bench
