#pragma once

#include <cstdint>
#include <string>

namespace opane {

class clsOPane;

/// Where a module is and how it is spoken to.
struct ConnectionChoice {
    std::int16_t commPort = 1;
    std::int32_t baudRate = 9600;
    std::int16_t nodeNumber = 3;
    std::string busType;  ///< "RS232" or "RS485"
};

/// Makes the connection: gives the link the rate, the port (when it is another one) and the bus type, and does one
/// handshake with a Timeout of 100 ms. Afterwards Timeout is 1000; after a raised error it may be 100.
/// Blocks for one handshake (docs/bounds.md).
/// @return whether the module of that node has answered
/// @throws RuntimeError 380 for a rate that the system does not have, 8018 when the port did not open, with the reason,
///         57 when the device vanishes
bool makeConnection(clsOPane& link, const ConnectionChoice& choice);

/// Another handshake after one that failed. It waits first for the end of what is on its way, such as the rest of an
/// answer that a host before this one did not stay for: until the line has been silent for 100 ms, at most 2 s.
/// Otherwise as makeConnection.
bool makeConnectionAgain(clsOPane& link, const ConnectionChoice& choice);

}  // namespace opane
