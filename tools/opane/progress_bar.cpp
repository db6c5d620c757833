#include "progress_bar.h"

#include <iostream>
#include <utility>

#include "platform/console.h"

namespace opane::tool {
namespace {

constexpr std::size_t kCells = 40;
constexpr auto kStartOfLine = "\r";
constexpr auto kWipeLine = "\r\033[K";

}  // namespace

ProgressBar::ProgressBar(std::string label, std::size_t total, bool shown)
    : label_(std::move(label)), total_(total), shown_(shown && total > 0 && standardErrorIsTerminal()) {
    draw();
}

ProgressBar::~ProgressBar() {
    if (shown_)
        std::cerr << kWipeLine << std::flush;
}

void ProgressBar::advance(std::size_t done) {
    done_ += done;
    draw();
}

void ProgressBar::draw() const {
    if (!shown_)
        return;
    const std::size_t cells = kCells * done_ / total_;
    std::cerr << kStartOfLine << label_ << " [" << std::string(cells, '#') << std::string(kCells - cells, ' ') << "] "
              << done_ << " of " << total_ << " bytes" << std::flush;
}

}  // namespace opane::tool
