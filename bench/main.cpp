#include <sys/utsname.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <optional>
#include <string_view>
#include <thread>

#include "figure.h"

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

bool isAsked(const Group& group, const std::vector<std::string_view>& names) {
    return names.empty() || std::find(names.begin(), names.end(), group.name) != names.end();
}

/// A name that is none of a group's; nothing when all are.
std::optional<std::string_view> unknownOf(const std::vector<std::string_view>& names) {
    for (const std::string_view name : names) {
        if (std::none_of(std::begin(kGroups), std::end(kGroups),
                         [name](const Group& group) { return group.name == name; }))
            return name;
    }
    return std::nullopt;
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
    const std::vector<std::string_view> names(argv + 1, argv + argc);
    if (const auto unknown = unknownOf(names)) {
        std::fprintf(stderr, "opane-bench: no group \"%s\"; there are", std::string(*unknown).c_str());
        for (const Group& group : kGroups)
            std::fprintf(stderr, " %s", group.name.data());
        std::fprintf(stderr, "\n");
        return 2;
    }
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
