#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace opane::fuzz {

/// Takes the fuzzer's bytes from the front; 0 when there are none left.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool isEmpty() const { return rest_.empty(); }

    std::uint8_t byte() {
        if (rest_.empty())
            return 0;
        const std::uint8_t first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }
    std::uint16_t word() {
        const std::uint8_t low = byte();
        return static_cast<std::uint16_t>(low | byte() << 8);
    }
    std::vector<std::uint8_t> bytes(std::size_t atMost) {
        const auto taken = rest_.first(std::min(atMost, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return {taken.begin(), taken.end()};
    }
    std::vector<std::uint8_t> rest() { return bytes(rest_.size()); }
    /// Up to the next character of that kind, which is dropped.
    std::string textUpTo(char end) {
        const auto found = std::find(rest_.begin(), rest_.end(), static_cast<std::uint8_t>(end));
        std::string text(rest_.begin(), found);
        rest_ = rest_.subspan(std::min(rest_.size(), text.size() + 1));
        return text;
    }

private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace opane::fuzz
