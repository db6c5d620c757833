#pragma once

#include <signal.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace opane::test {

inline std::string quoted(const std::string& word) {
    std::string result = "'";
    for (const char character : word)
        result += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return result + "'";
}

inline std::string commandLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        line += quoted(word) + ' ';
    return line;
}

inline bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// What the pattern's group is at each place where it fits.
inline std::vector<std::string> captures(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator each(text.begin(), text.end(), regex), end; each != end; ++each)
        found.push_back((*each)[1]);
    return found;
}

struct ProgramEnd {
    int status;
    std::string output;
    std::string errors;
};

/// Runs a program to its end.
/// @param words  the program and its arguments; assignments to its environment may come first, by way of env
inline ProgramEnd runProgram(const std::vector<std::string>& words) {
    const TemporaryFolder folder;
    const int status =
        std::system((commandLine(words) + ">" + quoted(folder / "out") + " 2>" + quoted(folder / "err")).c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(folder / "out"), contentOf(folder / "err")};
}

/// A program that runs until this object ends; it is then asked to end and waited for.
class RunningProgram {
public:
    explicit RunningProgram(const std::vector<std::string>& words)
        : pipe_(popen(("echo $$; exec " + commandLine(words)).c_str(), "r")) {
        process_ = std::stoi(line());
    }
    ~RunningProgram() {
        if (pipe_ != nullptr)
            end();
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// The next line of its output, waited for.
    std::string line() {
        char text[512];
        if (std::fgets(text, sizeof text, pipe_) == nullptr)
            throw std::runtime_error("the program has ended");
        const std::string read = text;
        return read.substr(0, read.find('\n'));
    }

    void signal(int number) const { kill(process_, number); }

    /// Asks it to end. @return its exit status
    int end() {
        signal(SIGTERM);
        const int status = pclose(std::exchange(pipe_, nullptr));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    FILE* pipe_;
    int process_ = 0;
};

}  // namespace opane::test
