#pragma once

#include <string>
#include <vector>

namespace opane {

/// The arguments behind the program's name, UTF-8.
std::vector<std::string> programArguments(int argc, char** argv);

/// Whether standard error is a terminal that takes control sequences.
bool standardErrorIsTerminal();

enum class StandardStream { output = 1, error = 2 };

/// Whether the stream is a pipe or a socket whose other end is gone, so that nobody reads what is written to it.
bool isBrokenPipe(StandardStream stream);

/// Lets the terminal show UTF-8 for as long as it lives, where it does not by itself.
class Utf8Console {
public:
    Utf8Console();
    ~Utf8Console();  // NOLINT(performance-trivially-destructible): not everywhere
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

private:
    [[maybe_unused]] unsigned earlierCodePage_;
};

}  // namespace opane
