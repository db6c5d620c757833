#include <CLI/CLI.hpp>
#include <memory>

#include "commands/command_table.h"
#include "report.h"
#include "run_on_link.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

struct PixelOptions {
    std::string rowBytes;
    std::int16_t line = 0;
    std::int16_t column = 0;
};

std::shared_ptr<PixelOptions> addPixelOptions(CLI::App& command, const char* layout, int lastLine) {
    auto options = std::make_shared<PixelOptions>();
    command
        .add_option("ROWBYTES", options->rowBytes,
                    std::string(layout) +
                        "; two hexadecimal digits each, bit 7 is the leftmost pixel, a set bit is "
                        "dark. One byte alone is repeated")
        ->required();
    command.add_option("--line", options->line, "text line, 0 to " + std::to_string(lastLine) + " from the top")
        ->check(CLI::Range(0, lastLine))
        ->required();
    return options;
}

void addColumnOption(CLI::App& command, PixelOptions& options, int lastColumn) {
    command.add_option("--column", options.column, "block column, 0 to " + std::to_string(lastColumn))
        ->check(CLI::Range(0, lastColumn))
        ->capture_default_str();
}

}  // namespace

Run setUpLine(CLI::App& command) {
    const auto options = addPixelOptions(command, "120 row bytes: 8 pixel rows of 15, top row first", kTextLines - 1);
    return [options](Session& session) {
        const ByteArray rows = parseRowBytes(options->rowBytes, kAffData.dataBytes);
        return runOnLink(session, "line", [&](clsOPane& link) { return link.OPaneCmd_AffData(options->line, rows); });
    };
}

Run setUpBlock(CLI::App& command) {
    const auto options = addPixelOptions(command, "8 row bytes, top row first", kAffBloc1.lastLine);
    addColumnOption(command, *options, kAffBloc1.lastColumn);
    return [options](Session& session) {
        const ByteArray rows = parseRowBytes(options->rowBytes, kAffBloc1.dataBytes);
        return runOnLink(session, "block",
                         [&](clsOPane& link) { return link.OPaneCmd_AffBloc1(options->line, options->column, rows); });
    };
}

Run setUpSquare(CLI::App& command) {
    const auto options =
        addPixelOptions(command, "32 row bytes of four blocks, in the module's order", kAffBloc4.lastLine);
    addColumnOption(command, *options, kAffBloc4.lastColumn);
    return [options](Session& session) {
        const ByteArray rows = parseRowBytes(options->rowBytes, kAffBloc4.dataBytes);
        return runOnLink(session, "square",
                         [&](clsOPane& link) { return link.OPaneCmd_AffBloc4(options->line, options->column, rows); });
    };
}

Run setUpFrame(CLI::App& command) {
    const auto pattern = std::make_shared<std::string>();
    command.add_option("PATTERN", *pattern, "on, off, or the byte to draw the frame with")->required();
    return [pattern](Session& session) {
        const std::int16_t value = *pattern == "on"    ? clsOPane::kFrameDrawn
                                   : *pattern == "off" ? clsOPane::kNoFrame
                                                       : std::int16_t{parseByte(*pattern, "the pattern")};
        return runOnLink(session, "frame", [value](clsOPane& link) { return link.OPaneCmd_Cadre(value); });
    };
}

Run setUpClear(CLI::App& command) {
    const auto pattern = std::make_shared<std::string>("0");
    command.add_option("PATTERN", *pattern, "the byte that every 8 pixels become")->capture_default_str();
    return [pattern](Session& session) {
        const std::int16_t value = parseByte(*pattern, "the pattern");
        return runOnLink(session, "clear", [value](clsOPane& link) { return link.OPaneCmd_Clear(value); });
    };
}

Run setUpVersion(CLI::App& /*command*/) {
    return [](Session& session) {
        ServicesScope noPorts;
        noPorts->portMap = [](std::int16_t) { return std::string(); };
        std::string version;
        clsOPaneCommDLL().Version(version);
        return repeatRuns(session, [&] {
            if (session.report().json())
                session.report().values()["version"] = version;
            else
                std::cout << version << '\n';
            return kSuccess;
        });
    };
}

}  // namespace opane::tool
