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

/// Drives one OPane LCD module. An object belongs to the thread that created it; one object per thread is the supported
/// use. A call returns when its exchanges with the module are over; while it waits, the host's pending events run.
///
/// Numbers travel by reference; the methods change only those said to be read from the module, and intReturnStatus: 0
/// success, 1 an argument out of its allowed set, or a module that refused or did not answer.
///
/// A call result other than S_OK is an error, with a text in the thread's error information, and intReturnStatus keeps
/// what it held at that moment: 0x800A0000 + n for the error with number n (5 invalid call, 6 overflow, 9 position
/// outside the screen, 53 file not found, 57 device failed, 70, 75 and 76 no access to a file, 91 the thread's link is
/// gone, 321 no character generator, 380 baud rate refused, 8018 port not open); E_POINTER for a null pointer, nothing
/// is sent then; RPC_E_WRONG_THREAD on another thread; E_OUTOFMEMORY; E_UNEXPECTED.
struct _clsOPaneCommDLL : IDispatch {
    /// Shows a text on one text line, merged at its edges with what this object has shown before.
    /// @param strString        one glyph of 6 x 8 pixels a character
    /// @param intLignePos      text line 0..7
    /// @param intColumnPos     character column; the text begins at pixel column 6 x intColumnPos + intPreGap
    /// @param intPreGap        pixels added to the start; may be negative
    /// @param intInvertedText  0 dark on light, 1 light on a dark bar
    /// @param strGenCarFile    path of the character generator; with one that cannot be read intReturnStatus is 0, and
    ///                         the call result tells
    virtual HRESULT STDMETHODCALLTYPE DisplayString(BSTR strString, SHORT* intLignePos, SHORT* intColumnPos,
                                                    SHORT* intPreGap, SHORT* intInvertedText, BSTR strGenCarFile,
                                                    SHORT* intReturnStatus) = 0;
    /// Opens the port with that rate and does the handshake with the module of that node, on the bus type "RS232".
    /// @param intComPort   COM port number from 1
    /// @param lngBaudrate  bits per second, 1200 to 57600
    /// @param intNode      0..3
    virtual HRESULT STDMETHODCALLTYPE Synchronize(SHORT* intComPort, LONG* lngBaudrate, SHORT* intNode,
                                                  SHORT* intReturnStatus) = 0;
    /// The library's own version, "OpaneCommDLL V1.0.0" for 1.0.0. Nothing is sent.
    /// @param strVersion  a string of the caller's or null; replaced by one that the caller frees
    virtual HRESULT STDMETHODCALLTYPE Version(BSTR* strVersion) = 0;
    /// Changes the baud rate of the module and of the port, and does a handshake.
    /// @param lngNewBaudrate  1200, 2400, 4800, 9600, 19200 or 38400
    virtual HRESULT STDMETHODCALLTYPE ChangeBaudrate(LONG* lngNewBaudrate, SHORT* intReturnStatus) = 0;
    /// Reads status flags, 1 or 0 each; all are 0 when the status is 1.
    virtual HRESULT STDMETHODCALLTYPE ReadStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                                 SHORT* intLCDOn, SHORT* intAutomaticBacklightON,
                                                 SHORT* intReturnStatus) = 0;
    /// Writes status flags, 0 or 1 each.
    virtual HRESULT STDMETHODCALLTYPE WriteStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                                  SHORT* intLCDOn, SHORT* intAutomaticBacklightON,
                                                  SHORT* intReturnStatus) = 0;
    /// Shows a one-bit bitmap file of at most 120 x 64 pixels.
    virtual HRESULT STDMETHODCALLTYPE DisplayBMP(BSTR strFileNameWithPath, SHORT* intReturnStatus) = 0;
    /// Reads the last key of the remote control.
    /// @param intLastKeyNumber  1 to 9; 0 no key yet; keeps its value for an unknown code; -1 when the status is 1
    /// @param intToggleOn       1 or 0, changes with every press
    virtual HRESULT STDMETHODCALLTYPE ReadIRLastKey(SHORT* intLastKeyNumber, SHORT* intToggleOn,
                                                    SHORT* intReturnStatus) = 0;
};
// NOLINTEND(bugprone-reserved-identifier)
