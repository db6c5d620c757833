#include "platform/posix/unshared_descriptor.h"

#include <pthread.h>

#include <mutex>
#include <new>

namespace opane {
namespace {

std::mutex changing;  // the chain of them; nobody forks meanwhile

}  // namespace

UnsharedDescriptor* UnsharedDescriptor::first_ = nullptr;

UnsharedDescriptor::UnsharedDescriptor(const char* path, int flags) {
    [[maybe_unused]] static const bool handled = [] {
        if (pthread_atfork([] { changing.lock(); }, [] { changing.unlock(); }, &closeAllInChild) != 0)
            throw std::bad_alloc();
        return true;
    }();
    const std::lock_guard lock(changing);
    file_ = openFile(path, flags);
    next_ = first_;
    first_ = this;
}

UnsharedDescriptor::~UnsharedDescriptor() {
    const std::lock_guard lock(changing);
    UnsharedDescriptor** link = &first_;
    while (*link != this)
        link = &(*link)->next_;
    *link = next_;
}

void UnsharedDescriptor::closeAllInChild() {
    for (UnsharedDescriptor* each = first_; each != nullptr; each = each->next_)
        each->file_.reset();
    changing.unlock();
}

}  // namespace opane
