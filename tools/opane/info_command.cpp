#include <CLI/CLI.hpp>

#include "run_on_link.h"
#include "subcommands.h"
#include "survey.h"

namespace opane::tool {
namespace {

void readVersions(Survey& survey, clsOPaneCommDLL& object) {
    std::string library;
    object.Version(library);
    survey.add("library", "library", Shown{library, library});
    const auto module = survey.ask<std::string>(
        "version of the module", [](clsOPane& link, std::string& text) { return link.OPaneCmd_Version(text); });
    survey.add("module", "module", module ? std::optional(Shown{*module, printableText(*module)}) : std::nullopt);
}

}  // namespace

Run setUpInfo(CLI::App& /*command*/) {
    return [](Session& session) {
        return repeatOnModule(session, [&](Connection& connection) {
            Survey survey(connection);
            survey.section("/version", "Version");
            readVersions(survey, connection.object());
            survey.section("/status", "Status flags");
            readStatusFlags(survey);
            survey.section("/readings", "Readings");
            readReadings(survey);
            survey.section("/key", "Last key");
            readLastKey(survey);
            survey.section("/backlight/red", "Red backlight");
            readBacklight(survey, Colour::red);
            survey.section("/backlight/green", "Green backlight");
            readBacklight(survey, Colour::green);
            survey.section("/controller", "LCD controller");
            readController(survey, ControllerRegister::command);
            readController(survey, ControllerRegister::data);
            return survey.show();
        });
    };
}

}  // namespace opane::tool
