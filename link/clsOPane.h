#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "link/frame.h"
#include "link/frmComm.h"
#include "link/frmDialog.h"
#include "link/link_observer.h"
#include "log/clsLog.h"
#include "shared/frame_byte.h"
#include "shared/screen_geometry.h"

namespace opane {

struct ConnectionChoice;

/// The one link of a thread to its module: the serial port, the handshake, the exchange with retries, and one operation
/// for each command of the module. Owned by the thread's globals as gobjOPane; made by create().
///
/// Everything runs on the caller's thread. Every wait lets the host's pending events run, and such an event may end
/// the object that holds this link: an operation keeps its link and its log until it returns. There is no lock and no
/// guard against a nested exchange on the same link; callers run one operation at a time.
///
/// The cancellation of the thread's services ends a running call before its time: nothing new is sent then, and every
/// exchange and handshake fails at once as with a silent module, with its lines in the log. Two things are seen to
/// their end all the same: a write to an EEPROM whose frame is out, for its time on the wire and 300 ms, and the second
/// of a reset.
///
/// Errors of the serial control (8018 port not open, 57 device vanished) are raised by every operation that reads or
/// writes. An operation that logs raises the log's errors (76 when its folder is missing), and 91 when its thread had
/// no log as it began.
class clsOPane : public std::enable_shared_from_this<clsOPane> {
public:
    static constexpr std::int32_t kUsualTimeoutMs = 1000;  ///< Timeout of a new link, and after every resynchronisation
    static constexpr std::int32_t kHandshakeTimeoutMs =
        100;  ///< Timeout while a connection or a resynchronisation is made

    /// A closed link: node 3, time-out 1000 ms, not synchronised, no bus type.
    static std::shared_ptr<clsOPane> create();
    ~clsOPane();
    clsOPane(const clsOPane&) = delete;
    clsOPane& operator=(const clsOPane&) = delete;

    /// Baud rate of the port, bits per second; 0 until it is first written. Writing closes the port, clears the
    /// synchronised flag, gives the control the new settings and opens the port again; whether that worked, IsOpen
    /// tells.
    /// @throws RuntimeError 380 (invalid property value) for a rate that the system does not have; the port is closed
    ///         then and the new rate stored
    std::int32_t Baudrate() const { return baudrate_; }
    void Baudrate(std::int32_t lngBaudrate);

    /// The longest wait for each single byte, milliseconds; 0 or less looks once.
    std::int32_t Timeout() const { return timeoutMs_; }
    void Timeout(std::int32_t lngTimeout) { timeoutMs_ = lngTimeout; }

    /// COM port number. Writing closes the port, clears the synchronised flag, gives the control the number and the
    /// settings and opens the port again; whether that worked, IsOpen tells.
    /// @throws RuntimeError 380 when no valid baud rate has been set; the port is closed then and the new number stored
    std::int16_t CommPort() const { return commPort_; }
    void CommPort(std::int16_t intCommPort);

    /// Opens the port with what the control holds. No error leaves this operation.
    /// @return false when the port did not open: missing, in use, not allowed, or open already
    bool OpenCommunication();
    bool IsOpen() const;
    /// Closes the port if it is open, and clears the synchronised flag in every case.
    void CloseCommunication();

    /// One handshake: sends the synchronisation character of a node and looks at the first byte that comes back (after
    /// the echo on an RS485 bus). Blocks for at most one Timeout, two on RS485. Codes: docs/wire.md, "Handshake".
    /// @param intNodeNumber  0..3; any other number sends 0 and expects 0
    /// @return true when the answer was right: the link is then synchronised and uses that node number. False
    ///         otherwise: not synchronised, node number unchanged; with a bus type other than "RS232" and "RS485"
    ///         nothing is read and neither changes
    bool SendSynchronizeCharacter(std::int16_t intNodeNumber);

