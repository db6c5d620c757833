#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/posix/file_descriptor.h"

namespace opane::simulator {

/// The serial device a host opens, raw, and the simulator's end of it. One thread at a time.
class PseudoTerminal {
public:
    /// @param link  a symbolic link to the device, kept up to date and removed at the end; empty: none. No other one of
    ///              these can have it meanwhile, in whatever process. It may replace a link that dangles or that leads
    ///              to a pseudo-terminal, and nothing else.
    /// @throws std::runtime_error that names what could not be made, and why
    explicit PseudoTerminal(std::filesystem::path link = {});
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    const std::string& path() const { return path_; }  ///< of the device that the host opens; keeps it when closed
    bool isOpen() const { return master_.get() >= 0; }

    void close();   ///< the device vanishes, and the link with it; a host that has it open reads its end
    void reopen();  ///< a new device; the link leads to it. Throws as the constructor.

    /// The speed the host has set its end to; 0 when it is none of the usual ones.
    int hostBaudRate() const;

    /// What the host has written and was not read yet; empty when there is none. Does not wait.
    std::vector<std::uint8_t> read();

    /// In one write. Bytes that the host has left no room for are lost, as on a real line.
    void write(std::span<const std::uint8_t> bytes);

    /// Readable when the host has written.
    int descriptor() const { return master_.get(); }

    /// Readable when a host has closed the device.
    int leavings() const { return watch_.get(); }

    /// Takes note of them. When the last host has gone, however it ended, what it has left unread is thrown away and an
    /// exclusive use (TIOCEXCL) that it has left behind is ended.
    void noteLeavings();

private:
    bool hasLeftSomething() const;
    bool isLocked() const;
    bool hasHost() const;
    void moveLink();
    void removeLink();

    std::filesystem::path link_;
    FileDescriptor linkClaim_;
    std::string path_;
    FileDescriptor master_;
    FileDescriptor slave_;  // keeps the device alive while no host has it open: the master would read errors
    FileDescriptor watch_;
};

}  // namespace opane::simulator
