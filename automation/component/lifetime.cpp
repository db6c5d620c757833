#include "automation/component/lifetime.h"

#include <atomic>

namespace opane::component {
namespace {

std::atomic<long> holdings = 0;  // objects and class factories
std::atomic<long> locks = 0;

}  // namespace

bool isHeld() noexcept {
    return holdings > 0 || locks > 0;
}

Holding::Holding() noexcept {
    ++holdings;
}

Holding::~Holding() {
    --holdings;
}

void lockServer(bool lock) noexcept {
    if (lock) {
        ++locks;
        return;
    }
    long held = locks;
    while (held > 0 && !locks.compare_exchange_weak(held, held - 1)) {  // not one that another host has put on
    }
}

}  // namespace opane::component
