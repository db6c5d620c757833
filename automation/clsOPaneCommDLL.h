#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "shared/mdlConstantes.h"
#include "shared/screen_geometry.h"

namespace opane {

/// The public class: what a host creates to drive a module. Its manual is the installed header,
/// include/opane/OPaneCommDLL.h: what each method means, sends, waits for and leaves after a failure. Here stands what
/// is different for those who link the class itself:
///
/// - Strings are UTF-8. What a method only reads goes by value.
/// - An error is raised as RuntimeError with the number that the manual names; intReturnStatus and the other outputs
///   keep what they held at that moment.
/// - Nothing looks at the calling thread: it must be the one that made the object.
/// - Events, message boxes, devices of the ports and the cancellation are those of the thread's services
///   (platform/services.h). An event may even destroy the object in the middle of a call.
class clsOPaneCommDLL {
public:
    /// Makes the thread's link and log and opens port 1 at 9600 baud; a port that does not open is no error here.
    clsOPaneCommDLL();
    /// Releases the thread's link, which closes its port, and the log.
    ~clsOPaneCommDLL() = default;
    clsOPaneCommDLL(const clsOPaneCommDLL&) = delete;
    clsOPaneCommDLL& operator=(const clsOPaneCommDLL&) = delete;

    /// Shows a text on one text line. Blocks for one exchange per block that it touches, up to 15.
    /// @throws RuntimeError before anything is sent, with intReturnStatus 0: 53, 70, 75, 76, 321, 9, 6, 13, 94
    void DisplayString(const std::string& strString, std::int16_t intLignePos, std::int16_t intColumnPos,
                       std::int16_t intPreGap, std::int16_t intInvertedText, const std::string& strGenCarFile,
                       std::int16_t& intReturnStatus);

    /// Opens the port and does one handshake, on the bus type "RS232". Blocks for its answer (docs/bounds.md).
    /// @throws RuntimeError 380, 8018
    void Synchronize(std::int16_t intComPort, std::int32_t lngBaudrate, std::int16_t intNode,
                     std::int16_t& intReturnStatus);

    /// The library's own version. Nothing is sent.
    void Version(std::string& strVersion);

    /// Changes the baud rate of the module, with its crystal of type 2, and of the port, and does a handshake.
    /// Shows a message box as clsOPane::OPaneCmd_RS232Baudrate.
    void ChangeBaudrate(std::int32_t lngNewBaudrate, std::int16_t& intReturnStatus);

    /// Reads status flags, 1 or 0 each; one exchange.
    void ReadStatus(std::int16_t& intUpSideDown, std::int16_t& intInvertedDisplay, std::int16_t& intCadreON,
                    std::int16_t& intLCDOn, std::int16_t& intAutomaticBacklightON, std::int16_t& intReturnStatus);

    /// Writes status flags, 0 or 1 each, and switches the automatic LCD drive voltage on; six exchanges.
    void WriteStatus(std::int16_t intUpSideDown, std::int16_t intInvertedDisplay, std::int16_t intCadreON,
                     std::int16_t intLCDOn, std::int16_t intAutomaticBacklightON, std::int16_t& intReturnStatus);

    /// Shows a bitmap file (docs/bitmap.md). Blocks for eight exchanges.
    /// @throws RuntimeError before anything is changed or sent: 53, 70, 75, 76, 9
    void DisplayBMP(const std::string& strFileNameWithPath, std::int16_t& intReturnStatus);

    /// Reads the last key of the remote control; one exchange.
    /// @throws RuntimeError 9 when the module's answer is shorter than two bytes
    void ReadIRLastKey(std::int16_t& intLastKeyNumber, std::int16_t& intToggleOn, std::int16_t& intReturnStatus);

private:
    GlobalsHolder holder_;
    /// What this object has put on the screen. Shared with the running call, which may outlive the object.
    std::shared_ptr<ScreenImage> arrActualImage;
};

}  // namespace opane
