#pragma once

#include <cstdint>
#include <string_view>

#include "commands/command_table.h"
#include "link/clsOPane.h"

namespace opane {

/// One command on a link: keeps the link and its log for as long as it lives, and has logged the command's type before
/// anything is sent.
class CommandRun {
public:
    CommandRun(clsOPane& link, const Command& command);

    /// A line of the command in the log.
    void log(std::string_view text);

    /// See clsOPane::Running.
    void seeToEnd() { running_.seeToEnd(); }

    /// One exchange of the command.
    bool send(std::uint8_t aux1, std::uint8_t aux2);
    bool send(std::uint8_t aux1, std::uint8_t aux2, ByteArray& receivedInfo);
    bool sendData(std::uint8_t aux1, std::uint8_t aux2, const ByteArray& data, ByteArray& receivedInfo);
    bool sendData(std::uint8_t aux1, std::uint8_t aux2, const ByteArray& data);

private:
    clsOPane::Running running_;
    clsOPane& link_;
    const Command& command_;
};

}  // namespace opane
