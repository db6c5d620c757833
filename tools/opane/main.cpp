#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>

#include "arguments.h"
#include "platform/console.h"
#include "print.h"
#include "shared/runtime_error.h"
#include "subcommands.h"

namespace {

using namespace opane;
using namespace opane::tool;

/// Runs what the arguments ask for; every failure that is raised becomes a text and a status.
ExitStatus runReported(const Run& run, const Arguments& arguments) {
    const auto failed = [&arguments](ExitStatus status, const std::string& text) {
        reportFailure(arguments, status, text);
        return status;
    };
    try {
        const ExitStatus status = run(arguments);
        if (!std::cout.flush())
            throw std::runtime_error("standard output cannot be written: what was printed is lost");
        return status;
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

}  // namespace

int main(int argc, char** argv) {
    const Utf8Console console;
    Arguments arguments;
    Run run;
    CLI::App app("Drives an OPane LCD module over a serial line.", "opane");
    app.footer(
        "Exit status: 0 success, 1 the module refused or did not answer, 2 wrong usage or input, 3 an error.\n"
        "Example:\n  opane --device /dev/ttyUSB0 text \"Hello, world\" --line 2 --column 3");
    app.option_defaults()->take_last();  // given again, an option takes its last value
    addCommonOptions(app, arguments);
    addSubcommands(app, run);
    const auto refused = [&arguments](const std::string& text) {
        reportFailure(arguments, kWrongInput, text);
        return kWrongInput;
    };
    try {
        std::vector<std::string> words = programArguments(argc, argv);
        std::reverse(words.begin(), words.end());  // as the parser takes them
        app.parse(words);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error);
        return refused(std::string(error.what()) + "\nopane --help and opane COMMAND --help tell more.");
    } catch (const InputError& error) {
        return refused(error.what());
    }
    return run ? runReported(run, arguments) : refused("no command is given; opane --help lists them");
}
