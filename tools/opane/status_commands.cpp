#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <memory>

#include "run_on_link.h"
#include "subcommands.h"
#include "survey.h"

namespace opane::tool {
namespace {

constexpr std::size_t kFlags = 6;
using StatusFlags = std::array<bool, kFlags>;

struct FlagRow {
    const char* key;
    const char* label;
    const char* option;
    const char* help;
};

/// In the order of the module's status byte.
constexpr std::array<FlagRow, kFlags> kFlagRows{{
    {"upsideDown", "upside down", "--upside-down", "turn the picture upside down"},
    {"inverted", "inverted", "--inverted", "show dark as light and light as dark"},
    {"frame", "frame", "--frame", "draw the frame around the screen"},
    {"lcd", "LCD", "--lcd", "switch the LCD on"},
    {"autoBacklight", "automatic backlight", "--auto-backlight", "let the light control set the backlight"},
    {"autoVlcd", "automatic Vlcd", "--auto-vlcd", "let the module control the LCD drive voltage"},
}};
constexpr std::size_t kFrameFlag = 2;

bool readFlags(clsOPane& link, StatusFlags& flags) {
    return link.OPaneCmd_ReadStatus(flags[0], flags[1], flags[2], flags[3], flags[4], flags[5]);
}

/// What is asked for each flag: "on", "off" or empty.
using AskedFlags = std::array<std::string, kFlags>;

/// The frame has a command of its own; the other flags are written together.
bool writeFlags(Connection& connection, const AskedFlags& asked) {
    clsOPane& link = connection.link();
    StatusFlags flags{};
    if (!readFlags(link, flags)) {
        connection.report().fail("the status flags could not be read; nothing was written");
        return false;
    }
    bool others = false;
    for (std::size_t i = 0; i < kFlags; ++i) {
        if (asked[i].empty())
            continue;
        flags[i] = asked[i] == "on";
        others = others || i != kFrameFlag;
    }
    const bool written = (asked[kFrameFlag].empty() ||
                          link.OPaneCmd_Cadre(flags[kFrameFlag] ? clsOPane::kFrameDrawn : clsOPane::kNoFrame)) &&
                         (!others || link.OPaneCmd_WriteStatus(flags[0], flags[1], flags[3], flags[4], flags[5]));
    if (!written)
        connection.report().fail("not all flags were written; opane status tells which");
    return written;
}

}  // namespace

void readStatusFlags(Survey& survey) {
    const auto flags = survey.ask<StatusFlags>("status flags", readFlags);
    for (std::size_t i = 0; i < kFlags; ++i)
        survey.add(kFlagRows[i].key, kFlagRows[i].label, flags ? std::optional(shownFlag((*flags)[i])) : std::nullopt);
}

Run setUpStatus(CLI::App& /*command*/) {
    return [](Session& session) { return runSurvey(session, readStatusFlags); };
}

Run setUpSetStatus(CLI::App& command) {
    const auto asked = std::make_shared<AskedFlags>();
    for (std::size_t i = 0; i < kFlags; ++i)
        command.add_option(kFlagRows[i].option, (*asked)[i], kFlagRows[i].help)->check(CLI::IsMember({"on", "off"}));
    return [asked](Session& session) {
        if (std::all_of(asked->begin(), asked->end(), [](const std::string& flag) { return flag.empty(); }))
            throw InputError("no flag is named; opane set-status --help lists them");
        return runOnModule(session, "set-status",
                           [&](Connection& connection) { return writeFlags(connection, *asked); });
    };
}

}  // namespace opane::tool
