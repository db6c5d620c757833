#include <CLI/CLI.hpp>
#include <array>
#include <memory>

#include "run_on_link.h"
#include "subcommands.h"
#include "survey.h"

namespace opane::tool {
namespace {

struct RegisterRow {
    const char* key;
    const char* label;
};

/// By their number.
constexpr std::array<RegisterRow, 6> kBacklightRegisters{{
    {"physical", "physical register"},
    {"setPoint", "set point"},
    {"finalFutureValue", "final future value"},
    {"adc", "ADC"},
    {"zone", "zone"},
    {"increment", "increment"},
}};

constexpr std::array<RegisterRow, 2> kControllerRegisters{{{"command", "command"}, {"data", "data"}}};
/// Where it is read alone, "command" is the name of the program's own command.
constexpr RegisterRow kCommandAlone{"controller/command", "command"};

using ReadRegister = bool (clsOPane::*)(std::int16_t, std::int16_t&);
using WriteRegister = bool (clsOPane::*)(std::int16_t, std::int16_t);

struct ColourRow {
    const char* name;
    ReadRegister read;
    WriteRegister write;
};
constexpr std::array<ColourRow, 2> kColours{{
    {"red", &clsOPane::OPaneCmd_ReadRouge, &clsOPane::OPaneCmd_WriteRouge},
    {"green", &clsOPane::OPaneCmd_ReadVert, &clsOPane::OPaneCmd_WriteVert},
}};

const ColourRow& rowOf(Colour colour) {
    return kColours[static_cast<std::size_t>(colour)];
}

void readRegister(Survey& survey, const RegisterRow& row, ReadRegister read, std::int16_t number) {
    const auto value = survey.ask<std::int16_t>(
        row.label, [=](clsOPane& link, std::int16_t& byte) { return (link.*read)(number, byte); });
    survey.add(row.key, row.label, value ? std::optional(shownNumber(*value)) : std::nullopt);
}

void readBacklightRegister(Survey& survey, Colour colour, std::int16_t number) {
    readRegister(survey, kBacklightRegisters[static_cast<std::size_t>(number)], rowOf(colour).read, number);
}

std::int16_t parseRegister(const std::string& text) {
    return static_cast<std::int16_t>(
        parseNumber(text, "the register", 0, static_cast<int>(kBacklightRegisters.size()) - 1,
                    "0 physical register, 1 set point, 2 final future value, 3 ADC, 4 zone, 5 increment"));
}

struct RegisterOptions {
    std::string bank;  ///< colour, or register of the controller
    std::string number;
    std::string value;

    Colour colour() const { return bank == "red" ? Colour::red : Colour::green; }
    ControllerRegister controllerRegister() const {
        return bank == "command" ? ControllerRegister::command : ControllerRegister::data;
    }
};

std::shared_ptr<RegisterOptions> addBank(CLI::App& command, const char* name, const char* help, const char* first,
                                         const char* second) {
    auto options = std::make_shared<RegisterOptions>();
    command.add_option(name, options->bank, help)->check(CLI::IsMember({first, second}))->required();
    return options;
}

std::shared_ptr<RegisterOptions> addColour(CLI::App& command) {
    return addBank(command, "COLOUR", "colour of the backlight", "red", "green");
}

std::shared_ptr<RegisterOptions> addControllerRegister(CLI::App& command) {
    return addBank(command, "REGISTER", "register of the controller", "command", "data");
}

constexpr auto kValueHelp = "0 to 255, or 0x00 to 0xFF";

}  // namespace

void readBacklight(Survey& survey, Colour colour) {
    for (std::size_t number = 0; number < kBacklightRegisters.size(); ++number)
        readBacklightRegister(survey, colour, static_cast<std::int16_t>(number));
}

void readController(Survey& survey, ControllerRegister which) {
    const auto number = static_cast<std::int16_t>(which);
    readRegister(survey, kControllerRegisters[static_cast<std::size_t>(which)], &clsOPane::OPaneCmd_ReadSED1530,
                 number);
}

Run setUpBacklightRead(CLI::App& command) {
    const auto options = addColour(command);
    command.add_option("REGISTER", options->number,
                       "0 physical register, 1 set point, 2 final future value, 3 ADC, 4 zone, 5 increment; all six "
                       "without it");
    return [options](Session& session) {
        if (options->number.empty())
            return runSurvey(session, [&](Survey& survey) { readBacklight(survey, options->colour()); });
        const std::int16_t number = parseRegister(options->number);
        return runSurvey(session, [&](Survey& survey) { readBacklightRegister(survey, options->colour(), number); });
    };
}

Run setUpBacklightWrite(CLI::App& command) {
    const auto options = addColour(command);
    command.add_option("REGISTER", options->number, "0 physical register, 1 set point, to 5 as in backlight read")
        ->required();
    command.add_option("VALUE", options->value, kValueHelp)->required();
    return [options](Session& session) {
        const std::int16_t number = parseRegister(options->number);
        const std::int16_t value = parseByte(options->value, "the value");
        const WriteRegister write = rowOf(options->colour()).write;
        return runOnLink(session, "backlight write", [=](clsOPane& link) { return (link.*write)(number, value); });
    };
}

Run setUpControllerRead(CLI::App& command) {
    const auto options = addControllerRegister(command);
    return [options](Session& session) {
        return runSurvey(session, [&](Survey& survey) {
            if (options->controllerRegister() == ControllerRegister::command)
                readRegister(survey, kCommandAlone, &clsOPane::OPaneCmd_ReadSED1530, 0);
            else
                readController(survey, options->controllerRegister());
        });
    };
}

Run setUpControllerWrite(CLI::App& command) {
    const auto options = addControllerRegister(command);
    command.add_option("VALUE", options->value, kValueHelp)->required();
    return [options](Session& session) {
        const auto number = static_cast<std::int16_t>(options->controllerRegister());
        const std::int16_t value = parseByte(options->value, "the value");
        return runOnLink(session, "controller write",
                         [=](clsOPane& link) { return link.OPaneCmd_WriteSED1530(number, value); });
    };
}

}  // namespace opane::tool
