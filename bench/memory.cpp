#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "figure.h"
#include "jobs.h"
#include "measure.h"
#include "module_farm.h"
#include "platform/folders.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

constexpr int kRepeats = 200;

/// A field of /proc/PID/status, KiB.
double statusKiB(const std::string& process, const std::string& field) {
    std::ifstream status("/proc/" + process + "/status");
    for (std::string word; status >> word;) {
        double kibibytes = 0;
        if (word == field && status >> kibibytes)
            return kibibytes;
    }
    throw std::runtime_error("no " + field + " in /proc/" + process + "/status");
}

/// Runs a program and looks at it at its very end: what the system says afterwards counts our own memory too.
double peakKiB(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (freopen("/dev/null", "w", stdout) == nullptr || ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(127);
        execv(arguments.front(), arguments.data());
        _exit(127);
    }
    double peak = 0;
    int status = 0;
    bool began = false;
    while (waitpid(child, &status, 0) == child && !WIFEXITED(status) && !WIFSIGNALED(status)) {
        if (!began)
            ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL);
        const bool ends = status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8));
        if (ends)
            peak = statusKiB(std::to_string(child), "VmHWM:");
        const int signal = !began || ends ? 0 : WSTOPSIG(status);
        began = true;
        ptrace(PTRACE_CONT, child, nullptr, signal);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(words.front() + " " + words.at(1) + " failed");
    return peak;
}

double worstPeakMiB() {
    const std::string folder = libraryFolder() + "/";
    const std::string picture = folder + "opane-bench-memory.bmp";
    {
        std::string bytes(62 + 64 * 16, '\x5A');
        const std::string header{"BM\0\0\0\0\0\0\0\0\x3E\0\0\0\x28\0\0\0\x78\0\0\0\x40\0\0\0\x01\0\x01\0", 30};
        bytes.replace(0, header.size(), header);
        bytes.replace(30, 32, 32, '\0');
        bytes.replace(58, 3, 3, '\xFF');  // the second colour is white
        std::ofstream(picture, std::ios::binary) << bytes;
    }
    simulator::ServedModule module;
    double worst = 0;
    const std::vector<std::vector<std::string>> all{
        {"text", "ABCDEFGHIJKLMNOPQRST", "--line", "0"}, {"bitmap", picture}, {"eeprom", "dump"}, {"info"}};
    for (const auto& job : all) {
        std::vector<std::string> words{folder + "opane", "--device", module.devicePath()};
        words.insert(words.end(), job.begin(), job.end());
        worst = std::max(worst, peakKiB(words) / 1024);
    }
    std::remove(picture.c_str());
    return worst;
}

/// A program that shows a text and does nothing else.
double hostPeakMiB() {
    simulator::ServedModule module;
    setenv("OPANE_COM1", module.devicePath().c_str(), 1);
    const double peak = peakKiB({libraryFolder() + "/hello_text", dataFolder() + "/latin1.gen"}) / 1024;
    unsetenv("OPANE_COM1");
    return peak;
}

/// The program that shows a generator, on the longest one: every value a string of 65535 characters but for the one
/// character that it has. Holes in the file stand for most of them.
double longestGeneratorPeakMiB() {
    constexpr int kShown = 'A';
    constexpr std::streamoff kCharacters = 65535;
    const std::string path = libraryFolder() + "/opane-bench-memory.gen";
    {
        std::ofstream file(path, std::ios::binary);
        for (int code = 0; code < 256; ++code) {
            for (int element = 0; element < 8; ++element) {
                if (code == kShown && element == 0)
                    file << std::string{8, 0, 1, 0, kShown};
                else if (code == kShown)
                    file << std::string{8, 0, '\xFF', '\xFF'} << std::string(kCharacters, '0');
                else
                    file.write("\x08\0\xFF\xFF", 4).seekp(kCharacters, std::ios::cur);
            }
        }
    }
    const double peak = peakKiB({libraryFolder() + "/opane-generator", "show", path}) / 1024;
    std::remove(path.c_str());
    return peak;
}

double growthKiB() {
    const ModuleFarm farm(1, 9600, false);  // a simulated module in this process would keep every frame that it hears
    BenchLink bench(farm.devices().front(), 9600);
    const auto runAll = [&bench](int times) {
        for (int i = 0; i < times; ++i) {
            for (const Job& job : jobs()) {
                if (!job.run(bench))
                    throw std::runtime_error(std::string(job.name) + " failed");
            }
        }
    };
    runAll(20);
    const double before = statusKiB("self", "VmRSS:");
    runAll(kRepeats);
    return std::max(0.0, statusKiB("self", "VmRSS:") - before);
}

}  // namespace

Measured memory() {
    Measured measured;
    measured.figures = {
        {"peak memory of a small host, one text, MiB", hostPeakMiB(), 6, 4, "hello_text"},
        {"peak memory of the program opane, its largest job, MiB", worstPeakMiB(), 6, 4, "text, bitmap, eeprom, info"},
        {"peak memory with the longest generator, of 134 MB, MiB", longestGeneratorPeakMiB(), 6, 8,
         "opane-generator show"},
        {"memory grown over 200 repeats of three jobs, KiB", growthKiB(), 256, 100, "text, bitmap, EEPROM read"}};
    return measured;
}

}  // namespace opane::bench
