#pragma once

#include <memory>

#include "arguments.h"
#include "automation/clsOPaneCommDLL.h"
#include "link/clsOPane.h"
#include "platform/services.h"

namespace opane::tool {

/// The public object of one run of the program, with the ports, the log and the link that the options ask for.
class Connection {
public:
    /// Makes the object. Opens no port but the one asked for and sends nothing.
    explicit Connection(const Arguments& arguments);

    /// Opens the port as the options say and does the handshake.
    /// @return whether the module answered; when it did not, standard error says so
    bool synchronize();

    clsOPaneCommDLL& object() { return *object_; }
    clsOPane& link() { return *link_; }

private:
    bool handshake();
    void openLog();

    const Arguments& arguments_;
    ServicesScope services_;
    std::unique_ptr<clsOPaneCommDLL> object_;
    std::shared_ptr<clsOPane> link_;
};

}  // namespace opane::tool
