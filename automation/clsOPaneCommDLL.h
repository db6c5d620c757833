#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "shared/mdlConstantes.h"
#include "shared/screen_geometry.h"

namespace opane {

/// The public class: what a host creates to drive a module. One object per thread is the supported use; a second one on
/// the same thread takes the thread's link over, and when any of them ends, the others have none.
///
/// Every method runs on the caller's thread and returns when its exchanges with the module are over. While it waits it
/// lets the host's pending events run; an event may even release the object.
///
/// intReturnStatus: 0 success; 1 an argument out of its allowed set, or a module command that failed. What is not
/// expected in normal use is raised as RuntimeError, and intReturnStatus then keeps what it held at that moment. Every
/// method but Version raises, when it comes to use the link, 91 (object variable not set) when the thread has lost it,
/// 8018 when the port is not open, 57 when its device vanishes, and the log's errors when the log is on.
class clsOPaneCommDLL {
public:
    /// Makes the thread's link and log and opens port 1 at 9600 baud; a port that does not open is no error here.
    /// The screen is taken to be blank.
    clsOPaneCommDLL();
    /// Releases the thread's link, which closes its port, and the log.
    ~clsOPaneCommDLL() = default;
    clsOPaneCommDLL(const clsOPaneCommDLL&) = delete;
    clsOPaneCommDLL& operator=(const clsOPaneCommDLL&) = delete;

    /// Shows a text on one text line, merged at its edges with what this object has shown before. Only the 8 x 8 blocks
    /// that the text touches are sent, from left to right; when one fails the others are sent all the same.
    /// Blocks for one exchange per block, up to 15 (see clsOPane::SendDataAndReceiveResponse).
    /// @param strString        UTF-8; one glyph of 6 x 8 pixels a character
    /// @param intLignePos      text line 0..7
    /// @param intColumnPos     character column; the text begins at pixel column 6 x intColumnPos + intPreGap
    /// @param intPreGap        pixels added to the start; may be negative
    /// @param intInvertedText  0 dark on light, 1 light on a dark bar
    /// @param strGenCarFile    path of the character generator, UTF-8; read at every call (docs/character-generator.md)
    /// @param intReturnStatus  1 for another intInvertedText (the generator is not read then), an empty text, one that
    ///                         does not fit, a character that the generator lacks: nothing has been sent then; and for
    ///                         a block that the module refused or did not answer
    /// @throws RuntimeError before anything is sent: 53, 70, 75, 76 or 321 for the generator; 9 (subscript) for a line
    ///         outside 0..7 or a negative first pixel column; 6 (overflow) for a position beyond 16 bits; 6, 13 or 94
    ///         for a glyph column that is no byte. intReturnStatus is 0 then
    void DisplayString(const std::string& strString, std::int16_t intLignePos, std::int16_t intColumnPos,
                       std::int16_t intPreGap, std::int16_t intInvertedText, const std::string& strGenCarFile,
                       std::int16_t& intReturnStatus);

    /// Opens the port with that rate and does the handshake with the module of that node, on the bus type "RS232".
    /// Blocks for at most 100 ms.
    /// @param intComPort   COM port number from 1 (docs: README, "Ports")
    /// @param lngBaudrate  bits per second, one of the system's standard rates; the module runs at 1200 to 57600
    /// @param intNode      node number 0..3
    /// @throws RuntimeError 380 for another rate, 8018 when the port did not open, with the reason
    void Synchronize(std::int16_t intComPort, std::int32_t lngBaudrate, std::int16_t intNode,
                     std::int16_t& intReturnStatus);

    /// The library's own version, "OpaneCommDLL V1.0.0" for 1.0.0. Nothing is sent.
    void Version(std::string& strVersion);

    /// Changes the baud rate of the module, with its crystal of type 2, and of the port, and does a handshake.
    /// Fails, and shows a message box, as clsOPane::OPaneCmd_RS232Baudrate; the host then calls Synchronize again.
    /// @param lngNewBaudrate   1200, 2400, 4800, 9600, 19200 or 38400; 57600 gives status 1, as the crystal lacks it
    void ChangeBaudrate(std::int32_t lngNewBaudrate, std::int16_t& intReturnStatus);

    /// Reads status flags, 1 or 0 each: turned upside down, inverted, frame drawn, LCD on, automatic backlight. All are
    /// 0 when the status is 1.
    void ReadStatus(std::int16_t& intUpSideDown, std::int16_t& intInvertedDisplay, std::int16_t& intCadreON,
                    std::int16_t& intLCDOn, std::int16_t& intAutomaticBacklightON, std::int16_t& intReturnStatus);

    /// Writes status flags, first the frame, then the others; the automatic LCD drive voltage is always switched on.
    /// Each flag is 0 or 1; any other value gives status 1 and nothing is sent.
    void WriteStatus(std::int16_t intUpSideDown, std::int16_t intInvertedDisplay, std::int16_t intCadreON,
                     std::int16_t intLCDOn, std::int16_t intAutomaticBacklightON, std::int16_t& intReturnStatus);

    /// Shows a one-bit bitmap file of at most 120 x 64 pixels (docs/bitmap.md). Blocks for eight exchanges.
    /// @param strFileNameWithPath  UTF-8
    /// @param intReturnStatus      1 when a line failed; no more lines are sent then
    /// @throws RuntimeError 53, 70, 75, 76 for the file, 9 (subscript) for a larger picture: nothing has been sent, and
    ///         intReturnStatus keeps its value
    void DisplayBMP(const std::string& strFileNameWithPath, std::int16_t& intReturnStatus);

    /// Reads the last key of the remote control.
    /// @param intLastKeyNumber  1 to 9; 0 when no key has been received; keeps its value for an unknown code; -1 when
    ///                          the status is 1
    /// @param intToggleOn       1 or 0, changes with every press; keeps its value for an unknown code; 0 when the
    ///                          status is 1
    /// @throws RuntimeError 9 (subscript) when the module's answer is shorter than two bytes
    void ReadIRLastKey(std::int16_t& intLastKeyNumber, std::int16_t& intToggleOn, std::int16_t& intReturnStatus);

private:
    GlobalsHolder holder_;
    /// What this object has put on the screen. Shared with the running call, which may outlive the object.
    std::shared_ptr<ScreenImage> arrActualImage;
};

}  // namespace opane
