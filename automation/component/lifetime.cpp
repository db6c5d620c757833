#include "automation/component/lifetime.h"

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
    if (lock)
        ++locks;
    else if (--locks < 0)
        ++locks;  // taken away more often than added
}

}  // namespace opane::component
