#include "run_on_link.h"

#include "shared/runtime_error.h"

namespace opane::tool {
namespace {

/// How far a command came that did not succeed, whatever has ended it.
void sayHowFar(Connection& connection, const std::string& name, const AtWorst& atWorst, bool isSaidWhy) {
    Session& session = connection.session();
    const std::string frames = connection.watcher().framesText();
    std::string text = "\"" + name + "\": " + frames;
    if (!isSaidWhy && session.isCancelled())
        text = "\"" + name + "\": " + session.whyNot() + "; " + frames;
    else if (!isSaidWhy)
        text = "the module refused \"" + name + "\" or did not answer" +
               (connection.watcher().hasConfirmed() ? "; " + frames : "");
    session.report().fail(text);
    if (const std::string more = atWorst ? atWorst(connection) : ""; !more.empty())
        session.report().fail(more);
}

}  // namespace

ExitStatus repeatRuns(Session& session, const std::function<ExitStatus()>& run) {
    Report& report = session.report();
    const int runs = session.arguments().repeat;
    for (int i = 1; i <= runs; ++i) {
        if (i > 1) {
            if (report.hasBegun())
                report.end(kSuccess);
            report.begin();
        }
        const bool endsBefore = i > 1 && session.isCancelled();
        if (endsBefore)
            report.fail(session.whyNot());
        const ExitStatus status = endsBefore ? kModuleFailed : run();
        if (status != kSuccess) {  // a silent module would take its time at every one of them
            if (runs > 1)
                Report::note("ended at run " + std::to_string(i) + " of " + std::to_string(runs));
            return status;
        }
    }
    return kSuccess;
}

ExitStatus repeatOnModule(Session& session, const std::function<ExitStatus(Connection&)>& run) {
    Connection connection(session);
    if (!connection.synchronize())
        return kModuleFailed;
    return repeatRuns(session, [&] {
        connection.watcher().beginRun();
        const ExitStatus status = run(connection);
        if (session.report().done().empty())
            session.report().done(connection.watcher().framesText());
        return status;
    });
}

ExitStatus runOnModule(Session& session, const char* name, const std::function<bool(Connection&)>& run,
                       const AtWorst& atWorst) {
    return repeatOnModule(session, [&](Connection& connection) {
        bool succeeded = false;
        try {
            succeeded = run(connection);
        } catch (const RuntimeError&) {
            sayHowFar(connection, name, atWorst, true);
            throw;
        }
        if (!succeeded)
            sayHowFar(connection, name, atWorst, false);
        return succeeded ? kSuccess : kModuleFailed;
    });
}

ExitStatus runOnLink(Session& session, const char* name, const std::function<bool(clsOPane&)>& operation,
                     const AtWorst& atWorst) {
    return runOnModule(
        session, name, [&](Connection& connection) { return operation(connection.link()); }, atWorst);
}

}  // namespace opane::tool
