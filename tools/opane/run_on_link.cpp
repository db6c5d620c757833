#include "run_on_link.h"

#include <iostream>

#include "print.h"

namespace opane::tool {

ExitStatus repeatOnModule(const Arguments& arguments, const std::function<ExitStatus(Connection&)>& run) {
    Connection connection(arguments);
    if (!connection.synchronize())
        return kModuleFailed;
    for (int i = 1; i <= arguments.repeat; ++i) {
        const ExitStatus status = run(connection);
        if (status != kSuccess) {  // a silent module would take its time at every one of them
            if (arguments.repeat > 1)
                std::cerr << "opane: ended at run " << i << " of " << arguments.repeat << '\n';
            return status;
        }
    }
    return kSuccess;
}

ExitStatus runOnModule(const Arguments& arguments, const char* name, const std::function<bool(Connection&)>& run) {
    bool succeeded = true;
    const ExitStatus status = repeatOnModule(arguments, [&](Connection& connection) {
        succeeded = run(connection);
        return succeeded ? kSuccess : kModuleFailed;
    });
    if (status != kSuccess && succeeded)  // no module: said already
        return status;
    return reportCommand(arguments, name, succeeded);
}

ExitStatus runOnLink(const Arguments& arguments, const char* name, const std::function<bool(clsOPane&)>& operation) {
    return runOnModule(arguments, name, [&](Connection& connection) { return operation(connection.link()); });
}

}  // namespace opane::tool
