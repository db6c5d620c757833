#pragma once

#include "platform/posix/file_descriptor.h"

namespace opane {

/// Owns a descriptor that no child process has: a child that is made by fork finds it closed, as close-on-exec closes
/// it for one that starts another program. A child that goes round the system's fork handlers (clone, _Fork) shares it.
class UnsharedDescriptor {
public:
    /// As openFile; not open, with errno, when the system refuses.
    UnsharedDescriptor(const char* path, int flags);
    /// Closes it, and does nothing else to it. A child that another thread forks at that very moment may share it.
    ~UnsharedDescriptor();
    UnsharedDescriptor(const UnsharedDescriptor&) = delete;
    UnsharedDescriptor& operator=(const UnsharedDescriptor&) = delete;

    explicit operator bool() const { return static_cast<bool>(file_); }
    int get() const { return file_.get(); }  ///< -1 when it is not open

private:
    static void closeAllInChild();

    static UnsharedDescriptor* first_;  // of all of this process
    UnsharedDescriptor* next_ = nullptr;
    FileDescriptor file_;
};

}  // namespace opane
