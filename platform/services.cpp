#include "platform/services.h"

#include <cstddef>
#include <new>

namespace opane {
namespace {

// A plain pointer, without a destructor: the scopes own the sets.
thread_local const Services* threadServices = nullptr;

}  // namespace

const Services& services() {
    // Never destroyed, as objects may outlive static destructors, and without memory of its own, as a component that is
    // unloaded and loaded again would leave it behind.
    alignas(Services) static std::byte place[sizeof(Services)];
    static const auto* const system = new (place) Services;
    return threadServices != nullptr ? *threadServices : *system;
}

ServicesScope::ServicesScope() : current_(services()), outer_(threadServices) {
    threadServices = &current_;
}

ServicesScope::~ServicesScope() {
    threadServices = outer_;
}

}  // namespace opane
