#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "arguments.h"
#include "shared/runtime_error.h"
#include "subcommands.h"

namespace {

using namespace opane;
using namespace opane::tool;

ExitStatus report(ExitStatus status, const std::string& text) {
    std::cerr << "opane: " << text << '\n';
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    Arguments arguments;
    Run run;
    CLI::App app("Drives an OPane LCD module over a serial line.", "opane");
    app.footer(
        "Exit status: 0 success, 1 the module refused or did not answer, 2 wrong usage or input, 3 an error.\n"
        "Example:\n  opane --device /dev/ttyUSB0 text \"Hello, world\" --line 2 --column 3");
    app.option_defaults()->take_last();  // given again, an option takes its last value
    addCommonOptions(app, arguments);
    addSubcommands(app, run);
    try {
        app.parse(argc, argv);
        if (!run)
            throw InputError("no command is given; opane --help lists them");
        return run(arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error);
        return report(kWrongInput, std::string(error.what()) + "\nopane --help and opane COMMAND --help tell more.");
    } catch (const InputError& error) {
        return report(kWrongInput, error.what());
    } catch (const RuntimeError& error) {
        return report(kErrorRaised, "error " + std::to_string(static_cast<int>(error.number())) + ": " + error.what());
    } catch (const std::bad_alloc&) {
        return report(kErrorRaised, "error 7: out of memory");
    } catch (const std::exception& error) {
        return report(kErrorRaised, error.what());
    }
}
