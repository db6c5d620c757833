// Files that the program opane is given: an EEPROM image that it restores and verifies, a bitmap that it shows. The
// commands run as they are, on a simulated module in memory.
//
// Input: the first byte chooses ('b' bitmap, 'u' User EEPROM, otherwise System EEPROM), the rest is the file.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "fuzz_input.h"
#include "require.h"
#include "shared/runtime_error.h"
#include "support/bench.h"
#include "tools/opane/arguments.h"
#include "tools/opane/subcommands.h"

namespace opane::fuzz {
namespace {

using Words = std::vector<std::string>;

/// The exit status as main has it.
int runOPane(Words words) {
    std::reverse(words.begin(), words.end());  // as CLI::App takes them
    tool::Arguments arguments;
    tool::Run run;
    CLI::App app("fuzzed", "opane");
    tool::addCommonOptions(app, arguments);
    tool::addSubcommands(app, run);
    app.parse(words);
    try {
        tool::Report report(false);
        tool::Session session(arguments, report);
        return run(session);
    } catch (const tool::InputError&) {
        return tool::kWrongInput;
    } catch (const RuntimeError&) {
        return tool::kErrorRaised;
    }
}

const std::string& scratchFile() {
    static const std::string path = "/tmp/opane-fuzz-image-" + std::to_string(getpid());
    static const int removed = std::atexit([] { std::remove(scratchFile().c_str()); });
    (void)removed;
    return path;
}

void tryFile(Input input) {
    const std::uint8_t choice = input.byte();
    const auto content = input.rest();
    const std::string path = scratchFile();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));

    test::Bench bench;
    if (choice == 'b') {
        const int status = runOPane({"bitmap", path});
        require(status == tool::kSuccess || status == tool::kWrongInput, "a bitmap that was checked did not work");
        require(status == tool::kSuccess || bench.module.frames().empty(), "a refused bitmap was sent");
        return;
    }
    const bool user = choice == 'u';
    Words command{"eeprom", "restore", path};
    if (user)
        command.emplace_back("--user");
    const int status = runOPane(command);
    const bool isWhole = content.size() == (user ? 512U : 1024U);
    require(status == (isWhole ? tool::kSuccess : tool::kWrongInput), "the restore ended otherwise than it had to");
    command[1] = "verify";
    require(runOPane(command) == status, "the image does not verify");
    const simulator::ModuleState& state = bench.module.state();
    if (isWhole)
        require(user ? std::equal(content.begin(), content.end(), state.userEeprom.begin())
                     : std::equal(content.begin(), content.end(), state.systemEeprom.begin()),
                "the EEPROM does not hold the image");
    else
        require(bench.module.frames().empty(), "something of a refused image was sent");
}

}  // namespace
}  // namespace opane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    opane::fuzz::tryFile(opane::fuzz::Input(data, size));
    return 0;
}
