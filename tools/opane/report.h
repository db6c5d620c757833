#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "arguments.h"

namespace opane::tool {

/// Standard output takes nothing any more: what was printed is lost.
class OutputLost : public std::runtime_error {
public:
    explicit OutputLost(bool isClosedPipe);

    bool isClosedPipe() const { return isClosedPipe_; }  ///< nobody reads it any more

private:
    bool isClosedPipe_;
};

/// What the program tells of a run of a command. For a person, failures and notes are said on standard error at once;
/// with --json each run is one object on standard output besides, printed whole at its end (docs/json.md).
class Report {
public:
    explicit Report(bool json) : json_(json) {}

    bool json() const { return json_; }
    void json(bool value) { json_ = value; }
    void command(const std::string& name) { command_ = name; }

    /// What the run has read, for the object; an object itself.
    nlohmann::ordered_json& values() { return values_; }

    /// Says why the run fails. All that is said of a run is its error.
    void fail(const std::string& text);

    /// What is done by now; said only when the output is lost that would have told it.
    void done(const std::string& text) { done_ = text; }
    const std::string& done() const { return done_; }
    bool hasFailed() const { return !error_.empty(); }

    /// Says something that is no failure.
    static void note(const std::string& text);

    /// Ends the run: prints its object and what else waits to be printed.
    /// @throws OutputLost
    void end(ExitStatus status);
    /// Whether a run has begun that is to be ended: at first, and after begin().
    bool hasBegun() const { return hasBegun_; }
    void begin() { hasBegun_ = true; }

private:
    bool json_;
    bool hasBegun_ = true;
    std::string command_;
    std::string error_;
    std::string done_;
    nlohmann::ordered_json values_ = nlohmann::ordered_json::object();
};

/// A number in upper-case hexadecimal after 0x, with at least that many digits.
std::string hexText(std::size_t value, int digits);

/// A text that a module has sent, without its control characters: a terminal would obey them.
std::string printableText(const std::string& text);

}  // namespace opane::tool
