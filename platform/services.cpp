#include "platform/services.h"

namespace opane {
namespace {

// A plain pointer, without a destructor: the scopes own the sets.
thread_local const Services* threadServices = nullptr;

}  // namespace

const Services& services() {
    static const auto* const system = new Services;  // kept to the end: objects may outlive static destructors
    return threadServices != nullptr ? *threadServices : *system;
}

std::string devicePath(std::int16_t comPort) {
    const auto map = services().portMap;
    return map ? map(comPort) : systemDevicePath(comPort);
}

ServicesScope::ServicesScope() : current_(services()), outer_(threadServices) {
    threadServices = &current_;
}

ServicesScope::~ServicesScope() {
    threadServices = outer_;
}

}  // namespace opane