    /// One exchange: sends a request frame and reads the answer, repeats it after errors, and resynchronises the link
    /// when the module stays silent or rejects the command (docs/wire.md, "Exchange"; log lines in docs/log.md).
    /// How long it blocks, also on a silent module: docs/bounds.md. A resynchronisation leaves Timeout at 1000 ms.
    /// @param bytLength               number of data bytes to send
    /// @param bytType                 command type; the answer must have the same
    /// @param arrbytData              its first bytLength elements are sent
    /// @param arrbytReceivedInfo      true: the answer's info bytes, or one 0 byte when it has none. False: what came
    ///                                of the last answer with a whole header, the rest 0; untouched when none came
    /// @return true when a complete answer of the right type and without an error code arrived
    /// @throws RuntimeError 9 (subscript) when arrbytData is too short, 6 (overflow) when the node number is no byte;
    ///         nothing has been sent then
    bool SendDataAndReceiveResponse(std::uint8_t bytLength, std::uint8_t bytAux1, std::uint8_t bytAux2,
                                    std::uint8_t bytType, const ByteArray& arrbytData, ByteArray& arrbytReceivedInfo);

    /// Gives the control the port number and the settings.
    /// @throws RuntimeError 8000 (port is open), 380 (invalid settings)
    void ChangeComPortConfiguration();

    /// Whether the last handshake was good and the port has been open ever since: a device that vanishes closes it.
    bool IsSynchronized() const { return synchronized_ && IsOpen(); }

    /// Writes all bytes to the port, in order and in one write; none when the call has been cancelled.
    void SendArrayOfByte(std::span<const std::uint8_t> arrbytArrayToSend);

    // The pattern commands. A refusal before anything is logged or sent, and a failed exchange, both give false. A
    // position or pattern that fits no frame byte raises RuntimeError 6 (overflow) before anything is sent. Row bytes
    // hold 8 horizontal pixels: bit 7 is the leftmost, a set bit is dark (docs/wire.md, "Commands").

    /// Shows one whole text line. @param intZone line 0..7 (not checked) @param arrbytData 120 row bytes, top row first
    bool OPaneCmd_AffData(std::int16_t intZone, const ByteArray& arrbytData);
    /// Shows one 8 x 8 block. @param intLigne 0..7 @param intColonne 0..14 @param arrbytData 8 row bytes, top first
    bool OPaneCmd_AffBloc1(std::int16_t intLigne, std::int16_t intColonne, const ByteArray& arrbytData);
    /// Shows a square of four blocks by its top-left one. @param intLigne 0..6 @param intColonne 0..13
    /// @param arrbytData 32 row bytes, passed on in their order
    bool OPaneCmd_AffBloc4(std::int16_t intLigne, std::int16_t intColonne, const ByteArray& arrbytData);
    static constexpr std::int16_t kFrameDrawn = 255;
    static constexpr std::int16_t kNoFrame = 0;
    /// Draws the frame around the screen. @param intPattern 0..255; kFrameDrawn draws it, kNoFrame removes it
    bool OPaneCmd_Cadre(std::int16_t intPattern);
    /// Clears the screen with a pattern. @param intPattern 0..255, every row byte's new value
    bool OPaneCmd_Clear(std::int16_t intPattern);

    // Version, status and readings. False when the exchange failed.

    /// Reads the version text of the module, UTF-8. @param strVersion keeps its text when the result is false
    bool OPaneCmd_Version(std::string& strVersion);
    /// Reads the status flags. All six keep their values when the result is false.
    bool OPaneCmd_ReadStatus(bool& blnUpSideDown, bool& blnInvertedDisplay, bool& blnCadreON, bool& blnLCDOn,
                             bool& blnAutomaticBacklightON, bool& blnAutomaticVlcdON);
    /// Writes five status flags, one exchange each, in this order; the frame is OPaneCmd_Cadre's. Stops at the first
    /// one that fails: the earlier ones are then set.
    bool OPaneCmd_WriteStatus(bool blnUpSideDown, bool blnInvertedDisplay, bool blnLCDOn, bool blnAutomaticBacklightON,
                              bool blnAutomaticVlcdON);
    /// Reads one analogue input.
    /// @param intADCNumber    0 luminosity, 2 temperature, 3 battery voltage; any 0..255 is sent
    /// @param lngReturnValue  raw counts, 0..32767; keeps its value when the result is false
    /// @throws RuntimeError 6 (overflow) when intADCNumber fits no frame byte (nothing has been sent then) or the
    ///         reading is above 32767; 9 (subscript) when the answer has fewer than two info bytes
    bool OPaneCmd_ReadADC(std::int16_t intADCNumber, std::int32_t& lngReturnValue);

    // Registers of the backlight, one bank per colour (0 physical, 1 set point, 2 final future value, 3 ADC, 4 zone,
    // 5 increment), and of the LCD controller (0 command, 1 data). Values are bytes. False when the exchange failed; a
    // value read is 0 then. A register that fits no frame byte raises RuntimeError 6 (overflow), and nothing is sent.

