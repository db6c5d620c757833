#include <string>

#include "commands/command_table.h"
#include "link/clsOPane.h"

namespace opane {
namespace {

constexpr std::int16_t kLogLevel = 2;

}  // namespace

void clsOPane::logCommand(const Command& command, std::string_view text) {
    logEvent("clsOPane," + std::string(command.name), text, kLogLevel);
}

void clsOPane::logCommandType(const Command& command) {
    logCommand(command, "Cmd Type : " + std::to_string(command.type));
}

bool clsOPane::runCommand(const Command& command, std::uint8_t aux1, std::uint8_t aux2, ByteArray& receivedInfo) {
    return SendDataAndReceiveResponse(0, aux1, aux2, command.type, ByteArray{0}, receivedInfo);
}

bool clsOPane::runCommand(const Command& command, std::uint8_t aux1, std::uint8_t aux2, ByteArray& receivedInfo,
                          const ByteArray& data) {
    return SendDataAndReceiveResponse(frameByte(static_cast<std::int32_t>(data.size()), "number of data bytes"), aux1,
                                      aux2, command.type, data, receivedInfo);
}

}  // namespace opane
