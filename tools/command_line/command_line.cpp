#include "tools/command_line/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iostream>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "shared/whole_number.h"

namespace opane::tools {
namespace {

/// How many letters have to be put in, taken out or changed to make one word of the other.
std::size_t difference(const std::string& one, const std::string& other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// What is spelt most like the word; empty when nothing is like it.
std::string likeOf(const std::string& word, const std::vector<std::string>& names) {
    constexpr std::size_t kMostMistakes = 2;
    std::string like;
    std::size_t least = kMostMistakes + 1;
    for (const std::string& name : names) {
        const std::size_t mistakes = difference(word, name);
        if (mistakes < least) {
            least = mistakes;
            like = name;
        }
    }
    return like.empty() ? "" : "; is " + like + " meant?";
}

/// The options that may be given, and the commands that may stand behind the one that was named.
struct Names {
    std::vector<std::string> options;
    std::vector<std::string> commands;
};

Names namesOf(const CLI::App& app) {
    Names names;
    const CLI::App* named = &app;
    for (;;) {
        for (const CLI::Option* const option : named->get_options()) {
            for (const std::string& name : option->get_lnames())
                names.options.push_back("--" + name);
        }
        if (named->get_subcommands().empty())
            break;
        named = named->get_subcommands().front();
    }
    for (const CLI::App* const command : named->get_subcommands(nullptr))
        names.commands.push_back(command->get_name());
    return names;
}

}  // namespace

// A word that nobody takes comes first: all else may only follow from it.
std::string complaint(const CLI::App& app, const CLI::ParseError& error) {
    for (const std::string& word : app.remaining(true)) {
        if (word == "--")
            continue;
        const Names names = namesOf(app);
        if (!word.starts_with('-'))
            return (names.commands.empty() ? "unexpected argument \"" : "unknown command \"") + word + "\"" +
                   likeOf(word, names.commands);
        const std::string name = word.substr(0, word.find('='));
        return "unknown option " + name + likeOf(name, names.options);
    }
    return error.what();
}

std::optional<Exit> readCommandLine(CLI::App& app, int argc, char** argv, const std::function<void()>& check) {
    const auto say = [&app](const std::string& text) { std::cerr << app.get_name() << ": " << text << '\n'; };
    app.set_version_flag("--version", app.get_name() + " " + OPANE_VERSION, "Print the version and exit");
    try {
        app.parse(argc, argv);
        if (check)
            check();
        return std::nullopt;
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        if (std::cout.flush())
            return Exit{0};
        say("standard output cannot be written");
        return Exit{kErrorRaised};
    } catch (const CLI::ParseError& error) {
        say(complaint(app, error) + "\n" + app.get_name() + " --help tells more.");
    } catch (const std::invalid_argument& error) {
        say(error.what());
    }
    return Exit{kWrongUsage};
}

CLI::Validator number(std::int64_t first, std::int64_t last) {
    const auto read = [first, last](std::string& text) {
        const auto value = wholeNumber(text);
        if (!value || *value < first || *value > last)
            return "\"" + text + "\" is no number from " + std::to_string(first) + " to " + std::to_string(last);
        text = std::to_string(*value);  // as the parser reads it without mistaking a leading zero
        return std::string();
    };
    return {read, "", "number"};
}

}  // namespace opane::tools
