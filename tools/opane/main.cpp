#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <new>

#include "arguments.h"
#include "platform/console.h"
#include "report.h"
#include "session.h"
#include "shared/runtime_error.h"
#include "subcommands.h"
#include "tools/command_line/command_line.h"

namespace {

using namespace opane;
using namespace opane::tool;

/// Whether the words ask for --json, also when the parser refuses them.
bool asksForJson(const std::vector<std::string>& words) {
    const auto end = std::find(words.begin(), words.end(), "--");
    return std::any_of(words.begin(), end,
                       [](const std::string& word) { return word == "--json" || word.starts_with("--json="); });
}

/// Runs what the arguments ask for; every failure that is raised becomes a text and a status.
ExitStatus runReported(const Run& run, Session& session) {
    const auto failed = [&session](ExitStatus status, const std::string& text) {
        session.report().fail(text);
        return status;
    };
    try {
        const ExitStatus status = run(session);
        if (status != kSuccess && session.isCancelled() && !session.report().hasFailed())
            session.report().fail(session.whyNot());
        return status;
    } catch (const OutputLost&) {
        throw;
    } catch (const InputError& error) {
        return failed(kWrongInput, error.what());
    } catch (const RuntimeError& error) {
        return failed(kErrorRaised, "error " + std::to_string(static_cast<int>(error.number())) + ": " + error.what());
    } catch (const std::bad_alloc&) {
        return failed(kErrorRaised, "error 7: out of memory");
    } catch (const std::exception& error) {
        return failed(kErrorRaised, error.what());
    }
}

/// Gives the program its arguments and runs it.
/// @throws OutputLost
ExitStatus runProgram(const std::vector<std::string>& words, Report& report) {
    Arguments arguments;
    Run chosen;
    CLI::App app("Drives an OPane LCD module over a serial line.", "opane");
    app.footer(
        "Exit status: 0 success, 1 the module refused or did not answer, or the command was interrupted, 2 wrong usage "
        "or\n"
        "input, 3 an error.\n"
        "Example:\n  opane --device /dev/ttyUSB0 text \"Hello, world\" --line 2 --column 3");
    app.option_defaults()->take_last();  // given again, an option takes its last value
    addCommonOptions(app, arguments);
    addSubcommands(app, chosen);
    const auto ended = [&report](ExitStatus status) {
        report.end(status);
        return status;
    };
    const auto refused = [&](const std::string& text, const char* more = nullptr) {
        report.command(commandName(app));
        report.fail(text);
        if (more != nullptr)
            std::cerr << more << '\n';
        return ended(kWrongInput);
    };
    const auto endOfOptions = std::find(words.begin(), words.end(), "--");
    const auto withoutValue = std::find_if(words.begin(), endOfOptions, [&app](const std::string& word) {
        return word.find('=') + 1 == word.size() && takesValue(app, word.substr(0, word.size() - 1));
    });
    if (withoutValue != endOfOptions)  // the parser would take the next word for its value
        return refused(*withoutValue + " is empty; expected a value behind it");
    try {
        std::vector<std::string> reversed(words.rbegin(), words.rend());  // as the parser takes them
        app.parse(reversed);
    } catch (const CLI::CallForVersion&) {
        report.command("version");
        report.values()["version"] = OPANE_VERSION;
        if (!report.json())
            std::cout << "opane " OPANE_VERSION "\n";
        return ended(kSuccess);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            return refused(tools::complaint(app, error), "opane --help and opane COMMAND --help tell more.");
        app.exit(error);
        report.json(false);  // a help is no object
        return ended(kSuccess);
    } catch (const InputError& error) {
        return refused(error.what());
    }
    if (!chosen)
        return refused("no command is given; opane --help lists them");
    report.json(arguments.json);
    report.command(commandName(app));
    Session session(arguments, report);
    try {
        const ExitStatus status = runReported(chosen, session);
        if (report.hasBegun() || status != kSuccess)
            report.end(status);
        return status;
    } catch (const OutputLost& error) {
        Report::note((session.isCancelled() ? session.whyNot() + "; " : "") + error.what() +
                     (report.done().empty() ? "" : "; " + report.done()));
        return error.isClosedPipe() || session.isCancelled() ? kModuleFailed : kErrorRaised;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Utf8Console console;
    const std::vector<std::string> words = programArguments(argc, argv);
    Report report(asksForJson(words));
    try {
        return runProgram(words, report);
    } catch (const OutputLost& error) {
        Report::note(error.what());
        return error.isClosedPipe() ? kModuleFailed : kErrorRaised;
    }
}
