#include "platform/temporary_name.h"

#include <algorithm>
#include <random>

namespace opane {
namespace {

constexpr std::size_t kMarkDigits = 16;
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::string_view kEnding = ".part";
constexpr std::size_t kLongestName = 255;  // of the usual file systems

std::string stemOf(std::string_view name) {
    return std::string(name.substr(0, kLongestName - kMarkDigits - kEnding.size() - 1)) + '.';
}

}  // namespace

std::string temporaryName(std::string_view name) {
    std::random_device random;  // the system's, not a sequence
    std::string result = stemOf(name);
    for (std::size_t digit = 0; digit < kMarkDigits; ++digit)
        result += kDigits[random() % kDigits.size()];
    return result.append(kEnding);
}

bool isTemporaryName(std::string_view candidate, std::string_view name) {
    const std::string stem = stemOf(name);
    if (candidate.size() != stem.size() + kMarkDigits + kEnding.size() || !candidate.starts_with(stem) ||
        !candidate.ends_with(kEnding))
        return false;
    const auto mark = candidate.substr(stem.size(), kMarkDigits);
    return std::ranges::all_of(mark, [](char digit) { return kDigits.find(digit) != std::string_view::npos; });
}

}  // namespace opane
