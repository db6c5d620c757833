#include <array>
#include <functional>
#include <stdexcept>

#include "bench_link.h"
#include "canned_device.h"
#include "figure.h"
#include "measure.h"

#ifdef OPANE_HAS_MODBUS
#include <modbus/modbus.h>
#endif

namespace opane::bench {

#ifndef OPANE_HAS_MODBUS

Measured besideModbus() {
    Measured measured;
    measured.notes = {"no comparison with libmodbus: it was not there when opane-bench was built (libmodbus-dev)"};
    return measured;
}

#else

namespace {

constexpr int kExchanges = 2000;  // a round
constexpr std::uint32_t kPatienceSeconds = 5;

/// An exchange of the same size in either protocol.
struct Transfer {
    const char* name;
    std::size_t requestBytes;
    std::size_t answerBytes;
    int registers;    // of Modbus, 16 bits each
    bool areWritten;  // otherwise read
};

constexpr std::array kTransfers{Transfer{"8 bytes out, 7 back", 8, 7, 1, false},
                                Transfer{"8 bytes out, 135 back", 8, 135, 65, false},
                                Transfer{"127 bytes out, 8 back", 127, 8, 59, true}};

using Bytes = std::vector<std::uint8_t>;

Bytes withModbusChecksum(Bytes bytes) {
    unsigned crc = 0xFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xA001U : crc >> 1;
    }
    bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
    return bytes;
}

Bytes modbusAnswer(const Transfer& transfer) {
    const auto count = static_cast<std::uint8_t>(transfer.registers);
    Bytes answer;
    answer.reserve(transfer.answerBytes);
    if (transfer.areWritten) {
        for (const std::uint8_t byte :
             {std::uint8_t{1}, std::uint8_t{16}, std::uint8_t{0}, std::uint8_t{0}, std::uint8_t{0}, count})
            answer.push_back(byte);
    } else {
        for (const std::uint8_t byte : {std::uint8_t{1}, std::uint8_t{3}, static_cast<std::uint8_t>(2 * count)})
            answer.push_back(byte);
        answer.insert(answer.end(), 2 * std::size_t{count}, 0x5A);
    }
    return withModbusChecksum(std::move(answer));
}

class ModbusHost {
public:
    ModbusHost(const std::string& device, const Transfer& transfer)
        : transfer_(transfer), context_(modbus_new_rtu(device.c_str(), 9600, 'N', 8, 1)) {
        if (context_ == nullptr || modbus_set_slave(context_, 1) != 0 || modbus_connect(context_) != 0)
            throw std::runtime_error("libmodbus does not open " + device);
        modbus_set_response_timeout(context_, kPatienceSeconds, 0);  // its own half second is short on a busy machine
    }
    ~ModbusHost() {
        modbus_close(context_);
        modbus_free(context_);
    }
    ModbusHost(const ModbusHost&) = delete;
    ModbusHost& operator=(const ModbusHost&) = delete;

    void exchange() {
        const int done = transfer_.areWritten
                             ? modbus_write_registers(context_, 0, transfer_.registers, registers_.data())
                             : modbus_read_registers(context_, 0, transfer_.registers, registers_.data());
        if (done != transfer_.registers)
            throw std::runtime_error(std::string("an exchange of libmodbus failed: ") + modbus_strerror(errno));
    }

private:
    const Transfer& transfer_;
    modbus_t* context_;
    std::array<std::uint16_t, 128> registers_{};
};

constexpr std::uint8_t kType = 12;

Bytes opaneAnswer(const Transfer& transfer) {
    Bytes answer(transfer.answerBytes, 0x5A);
    const std::array<std::uint8_t, 6> header{0xAA, static_cast<std::uint8_t>(transfer.answerBytes - 7), 3, 0, 0, kType};
    std::copy(header.begin(), header.end(), answer.begin());
    return answer;
}

class OPaneHost {
public:
    OPaneHost(const std::string& device, const Transfer& transfer)
        : bench_(device, 9600), data_(transfer.requestBytes - 7, 0x5A) {}

    void exchange() {
        ByteArray info;
        if (!bench_.link().SendDataAndReceiveResponse(static_cast<std::uint8_t>(data_.size()), 0, 0, kType, data_,
                                                      info))
            throw std::runtime_error("an exchange failed");
    }

private:
    BenchLink bench_;
    ByteArray data_;
};

struct Cost {
    double seconds;
    double processorSeconds;
};

template <class Host>
Cost round(Host& host) {
    const Stopwatch watch;
    const double used = processorSeconds(CLOCK_THREAD_CPUTIME_ID);
    for (int i = 0; i < kExchanges; ++i)
        host.exchange();
    return {watch.seconds(), processorSeconds(CLOCK_THREAD_CPUTIME_ID) - used};
}

void measure(const Transfer& transfer, Figures& figures) {
    CannedDevice modbusDevice(transfer.requestBytes, modbusAnswer(transfer));
    CannedDevice opaneDevice(transfer.requestBytes, opaneAnswer(transfer));
    ModbusHost modbus(modbusDevice.path(), transfer);
    OPaneHost opane(opaneDevice.path(), transfer);
    round(modbus);
    round(opane);
    std::vector<double> times;
    std::vector<double> processorTimes;
    std::vector<double> microseconds;
    for (int i = 0; i < kRounds; ++i) {  // one after the other, so that both see the same machine
        const Cost theirs = round(modbus);
        const Cost ours = round(opane);
        times.push_back(ours.seconds / theirs.seconds);
        processorTimes.push_back(ours.processorSeconds / theirs.processorSeconds);
        microseconds.push_back(ours.seconds / kExchanges * 1e6);
    }
    const std::string name = std::string(transfer.name) + ", unpaced: ";
    figures.push_back(
        {name + "time / libmodbus", median(times), 1.25, 1.0, number(median(microseconds), "us an exchange")});
    figures.push_back({name + "processor time / libmodbus", median(processorTimes), 2.0, 1.3, ""});
}

}  // namespace

Measured besideModbus() {
    Measured measured;
    for (const Transfer& transfer : kTransfers)
        measure(transfer, measured.figures);
    return measured;
}

#endif

}  // namespace opane::bench
