#include "platform/serial_device.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "platform/windows/handle.h"
#include "platform/windows/system_text.h"

namespace opane {
namespace {

constexpr DWORD kReceiveBuffer = 1024;
constexpr DWORD kTransmitBuffer = 512;
/// How long one write waits for the end of the one before it, in milliseconds.
constexpr DWORD kRoomMs = 20;

constexpr std::array<std::int32_t, 15> kRates{CBR_110,   CBR_300,   CBR_600,    CBR_1200,   CBR_2400,
                                              CBR_4800,  CBR_9600,  CBR_14400,  CBR_19200,  CBR_38400,
                                              CBR_56000, CBR_57600, CBR_115200, CBR_128000, CBR_256000};

/// One transfer that the system runs beside the caller.
class Transfer {
public:
    Transfer() : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    bool pending() const { return pending_; }
    HANDLE event() const { return event_.get(); }

    /// @param begin  ReadFile or WriteFile with that OVERLAPPED
    /// @return false when the device refuses it
    template <class Begin>
    bool begin(Begin&& begin) {
        overlapped_ = {};
        overlapped_.hEvent = event_.get();
        pending_ = begin(&overlapped_) != 0 || GetLastError() == ERROR_IO_PENDING;
        return pending_;
    }

    /// Waits until it is over.
    /// @return the bytes transferred; nothing when it failed or was cancelled before the first
    std::optional<DWORD> finish(HANDLE device) {
        DWORD bytes = 0;
        pending_ = false;
        const bool succeeded = GetOverlappedResult(device, &overlapped_, &bytes, TRUE) != 0;
        return succeeded || bytes > 0 ? std::optional(bytes) : std::nullopt;
    }

    std::optional<DWORD> cancel(HANDLE device) {
        CancelIoEx(device, &overlapped_);
        return finish(device);
    }

private:
    Handle event_;
    OVERLAPPED overlapped_{};
    bool pending_ = false;
};

[[noreturn]] void refuseOpen(const std::string& path, DWORD error) {
    const std::string device = "device " + path;
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
            throw DeviceError{ErrorNumber::invalidPort, device + " does not exist; check the name and the cable"};
        case ERROR_ACCESS_DENIED:  // how the system's serial driver says it
        case ERROR_SHARING_VIOLATION:
            throw DeviceError{ErrorNumber::portAlreadyOpen,
                              device + " is in use by another program, or by a call of this one that still runs"};
        default:
            throw DeviceError{ErrorNumber::invalidPort, device + " cannot be opened: " + systemErrorText(error)};
    }
}

class WindowsSerialDevice final : public SerialDevice {
public:
    WindowsSerialDevice(const std::string& path, std::int32_t baudRate) : path_(path) {
        const std::wstring name = systemName(path);  // named: its end would change the last error
        device_ = Handle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_OVERLAPPED, nullptr));
        if (!device_)
            refuseOpen(path_, GetLastError());
        DCB mode{};
        mode.DCBlength = sizeof mode;
        if (GetCommState(device_.get(), &mode) == 0)
            throw DeviceError{ErrorNumber::invalidPort, "device " + path_ + " is no serial device"};
        SetupComm(device_.get(), kReceiveBuffer, kTransmitBuffer);
        configure(mode, baudRate);
        // No time-outs: nothing is asked for but what waits, except by waitForInput, which cancels it.
        COMMTIMEOUTS none{};
        if (SetCommTimeouts(device_.get(), &none) == 0)
            throw DeviceError{ErrorNumber::deviceIo, "device " + path_ + " takes no time-outs"};
    }

    ~WindowsSerialDevice() override {
        if (writing_.pending())
            writing_.cancel(device_.get());
        PurgeComm(device_.get(), PURGE_RXABORT | PURGE_TXABORT | PURGE_RXCLEAR | PURGE_TXCLEAR);
    }

    void setBaudRate(std::int32_t baudRate) override {
        DCB mode{};
        mode.DCBlength = sizeof mode;
        if (GetCommState(device_.get(), &mode) == 0)
            fail(GetLastError());
        configure(mode, baudRate);
    }

    std::size_t read(std::span<std::uint8_t> into) override {
        std::size_t got = 0;
        if (ahead_ && !into.empty()) {
            into[got++] = *ahead_;
            ahead_.reset();
        }
        const std::size_t wanted = std::min<std::size_t>(waiting(), into.size() - got);
        return wanted == 0 ? got : got + transfer(into.subspan(got, wanted));
    }

    std::size_t write(std::span<const std::uint8_t> bytes) override {
        if (writing_.pending()) {
            if (WaitForSingleObject(writing_.event(), kRoomMs) != WAIT_OBJECT_0)
                return 0;
            if (writing_.finish(device_.get()) != outgoing_.size())
                fail(GetLastError());
        }
        outgoing_.assign(bytes.begin(), bytes.end());
        const bool begun = writing_.begin([this](OVERLAPPED* overlapped) {
            return WriteFile(device_.get(), outgoing_.data(), static_cast<DWORD>(outgoing_.size()), nullptr,
                             overlapped);
        });
        if (!begun)
            fail(GetLastError());
        return bytes.size();
    }

    bool waitForInput(std::int32_t limitMs, const Cancellation* cancellation) override {
        COMSTAT state{};
        if (ahead_ || ClearCommError(device_.get(), nullptr, &state) == 0 || state.cbInQue > 0)
            return true;
        std::uint8_t byte = 0;
        const bool begun = reading_.begin(
            [&](OVERLAPPED* overlapped) { return ReadFile(device_.get(), &byte, 1, nullptr, overlapped); });
        if (!begun)
            return true;
        // The host's messages end it: they are run by the yield that follows.
        std::array<HANDLE, 2> events{reading_.event(), nullptr};
        if (cancellation != nullptr)
            events[1] = reinterpret_cast<HANDLE>(cancellation->event());
        const DWORD count = cancellation != nullptr ? 2 : 1;
        const bool over = MsgWaitForMultipleObjects(count, events.data(), FALSE, static_cast<DWORD>(limitMs),
                                                    QS_ALLINPUT) == WAIT_OBJECT_0;
        const auto got = over ? reading_.finish(device_.get()) : reading_.cancel(device_.get());
        if (got == 1U)
            ahead_ = byte;
        return over || ahead_.has_value();
    }

