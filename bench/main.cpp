#include <sys/utsname.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "figure.h"
#include "tools/command_line/command_line.h"

namespace {

using namespace opane::bench;

void printMachine(const char* when) {
    double load[3]{};
    [[maybe_unused]] const int loads = getloadavg(load, 3);
    utsname system{};
    uname(&system);
    std::printf("%s: %s %s, %u processors, load %.2f %.2f %.2f\n", when, system.sysname, system.release,
                std::thread::hardware_concurrency(), load[0], load[1], load[2]);
}

struct Group {
    std::string_view name;
    Measured (*measure)();
};

constexpr Group kGroups[]{{"paced", pacedJobs}, {"modbus", besideModbus}, {"calls", systemCalls},
                          {"links", manyLinks}, {"silent", silentModule}, {"timeouts", timeOuts},
                          {"log", logCost},     {"memory", memory},       {"load", loadTime}};

bool isAsked(const Group& group, const std::vector<std::string>& names) {
    return names.empty() || std::find(names.begin(), names.end(), group.name) != names.end();
}

void print(const Figure& figure) {
    const char* const mark = figure.value > figure.limit ? "!!" : figure.value > figure.aim ? " ~" : "  ";
    std::printf("%-62s %s%9.3f %9.3f %9.3f  %s\n", figure.name.c_str(), mark, figure.value, figure.aim, figure.limit,
                figure.remark.c_str());
    std::fflush(stdout);
}

/// Measures and prints a group. @return whether every figure is within its limit
bool isWithin(const Group& group) {
    try {
        const Measured measured = group.measure();
        bool within = true;
        for (const Figure& figure : measured.figures) {
            within = within && figure.value <= figure.limit;
            print(figure);
        }
        for (const std::string& note : measured.notes)
            std::printf("note: %s\n", note.c_str());
        return within;
    } catch (const std::exception& error) {
        std::printf("!! group %s: %s\n", group.name.data(), error.what());
        return false;
    }
}

}  // namespace

// Prints a table of what the library costs, measured on this machine, and ends with 1 when a figure is above its limit
// (marked !!). Above its aim (~) is what a machine with other things to do shows. Arguments name the groups to measure.
int main(int argc, char** argv) {
    std::set<std::string> groups;
    for (const Group& group : kGroups)
        groups.emplace(group.name);
    std::vector<std::string> names;
    CLI::App app("Prints what the library costs, measured on this machine.", "opane-bench");
    app.footer("Exit status: 0, 1 when a figure is above its limit (!!), 2 wrong usage.");
    app.add_option("GROUP", names, "what to measure; everything without it")
        ->check(CLI::IsMember(groups))
        ->type_name("");
    if (const auto exit = opane::tools::readCommandLine(app, argc, argv))
        return exit->status;
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // nothing unwritten is left to a forked child
    printMachine("before");
    std::printf("%-62s   %9s %9s %9s\n", "figure, a median of at least 7 rounds", "measured", "aim", "at most");
    bool within = true;
    for (const Group& group : kGroups) {
        if (isAsked(group, names))
            within = isWithin(group) && within;
    }
    printMachine("after");
    return within ? 0 : 1;
}
