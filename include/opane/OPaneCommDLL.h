#pragma once

/// What a host needs to bind early to the component OPaneCommDLL: its identifiers and its dual interface, as the type
/// library has them. The header of the component runtime is all that it uses.

#include <opane/component_runtime.h>

constexpr GUID LIBID_OPaneCommDLL = {0xce5166b6, 0x070a, 0x4f60, {0xb5, 0x55, 0xf7, 0xdf, 0xc2, 0xf3, 0xaf, 0x48}};
// The interface's name is given.  NOLINTBEGIN(bugprone-reserved-identifier)
constexpr IID IID__clsOPaneCommDLL = {0x52dffd97, 0xc6cc, 0x4ba8, {0x9c, 0x5f, 0x99, 0xa7, 0x20, 0x9c, 0x77, 0x05}};
constexpr CLSID CLSID_clsOPaneCommDLL = {0xf58b722d, 0x34f5, 0x4721, {0xae, 0x0a, 0x41, 0xe2, 0xfa, 0xfa, 0x3d, 0x3c}};

/// The programmatic identifier.
#define PROGID_clsOPaneCommDLL "OPaneCommDLL.clsOPaneCommDLL"

/// Drives one OPane LCD module of 120 x 64 pixels on an RS232 line. This page is the manual of the methods. "docs/" are
/// the project's documents, which add formats and figures.
///
/// Life and threads. An object belongs to the thread that created it; references may be taken and released on any
/// thread. One object per thread is the supported use: a second one takes the thread's link over, and when any of them
/// ends the others raise 91. While a call waits, the host's pending events run, also such as call the object again or
/// release it; the object then lives until the call ends. No two calls at the same time.
///
/// The port. Creating an object opens COM port 1 at 9600 baud, as far as it can be opened (that it cannot is no error),
/// and sends nothing. Synchronize closes the port and opens the one it is given; ChangeBaudrate closes it and opens it
/// at the new rate; the end of the object closes it. So does a device that vanishes: error 57, and Synchronize opens it
/// again. No method asks whether Synchronize has succeeded: what it has not set is port 1, 9600 baud, node 3.
///
/// Exchanges. A method sends its commands in exchanges, as many as is said with it, and returns when they are over. One
/// takes as long as its bytes are on the wire. It repeats what failed; on a module that says nothing it gives up after
/// six waits of 1 s and 125 handshakes of 0.1 s. What each method takes at the most: docs/bounds.md. What has been sent
/// and is not confirmed may have been carried out all the same. The next call needs no Synchronize, unless the module
/// has another rate or node by then.
///
/// Arguments. Numbers travel by reference; a method changes only those said to be read from the module, and
/// intReturnStatus: 0 success, 1 an argument out of its allowed set, or a module that refused or did not answer.
/// Strings are UTF-16; a null string is an empty one. Nothing is remembered of a call but the image of the screen that
/// the object keeps: blank at first, then what DisplayString and DisplayBMP have put there, also where the module did
/// not confirm it. It is not read from the module, and nothing else changes it.
///
/// Errors. A call result other than S_OK is an error, with a text in the thread's error information (GetErrorInfo).
/// intReturnStatus and the other written arguments keep what they held at that moment, so look at the result first.
/// 0x800A0000 + n is the error with number n: 5 invalid call, 6 overflow, 9 out of range, 53 no such file, 57 the
/// device failed or the log's disk is full, 70, 75 and 76 no access to a file or folder, 91 the thread's link is gone,
/// 321 no character generator, 380 baud rate refused, 8018 port not open (the text says why). Every method but Version
/// may raise 91, 8018, 57 and those of the log. Others: E_POINTER for a null pointer, nothing is sent then;
/// RPC_E_WRONG_THREAD on another thread; E_OUTOFMEMORY; E_UNEXPECTED.
///
/// Boxes. Only ChangeBaudrate shows a message box, and waits until it is closed: a box of the system on Windows; on
/// Linux what the host has set with OpaneSetHost, else a text on standard error and no wait. No method opens a dialog.
///
/// The log (docs/log.md). Nothing is written unless OPANE_LOG_LEVEL is 2 (commands) or 3 (frames too). It is read with
/// OPANE_LOG_TESTER and OPANE_LOG_FOLDER when an object is created. A line that cannot be written is an error of the
/// call that writes it: 70, 75, 76 (the folder is never made), 57; what the call had done by then stays done.
struct _clsOPaneCommDLL : IDispatch {
    /// Shows a text on one text line. Only the blocks of 8 x 8 pixels that it touches are sent, one exchange each, at
    /// most 15, from left to right; beside the text they keep the pixels of the object's image. A block that fails is
    /// counted, and the others are sent all the same.
    /// @param strString        one glyph of 6 x 8 pixels for each character; 20 fill a line
    /// @param intLignePos      text line 0..7, from the top
    /// @param intColumnPos     character column; the text begins at pixel column 6 x intColumnPos + intPreGap
    /// @param intPreGap        pixels added to the start; may be negative
    /// @param intInvertedText  0 dark on light, 1 light on a dark bar
    /// @param strGenCarFile    path of the character generator (docs/character-generator.md), read at every call
    /// @param intReturnStatus  1, and nothing has been sent: another intInvertedText (the generator is not read then),
    ///                         an empty text, one that reaches beyond the right edge, a character that the generator or
    ///                         the code page (Windows-1252; on Windows the system's) lacks. 1 also when a block failed
    /// @return before anything is sent, with intReturnStatus 0: 53, 70, 75, 76 or 321 for the generator; 9 for a line
    ///         outside 0..7 or a first pixel column below 0; 6 for a position beyond 16 bits; 6, 13 (no number) or
    ///         94 (null) for a glyph column that is no byte
    virtual HRESULT STDMETHODCALLTYPE DisplayString(BSTR strString, SHORT* intLignePos, SHORT* intColumnPos,
                                                    SHORT* intPreGap, SHORT* intInvertedText, BSTR strGenCarFile,
                                                    SHORT* intReturnStatus) = 0;
    /// Closes the port, opens it with that rate and does one handshake with the module of that node; the others take
    /// rate, port and node from here. Waits for its answer for 100 ms; not an exchange, and nothing is repeated. When
    /// intComPort is another port than before, that one is opened once more, at the new rate, on the way. After a
    /// status 1 the port is open at the new rate, and the node is the one before.
    /// @param intComPort   COM port from 1: the device that the environment variable OPANE_COM<n> names, else COM<n> on
    ///                     Windows and /dev/ttyS<n-1> on Linux, where the host may decide instead (OpaneSetHost)
    /// @param lngBaudrate  bits per second; the module runs at 1200, 2400, 4800, 9600, 19200, 38400 or 57600
    /// @param intNode      0..3; with any other number the byte 0 is sent, and a byte 0 expected
    /// @return 380 for a rate that is none of the system's, the port is closed then; 8018 for a port that does not open
    virtual HRESULT STDMETHODCALLTYPE Synchronize(SHORT* intComPort, LONG* lngBaudrate, SHORT* intNode,
                                                  SHORT* intReturnStatus) = 0;
    /// The library's own version: "OpaneCommDLL V" and three numbers with points, as in "OpaneCommDLL V1.0.0". Nothing
    /// is sent.
    /// @param strVersion  a string of the caller's or null; freed and replaced by one that the caller frees
    virtual HRESULT STDMETHODCALLTYPE Version(BSTR* strVersion) = 0;
    /// Changes the rate of the module, one exchange at the old rate, then of the port, and does a handshake at the new
    /// rate, for which it waits 1 s. The module is taken to have the crystal of type 2 (docs/wire.md, "Baud rates").
    /// @param lngNewBaudrate   1200, 2400, 4800, 9600, 19200 or 38400. The rate that was set last gives status 0, and
    ///                         nothing is sent; any other number, 57600 too, gives 1, and nothing is sent
    /// @param intReturnStatus  1 otherwise: the exchange failed, port and rate are as they were; or, with a box, the
    ///                         port did not open at the new rate (it is opened at the old one again, while the module
    ///                         has the new one), or the module did not answer there (the port keeps the new one).
    ///                         After a 1 call Synchronize, at the new rate and, if that fails, at the old one
    virtual HRESULT STDMETHODCALLTYPE ChangeBaudrate(LONG* lngNewBaudrate, SHORT* intReturnStatus) = 0;
    /// Reads status flags, one exchange: 1 or 0 each; all are 0 when the status is 1.
    /// @param intUpSideDown            the picture is turned upside down
    /// @param intInvertedDisplay       dark and light are exchanged
    /// @param intCadreON               the frame around the screen is drawn
    /// @param intLCDOn                 the LCD shows something
    /// @param intAutomaticBacklightON  the module controls its backlight by itself
    virtual HRESULT STDMETHODCALLTYPE ReadStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                                 SHORT* intLCDOn, SHORT* intAutomaticBacklightON,
                                                 SHORT* intReturnStatus) = 0;
    /// Writes the same flags, 0 or 1 each, in six exchanges in this order: frame, upside down, inverted, LCD, automatic
    /// backlight; then the automatic LCD drive voltage (Vlcd), which is always switched on. Stops at the first that
    /// fails: those before it are set.
    /// @param intReturnStatus  1, and nothing has been sent, for any other value; 1 also when an exchange failed
    virtual HRESULT STDMETHODCALLTYPE WriteStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                                  SHORT* intLCDOn, SHORT* intAutomaticBacklightON,
                                                  SHORT* intReturnStatus) = 0;
    /// Shows a one-bit bitmap file on the whole screen, in eight exchanges, one for each text line from the top; stops
    /// at the first that fails, with the lines above it shown. Uncompressed, at most 120 x 64 pixels, a clear bit dark;
    /// what a smaller picture lacks is sent blank. The object's image takes the picture, and keeps what lies beside it,
    /// before anything is sent. Fails at 1200 baud, where a line takes longer than its answer is waited for. The format
    /// and what is read of it: docs/bitmap.md.
    /// @return 53, 70, 75 or 76 for the file, 9 for a larger picture: nothing has been changed or sent, and
    ///         intReturnStatus keeps its value
    virtual HRESULT STDMETHODCALLTYPE DisplayBMP(BSTR strFileNameWithPath, SHORT* intReturnStatus) = 0;
    /// Reads the last key of the remote control, one exchange. The module keeps it: the same key comes again.
    /// @param intLastKeyNumber  1 to 9; 0 no key yet; keeps its value for an unknown code; -1 when the status is 1
    /// @param intToggleOn       1 or 0, changes with every press; keeps its value for an unknown code; 0 when the
    ///                          status is 1, and with no key yet
    /// @return 9 when the module's answer is shorter than two bytes; nothing is written then
    virtual HRESULT STDMETHODCALLTYPE ReadIRLastKey(SHORT* intLastKeyNumber, SHORT* intToggleOn,
                                                    SHORT* intReturnStatus) = 0;
};
// NOLINTEND(bugprone-reserved-identifier)
