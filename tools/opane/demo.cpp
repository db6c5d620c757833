#include <iostream>
#include <memory>

#include "connection.h"
#include "generator.h"
#include "run_on_link.h"
#include "simulator/screen_picture.h"
#include "simulator/served_module.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

struct DemoText {
    const char* text;
    std::int16_t line;
    std::int16_t column;
    std::int16_t preGap;
    std::int16_t inverted;
};

/// The second text of line 3 begins inside the last block of the first one and keeps its pixels.
constexpr DemoText kTexts[]{
    {"      OPaneComm     ", 0, 0, 0, 1},
    {"Hello, world", 2, 3, 2, 0},
    {"Hello,", 3, 4, 1, 0},
    {"again", 3, 11, 1, 0},
    {"Température 21,5 °C", 5, 0, 3, 0},
    {"Größe 120 × 64", 7, 3, 0, 0},
};

bool showTexts(clsOPaneCommDLL& object, const std::string& generator) {
    bool allShown = true;
    for (const DemoText& row : kTexts) {
        std::int16_t status = 1;
        object.DisplayString(row.text, row.line, row.column, row.preGap, row.inverted, generator, status);
        allShown = allShown && status == 0;
    }
    return allShown;
}

Run setUpDemo(CLI::App& command) {
    const auto output = std::make_shared<std::string>();
    command.add_option("--output", *output, "picture of the module's screen (PNG); one that is there is replaced");
    return [output](Session& session) {
        const std::string generator = defaultGenerator();
        readGenerator(generator);  // says what is wrong with it
        simulator::ServedModule module;
        module.withModule([](simulator::SimulatedModule& served) {
            served.state().red[0] = 60;
            served.state().green[0] = 200;
        });
        Arguments arguments = session.arguments();
        arguments.port = 1;
        arguments.device = module.devicePath();
        arguments.baudRate = 9600;
        arguments.node = 3;
        arguments.bus = "RS232";

        Connection connection(session, arguments);
        if (!connection.synchronize())
            return kModuleFailed;
        return repeatRuns(session, [&] {
            if (!showTexts(connection.object(), generator)) {
                session.report().fail("demo: " + session.whyNot());
                return kModuleFailed;
            }

            const auto state = module.withModule([](simulator::SimulatedModule& served) { return served.state(); });
            const ScreenImage screen = simulator::shownScreen(state);
            try {
                if (!output->empty())
                    simulator::writePng(*output, screen, simulator::backlightLevels(state));
            } catch (const std::runtime_error& error) {
                throw InputError(error.what());
            }
            if (!session.report().json())
                std::cout << simulator::halfBlocks(screen) << "A simulated module on " << arguments.device
                          << " shows this" << (output->empty() ? "" : "; the picture is in " + *output) << '\n';
            return kSuccess;
        });
    };
}

constexpr Subcommand kDemoCommands[]{
    {"", "demo", "Show texts on a simulated module and draw its screen", "demo --output screen.png", setUpDemo},
};

}  // namespace

std::span<const Subcommand> demoCommands() {
    return kDemoCommands;
}

}  // namespace opane::tool
