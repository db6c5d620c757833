#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>

#include "bench_link.h"
#include "figure.h"
#include "platform/folders.h"
#include "simulator/served_module.h"

namespace opane::bench {
namespace {

constexpr int kRounds = 7;
constexpr int kBitsPerByte = 10;

/// Something that a host waits for, and what goes over the wire meanwhile.
struct Job {
    const char* name;
    int exchanges;
    int bytes;  // of request and answer
    bool (*run)(BenchLink& bench);
    double limit;  // time / wire time at 38400 baud
};

bool showText(BenchLink& bench) {
    static const std::string generator = dataFolder() + "/latin1.gen";
    std::int16_t status = 1;
    bench.object().DisplayString("ABCDEFGHIJKLMNOPQRST", 0, 0, 0, 0, generator, status);
    return status == 0;
}

/// A whole-screen bitmap in a file that goes with the program.
class BitmapFileForBench {
public:
    BitmapFileForBench() {
        std::string bytes(62 + 64 * 16, '\x5A');
        bytes[10] = 62;
        bytes[18] = 120;
        bytes[22] = 64;
        std::ofstream(path_, std::ios::binary) << bytes;
    }
    ~BitmapFileForBench() { std::remove(path_.c_str()); }
    BitmapFileForBench(const BitmapFileForBench&) = delete;
    BitmapFileForBench& operator=(const BitmapFileForBench&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_ = libraryFolder() + "/opane-bench.bmp";
};

bool showBitmap(BenchLink& bench) {
    static const BitmapFileForBench file;
    std::int16_t status = 1;
    bench.object().DisplayBMP(file.path(), status);
    return status == 0;
}

bool readEeprom(BenchLink& bench) {
    ByteArray bytes;
    for (std::int16_t address = 0; address < 1024; address = static_cast<std::int16_t>(address + 128)) {
        if (!bench.link().OPaneCmd_ReadEEPROMSystem(address, 128, bytes) || bytes.size() != 128)
            return false;
    }
    return true;
}

constexpr Job kJobs[]{{"20-character text", 15, 15 + 7, showText, 1.05},
                      {"bitmap", 8, 127 + 7, showBitmap, 1.05},
                      {"1024-byte EEPROM read", 8, 8 + 135, readEeprom, 1.05}};

Figure measure(const Job& job, std::int32_t baudRate) {
    simulator::ServedModule module({.baudRate = baudRate, .pace = true});
    BenchLink bench(module.devicePath(), baudRate);
    std::array<double, kRounds> seconds{};
    for (double& round : seconds) {
        const auto start = std::chrono::steady_clock::now();
        if (!job.run(bench))
            throw std::runtime_error(std::string(job.name) + " failed");
        round = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    std::sort(seconds.begin(), seconds.end());
    const double wire = static_cast<double>(job.exchanges * job.bytes * kBitsPerByte) / baudRate;
    const double median = seconds[kRounds / 2];
    return {std::string(job.name) + " at " + std::to_string(baudRate) + " baud, time / wire time", median / wire,
            baudRate < 38400 ? 1.02 : job.limit,
            "median of " + std::to_string(kRounds) + ": " + std::to_string(median * 1000) + " ms of " +
                std::to_string(wire * 1000) + " ms"};
}

}  // namespace

Figures pacedJobs() {
    Figures figures;
    for (const std::int32_t baudRate : {9600, 38400}) {
        for (const Job& job : kJobs)
            figures.push_back(measure(job, baudRate));
    }
    return figures;
}

}  // namespace opane::bench