    bool OPaneCmd_ReadSED1530(std::int16_t intRegister, std::int16_t& intValueRead);
    /// @throws RuntimeError 6 (overflow) also for a value outside 0..255; nothing has been logged then
    bool OPaneCmd_WriteSED1530(std::int16_t intRegister, std::int16_t intValueToWrite);
    /// False also for an intensity outside 0..255; nothing is logged or sent then. The same for OPaneCmd_WriteVert.
    bool OPaneCmd_WriteRouge(std::int16_t intRegister, std::int16_t intIntensity);
    bool OPaneCmd_WriteVert(std::int16_t intRegister, std::int16_t intIntensity);
    bool OPaneCmd_ReadRouge(std::int16_t intRegister, std::int16_t& intValueRead);
    bool OPaneCmd_ReadVert(std::int16_t intRegister, std::int16_t& intValueRead);

    // Ranges of the EEPROMs: System, addresses 0..1023, and User, 0..511; 1 to 128 bytes at a time. False when the
    // exchange failed, and before anything is logged or sent for a range that does not lie in the EEPROM. A negative
    // address or (of a read) length raises RuntimeError 6 (overflow), and nothing is sent.

    /// @param arrbytReturnedData  the bytes that the module sent, which may be fewer or more than asked for. When the
    ///                            result is false, not to be used
    bool OPaneCmd_ReadEEPROMSystem(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                   ByteArray& arrbytReturnedData);
    bool OPaneCmd_ReadEEPROMUser(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                 ByteArray& arrbytReturnedData);
    /// @param arrbytDataToWrite  exactly intLengthOfData bytes; false otherwise
    bool OPaneCmd_WriteEEPROMSystem(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                    const ByteArray& arrbytDataToWrite);
    bool OPaneCmd_WriteEEPROMUser(std::int16_t intBaseAdress, std::int16_t intLengthOfData,
                                  const ByteArray& arrbytDataToWrite);

    /// Changes the rate of the module and then of the port, and does a handshake. False for a rate or crystal that is
    /// not offered (docs/wire.md, "Baud rates"), for a failed exchange (the port is left as it was), and with a message
    /// box when the port does not open at the new rate (the old one is set again) or the module does not answer there
    /// (the new rate stays, not synchronised). True at once when the rate is in use already.
    /// @param lngNewBaudrate  1200, 2400, 4800, 9600, 19200, 38400 or 57600
    /// @param intQuartzType   crystal of the module, 1 to 3
    bool OPaneCmd_RS232Baudrate(std::int32_t lngNewBaudrate, std::int16_t intQuartzType);
    static constexpr std::int16_t kResetModule = 0;
    static constexpr std::int16_t kResetLightControl = 1;
    /// Resets the module (0), which then runs at 9600 baud: the port follows and does a handshake after 1000 ms, in
    /// which no host events run; or its light control (1). False when the exchange failed, for any other type, which is
    /// sent, and with a message box when the port does not open at 9600 baud or the module does not answer there.
    /// @throws RuntimeError 6 (overflow) for a type outside 0..255; nothing has been sent then
    bool OPaneCmd_Reset(std::int16_t intTypeOfReset);

    /// Lets the user pick a bitmap file. @param strReturnFileName full path; empty when the result is false (cancelled)
    bool OpenBMPFile(std::string& strReturnFileName);
    /// Shows a one-bit bitmap file on the whole screen (docs/bitmap.md). What the picture lacks is sent blank.
    /// @param strFileNameWithPath  UTF-8
    /// @param arrActualImage       receives the picture's rows and byte columns before anything is sent; its others
    ///                             stay
    /// @return true when all eight lines were shown; after the first one that was not, no more are sent
    /// @throws RuntimeError 53, 70, 75, 76 for the file, 9 (subscript) for a picture larger than the screen; nothing
    ///         has been changed or sent then
    bool OPaneCmd_AfficheBMP(const std::string& strFileNameWithPath, ScreenImage& arrActualImage);

    /// Reads the temperature (0), the code of the last infrared key (1) or the LCD drive voltage (2).
    /// @param intParameter  any 0..255 is sent
    /// @param lngValueRead  0..65535; 0 when the result is false
    /// @throws RuntimeError 6 (overflow) when intParameter fits no frame byte (nothing has been sent then); 9
    ///         (subscript) when the answer has fewer than two info bytes
    bool OPaneCmd_TempIRandVLCD(std::int16_t intParameter, std::int32_t& lngValueRead);

