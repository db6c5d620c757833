#include "commands/command_run.h"

#include <string>

namespace opane {
namespace {

constexpr std::int16_t kLogLevel = 2;

}  // namespace

CommandRun::CommandRun(clsOPane& link, const Command& command) : running_(link), link_(link), command_(command) {
    if (command.logsType)
        log("Cmd Type : " + std::to_string(command.type));
}

void CommandRun::log(std::string_view text) {
    running_.log("clsOPane," + std::string(command_.name), text, kLogLevel);
}

bool CommandRun::send(std::uint8_t aux1, std::uint8_t aux2) {
    ByteArray unused;
    return send(aux1, aux2, unused);
}

bool CommandRun::send(std::uint8_t aux1, std::uint8_t aux2, ByteArray& receivedInfo) {
    return link_.SendDataAndReceiveResponse(0, aux1, aux2, command_.type, ByteArray{0}, receivedInfo);
}

bool CommandRun::sendData(std::uint8_t aux1, std::uint8_t aux2, const ByteArray& data) {
    ByteArray unused;
    return sendData(aux1, aux2, data, unused);
}

bool CommandRun::sendData(std::uint8_t aux1, std::uint8_t aux2, const ByteArray& data, ByteArray& receivedInfo) {
    return link_.SendDataAndReceiveResponse(frameByte(static_cast<std::int32_t>(data.size()), "number of data bytes"),
                                            aux1, aux2, command_.type, data, receivedInfo);
}

}  // namespace opane