private:
    /// COM10 and above are found by their full name only, so all are given it.
    static std::wstring systemName(const std::string& path) {
        return wideText(path.find_first_of("\\/") == std::string::npos ? "\\\\.\\" + path : path);
    }

    [[noreturn]] void fail(DWORD error) const {
        throw DeviceError{ErrorNumber::deviceIo,
                          "device " + path_ + " vanished or failed (" + systemErrorText(error) + ")"};
    }

    void configure(DCB mode, std::int32_t baudRate) const {
        mode.BaudRate = static_cast<DWORD>(baudRate);
        mode.ByteSize = 8;
        mode.Parity = NOPARITY;
        mode.StopBits = ONESTOPBIT;
        mode.fBinary = TRUE;
        mode.fParity = FALSE;
        mode.fOutxCtsFlow = FALSE;
        mode.fOutxDsrFlow = FALSE;
        mode.fDsrSensitivity = FALSE;
        mode.fOutX = FALSE;
        mode.fInX = FALSE;
        mode.fNull = FALSE;
        mode.fErrorChar = FALSE;
        mode.fAbortOnError = FALSE;
        // Lines that no handshaking drives stay as they are.
        if (mode.fDtrControl == DTR_CONTROL_HANDSHAKE)
            mode.fDtrControl = DTR_CONTROL_ENABLE;
        if (mode.fRtsControl != RTS_CONTROL_DISABLE)
            mode.fRtsControl = RTS_CONTROL_ENABLE;
        DCB taken{};
        taken.DCBlength = sizeof taken;
        if (SetCommState(device_.get(), &mode) == 0 || GetCommState(device_.get(), &taken) == 0 ||
            taken.BaudRate != mode.BaudRate)
            throw DeviceError{ErrorNumber::deviceIo,
                              "device " + path_ + " does not take the baud rate " + std::to_string(baudRate)};
    }

    /// The number of bytes in the system's receive buffer.
    DWORD waiting() {
        COMSTAT state{};
        if (ClearCommError(device_.get(), nullptr, &state) == 0)
            fail(GetLastError());
        return state.cbInQue;
    }

    /// Reads bytes that wait.
    std::size_t transfer(std::span<std::uint8_t> into) {
        const bool begun = reading_.begin([&](OVERLAPPED* overlapped) {
            return ReadFile(device_.get(), into.data(), static_cast<DWORD>(into.size()), nullptr, overlapped);
        });
        const auto got = begun ? reading_.finish(device_.get()) : std::nullopt;
        if (!got)
            fail(GetLastError());
        return *got;
    }

    std::string path_;
    Handle device_;
    std::vector<std::uint8_t> outgoing_;  // of the write that runs
    Transfer writing_;
    Transfer reading_;
    std::optional<std::uint8_t> ahead_;  // taken from the system by a wait, not yet read
};

}  // namespace

bool isStandardBaudRate(std::int32_t baudRate) {
    return std::find(kRates.begin(), kRates.end(), baudRate) != kRates.end();
}

std::unique_ptr<SerialDevice> openSerialDevice(const std::string& path, std::int32_t baudRate) {
    return std::make_unique<WindowsSerialDevice>(path, baudRate);
}

std::string portDevicePath(std::int16_t comPort) {
    return "\\\\.\\COM" + std::to_string(comPort);
}

}  // namespace opane
