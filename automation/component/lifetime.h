#pragma once

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

}  // namespace opane::component
