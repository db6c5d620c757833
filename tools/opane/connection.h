#pragma once

#include <memory>

#include "automation/clsOPaneCommDLL.h"
#include "link/clsOPane.h"
#include "link/connection.h"
#include "platform/services.h"
#include "session.h"
#include "watcher.h"

namespace opane::tool {

/// The public object of one run of the program, with the ports, the log and the link that the options ask for.
class Connection {
public:
    /// Makes the object, after a look whether its log can be written. Opens no port but the one asked for and sends
    /// nothing.
    explicit Connection(Session& session) : Connection(session, session.arguments()) {}
    /// With other options than the session's.
    Connection(Session& session, const Arguments& arguments);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Opens the port as the options say and does the handshake, again after one that failed (--connect-retries), and
    /// as long as --wait says.
    /// @return whether the module answered; when it did not, the report says why
    /// @throws RuntimeError as makeConnection, when the time to wait is over
    bool synchronize();

    Session& session() { return session_; }
    Report& report() { return session_.report(); }
    clsOPaneCommDLL& object() { return *object_; }
    clsOPane& link() { return *link_; }
    Watcher& watcher() { return watcher_; }

private:
    Session& session_;
    const Arguments& arguments_;
    ConnectionChoice choice_;
    ServicesScope services_;
    Watcher watcher_;
    std::unique_ptr<clsOPaneCommDLL> object_;
    std::shared_ptr<clsOPane> link_;
};

}  // namespace opane::tool
