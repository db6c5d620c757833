#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "bench_link.h"
#include "figure.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

constexpr int kExchanges = 500;
constexpr std::uint8_t kReadUserEeprom = 12;  // command type; Leng 1, the byte is how many to read

void readEeprom(clsOPane& link, std::uint8_t length) {
    ByteArray info;
    if (!link.SendDataAndReceiveResponse(1, 0, 0, kReadUserEeprom, ByteArray{length}, info))
        throw std::runtime_error("an exchange failed");
}

/// Runs in a process of its own and tells its tracer by a signal where the counted stretch begins and ends.
[[noreturn]] void tracedHost(int devicePipe, std::uint8_t length) {
    char device[256]{};
    if (read(devicePipe, device, sizeof device - 1) <= 0)
        _exit(1);
    try {
        BenchLink bench(device, 9600);
        readEeprom(bench.link(), length);
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGUSR1);
        for (int i = 0; i < kExchanges; ++i)
            readEeprom(bench.link(), length);
        raise(SIGUSR1);
    } catch (const std::exception&) {
        _exit(1);
    }
    _exit(0);
}

/// System calls between the two signals of the child.
int countCalls(pid_t child) {
    int stops = 0;
    int signals = 0;
    int status = 0;
    while (waitpid(child, &status, 0) == child && !WIFEXITED(status) && !WIFSIGNALED(status)) {
        const int stop = WSTOPSIG(status);
        if (stop == SIGUSR1)
            ++signals;
        else if (stop == (SIGTRAP | 0x80) && signals == 1)
            ++stops;
        if (stop == SIGUSR1 && signals == 1)
            ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || signals != 2)
        throw std::runtime_error("the counted process failed");
    return stops / 2;  // one stop at the entry and one at the exit of a call
}

Figure perExchange(std::uint8_t length) {
    int devicePipe[2];
    if (pipe(devicePipe) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();  // before the module's thread begins
    if (child == 0)
        tracedHost(devicePipe[0], length);
    simulator::ServedModule module;
    const std::string device = module.devicePath();
    if (write(devicePipe[1], device.c_str(), device.size()) < 0)
        throw std::runtime_error("no pipe");
    const int calls = countCalls(child);
    close(devicePipe[0]);
    close(devicePipe[1]);
    return {"system calls an exchange, unpaced, answer of " + std::to_string(length + 7) + " bytes",
            static_cast<double>(calls) / kExchanges, 8, 5.1, std::to_string(kExchanges) + " exchanges"};
}

}  // namespace

Measured systemCalls() {
    Measured measured;
    measured.figures = {perExchange(1), perExchange(32), perExchange(128)};
    return measured;
}

}  // namespace opane::bench
