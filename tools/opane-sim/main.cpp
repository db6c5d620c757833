#include <sys/signalfd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <variant>

#include "platform/posix/file_descriptor.h"
#include "tools/command_line/command_line.h"
#include "tools/opane-sim/arguments.h"
#include "tools/opane-sim/keyboard.h"
#include "tools/opane-sim/session.h"

namespace opane::sim {
namespace {

/// The signals we take are read from a descriptor; no thread that starts after this is interrupted by them.
FileDescriptor takeSignals() {
    sigset_t taken;
    sigemptyset(&taken);
    for (const int number : kSignals)
        sigaddset(&taken, number);
    ::pthread_sigmask(SIG_BLOCK, &taken, nullptr);
    return FileDescriptor(::signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK));
}

int run(const Arguments& arguments) {
    std::signal(SIGPIPE, SIG_IGN);  // a closed standard output is noticed when it is written to
    std::signal(SIGXFSZ, SIG_IGN);  // and a file that may not grow
    Keyboard keyboard;
    const FileDescriptor signals = takeSignals();
    int blame = tools::kWrongUsage;  // what cannot be set up is what the command line asked for
    try {
        Session session(arguments, signals, keyboard);
        blame = tools::kErrorRaised;
        session.serve();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "opane-sim: " << error.what() << '\n';
        return blame;
    }
}

}  // namespace
}  // namespace opane::sim

int main(int argc, char** argv) {
    const auto arguments = opane::sim::readArguments(argc, argv);
    if (const auto* exit = std::get_if<opane::tools::Exit>(&arguments))
        return exit->status;
    return opane::sim::run(std::get<opane::sim::Arguments>(arguments));
}
