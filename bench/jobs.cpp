#include "jobs.h"

#include <cstdio>
#include <fstream>
#include <string>

#include "measure.h"
#include "platform/folders.h"

namespace opane::bench {
namespace {

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

constexpr Job kJobs[]{{"20-character text", 15, 15 + 7, showText},
                      {"bitmap", 8, 127 + 7, showBitmap},
                      {"1024-byte EEPROM read", 8, 8 + 135, readEeprom}};

}  // namespace

double Job::wireSeconds(std::int32_t baudRate) const {
    return exchanges * bytes * kBitsPerByte / baudRate;
}

std::span<const Job> jobs() {
    return kJobs;
}

}  // namespace opane::bench
