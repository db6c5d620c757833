#pragma once

#include <string>

#include "shared/runtime_error.h"

namespace opane::test {

/// The number of the RuntimeError that the call raises, a blank and its text; empty when it raises none.
template <class Call>
std::string raisedText(Call&& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return std::to_string(static_cast<int>(error.number())) + ' ' + error.what();
    }
    return {};
}

/// The number of the RuntimeError that the call raises; 0 when it raises none.
template <class Call>
int raisedNumber(Call&& call) {
    const std::string text = raisedText(call);
    return text.empty() ? 0 : std::stoi(text);
}

}  // namespace opane::test
