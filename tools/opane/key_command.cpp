#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>

#include "automation/infrared_key.h"
#include "report.h"
#include "run_on_link.h"
#include "subcommands.h"
#include "survey.h"

namespace opane::tool {
namespace {

constexpr std::int16_t kInfraredCode = 1;  // parameter of OPaneCmd_TempIRandVLCD
constexpr std::chrono::milliseconds kPollPause{100};

bool readCode(clsOPane& link, std::int32_t& code) {
    return link.OPaneCmd_TempIRandVLCD(kInfraredCode, code);
}

struct KeyOptions {
    bool watch = false;
    int count = 0;  ///< 0: until interrupted
};

/// At once: whoever reads a pipe sees a key when it comes.
void printPress(Report& report, std::int32_t code, const InfraredKey& key) {
    const std::string codeText = hexText(static_cast<std::size_t>(code), 1);
    if (report.json())
        report.values() = {{"key", key.number}, {"toggle", key.toggle}, {"code", codeText}};
    else
        std::cout << "key " << key.number << "  toggle " << key.toggle << "  code " << codeText << '\n';
    report.end(kSuccess);
}

/// A press is a change of the code to one of a key. What the module holds at first is none.
ExitStatus watch(Connection& connection, int count) {
    std::optional<std::int32_t> last;
    for (int seen = 0; count == 0 || seen < count;) {
        std::int32_t code = 0;
        if (!readCode(connection.link(), code) || connection.session().isCancelled()) {
            connection.report().fail("key: " + connection.session().whyNot());
            return kModuleFailed;
        }
        const auto key = decodeInfraredKey(code);
        if (last && code != *last && key && key->number != 0) {
            printPress(connection.report(), code, *key);
            ++seen;
        }
        last = code;
        connection.session().pause(kPollPause);
    }
    return kSuccess;
}

}  // namespace

void readLastKey(Survey& survey) {
    std::optional<Shown> number;
    std::optional<Shown> toggle;
    std::optional<Shown> codeText;
    if (const auto code = survey.ask<std::int32_t>("last key", readCode)) {
        const std::string text = hexText(static_cast<std::size_t>(*code), 1);
        codeText = Shown{text, text};
        const Shown unknown{nullptr, "unknown"};
        const auto key = decodeInfraredKey(*code);
        toggle = key ? shownNumber(key->toggle) : unknown;
        number = key ? shownNumber(key->number) : unknown;
        if (key && key->number == 0)
            number->text = "none";
    }
    survey.add("key", "key", number);
    survey.add("toggle", "toggle", toggle);
    survey.add("code", "code", codeText);
}

Run setUpKey(CLI::App& command) {
    const auto options = std::make_shared<KeyOptions>();
    CLI::Option* const watchFlag = command.add_flag(
        "--watch", options->watch, "print each key that is pressed, one a line, until it is interrupted");
    command.add_option("--count", options->count, "end after that many keys")
        ->check(CLI::Range(1, 1'000'000'000))
        ->needs(watchFlag);
    return [options](Session& session) {
        if (!options->watch)
            return runSurvey(session, readLastKey);
        return repeatOnModule(session, [&](Connection& connection) { return watch(connection, options->count); });
    };
}

}  // namespace opane::tool
