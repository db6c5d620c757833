#pragma once

#include <cstddef>
#include <string>

namespace opane::tool {

/// A bar on standard error while something lasts; nothing when that is no terminal. It is wiped away at its end.
class ProgressBar {
public:
    /// @param shown  false: not even on a terminal
    ProgressBar(std::string label, std::size_t total, bool shown);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void advance(std::size_t done);

private:
    void draw() const;

    std::string label_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool shown_;
};

}  // namespace opane::tool