    /// Let the user pick an EEPROM image to read, or to write, where replacing a file is asked about. False when
    /// cancelled; the name is empty then.
    bool OpenBINFile(std::string& strReturnFileName);
    bool SaveBINFile(std::string& strReturnFileName);

    /// Takes the thread's default port and baud rate and 8 data bits, 1 stop bit, then opens the thread's link
    /// (gobjOPane) if it is closed, with what the control holds: port 1, 9600 baud on a new one.
    /// @throws RuntimeError 91 when the thread has no link
    void Initialize();
    /// Closes the thread's link (gobjOPane) if it is open. @throws RuntimeError 91 when the thread has none
    void Terminate();

    /// Bus type: "RS232" or "RS485", exactly so; any other text is stored and makes handshakes fail.
    const std::string& CommunicationType() const { return communicationType_; }
    void CommunicationType(const std::string& strNewBusType) { communicationType_ = strNewBusType; }

    /// Who watches this link; null: nobody, as on a new one. It outlives the link or is taken away before it ends.
    void observer(LinkObserver* newObserver) { observer_ = newObserver; }

    /// Stands on the stack of a running operation and keeps the link and the thread's log until the outermost one
    /// ends, whatever a host event releases meanwhile. A caller of several operations in a row has one of its own.
    class Running {
    public:
        explicit Running(clsOPane& link);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        /// Writes a line to the link's log and tells its observer.
        /// @throws RuntimeError 91 when the thread had no log as the operation began; the log's own errors
        void log(std::string_view procedure, std::string_view text, std::int16_t level) {
            link_->logEvent(procedure, text, level);
        }

        /// The next exchange is waited for also after a cancellation, once its frame is out.
        void seeToEnd() { link_->seesToEnd_ = true; }

    private:
        std::shared_ptr<clsOPane> link_;
    };

private:
    clsOPane();

    bool ReceiveByte(std::uint8_t& bytTarget);
    void SelectByteInput();
    bool SendByte(std::uint8_t bytToSend);
    bool giveToPort(std::span<const std::uint8_t> bytes);
    void ClearInputBuffer();
    bool dropInput();
    /// Reads and drops what comes, until nothing has come for silenceMs milliseconds, longestMs at the most.
    void waitForSilence(std::int32_t silenceMs, std::int32_t longestMs);
    friend bool makeConnectionAgain(clsOPane& link, const ConnectionChoice& choice);
    void stayAway(std::int64_t limitMs);
    static bool isCancelled();
    bool isWaitEnded() const;

    struct Exchange;
    void attempt(Exchange& exchange);
    void send(const Exchange& exchange);
    void dropEcho();
    bool receiveHeader(FrameFields& answer);
    bool receiveInfo(Exchange& exchange);
    void countError(Exchange& exchange, std::string_view errorText);
    void countRetry(Exchange& exchange);
    void recover(Exchange& exchange, std::string_view errorText);
    void resynchronise(Exchange& exchange);
    void logExchange(std::string_view text);
    void logEvent(std::string_view procedure, std::string_view text, std::int16_t level);

    /// A handshake at a rate that the module has just taken. The box of a lost module comes up when it fails.
    bool synchroniseAtNewRate();

    struct Wait {
        std::uint32_t start;
        std::int32_t limitMs;
    };

    frmComm comm_;
    frmDialog dialog_;
    SerialControl& MSComm;
    std::int32_t timeoutMs_ = kUsualTimeoutMs;
    std::int16_t commPort_ = 0;
    std::int32_t baudrate_ = 0;
    std::int16_t dataBits_ = 0;
    std::int16_t stopBits_ = 0;
    std::int16_t nodeNumber_ = 3;
    bool synchronized_ = false;
    std::string communicationType_;
    bool seesToEnd_ = false;  // the next exchange: it is waited for also after a cancellation, once its frame is out
    std::optional<Wait> lastWait_;  // of such an exchange that is running
    LinkObserver* observer_ = nullptr;
    int running_ = 0;              // operations on the stack
    std::shared_ptr<clsLog> log_;  // of the outermost of them; null when its thread had none
};

}  // namespace opane
