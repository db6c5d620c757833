#include "simulator/descriptor.h"

#include <unistd.h>

#include <utility>

namespace opane::simulator {

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
}

Descriptor::~Descriptor() {
    if (number_ >= 0)
        ::close(number_);
}

}  // namespace opane::simulator
