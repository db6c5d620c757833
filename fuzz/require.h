#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace opane::fuzz {

/// Stops the fuzzer, which then keeps the input that led here.
inline void require(bool condition, std::string_view what) {
    if (condition)
        return;
    std::fprintf(stderr, "WRONG: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

}  // namespace opane::fuzz
