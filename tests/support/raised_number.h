#pragma once

#include "shared/runtime_error.h"

namespace opane::test {

/// The number of the RuntimeError that the call raises; 0 when it raises none.
template <class Call>
int raisedNumber(Call&& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return static_cast<int>(error.number());
    }
    return 0;
}

}  // namespace opane::test
