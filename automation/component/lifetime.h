#pragma once

#include <atomic>

#include "platform/component_runtime.h"

namespace opane::component {

/// Whether a host holds anything of the library: objects, class factories and locks, counted together.
bool isHeld() noexcept;

/// Counts as long as it lives. The parts of the library that a host can hold have one.
class Holding {
public:
    Holding() noexcept;
    ~Holding();
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;
};

/// Adds or takes away a lock of a host's.
void lockServer(bool lock) noexcept;

/// The reference count of an object, which begins with one reference, its maker's. Counts may be changed on any thread.
class ReferenceCount {
public:
    ULONG add() noexcept { return ++count_; }
    /// @return 0: that was the last one
    ULONG release() noexcept { return --count_; }

private:
    std::atomic<ULONG> count_{1};
};

}  // namespace opane::component
