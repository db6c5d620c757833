#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "connection.h"

namespace opane::tool {

/// A value that was read, for a program and for a person.
struct Shown {
    nlohmann::ordered_json json;
    std::string text;
};

Shown shownNumber(std::int32_t value);
Shown shownFlag(bool value);

/// Values that are read from the module one after the other and then shown together: aligned rows for a person, and
/// the values of the report. A value that could not be read is shown as "--", in the report as null; the report says
/// why.
class Survey {
public:
    explicit Survey(Connection& connection) : connection_(connection) {}

    /// What is added from now on stands under a title, in JSON in an object at that pointer ("/backlight/red").
    void section(const std::string& pointer, const std::string& title);

    /// Reads one value, unless the module has stopped answering.
    /// @param what  is read, for the message when it fails
    /// @param read  an operation of the link: (clsOPane&, Value&), whether it succeeded
    template <class Value, class Read>
    std::optional<Value> ask(const std::string& what, Read&& read) {
        Value value{};
        const bool succeeded = attempt(what, [&](clsOPane& link) { return read(link, value); });
        return succeeded ? std::optional<Value>(value) : std::nullopt;
    }

    /// @param value  nothing when it could not be read
    void add(const std::string& key, const std::string& label, const std::optional<Shown>& value);

    /// Shows what was added.
    /// @return kModuleFailed when a value could not be read
    /// @throws RuntimeError, after that, when one has cut the reading short, such as 57 for a device that vanished
    ExitStatus show() const;

private:
    bool attempt(const std::string& what, const std::function<bool(clsOPane&)>& operation);

    struct Row {
        std::string label;
        std::string text;
        bool isTitle;
    };

    Connection& connection_;
    std::string pointer_;
    std::vector<Row> rows_;
    bool whole_ = true;
    bool stopped_ = false;  // nothing more can be read
    std::exception_ptr raised_;
};

/// Connects, fills a survey and shows it, as often as --repeat asks for.
ExitStatus runSurvey(Session& session, const std::function<void(Survey&)>& fill);

// What several commands read.
void readStatusFlags(Survey& survey);
void readReadings(Survey& survey);
void readLastKey(Survey& survey);

enum class Colour { red, green };
void readBacklight(Survey& survey, Colour colour);  ///< the six registers

enum class ControllerRegister : std::int16_t { command = 0, data = 1 };
void readController(Survey& survey, ControllerRegister which);

}  // namespace opane::tool
