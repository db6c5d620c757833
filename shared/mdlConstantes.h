#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace opane {

class clsOPane;
class clsLog;

/// The globals of one thread: its one link, its one log and the connection choices. Whoever opens the library's work
/// (the public class, a form) gives the link and the log to its GlobalsHolder, which also ends them.
///
/// The choices belong to the thread. The two references can be taken away by a holder that ends on another thread, so
/// they are reached in one way, behind a lock: by threadLink, threadLog and GlobalsHolder.
class Globals {
public:
    std::int16_t gintCommPort = 0;    ///< COM port number
    std::int16_t gintNodeNumber = 0;  ///< node number of the module
    std::string gstrBusType;          ///< "RS232" or "RS485"
    std::int32_t glngBaudrate = 0;    ///< baud rate read by Initialize; nothing assigns it

private:
    friend class GlobalsHolder;
    friend std::shared_ptr<clsOPane> threadLink();
    friend std::shared_ptr<clsLog> threadLog();

    std::shared_ptr<clsOPane> gobjOPane;
    std::shared_ptr<clsLog> gobjLog;
};

/// Keeps the globals of the thread that creates it. Every public object and every form has one.
/// When any holder ends, the link and the log are released, whatever other holders remain; the set itself goes with
/// the last of them. It may end on another thread than its own.
class GlobalsHolder {
public:
    GlobalsHolder();
    ~GlobalsHolder();
    GlobalsHolder(const GlobalsHolder&) = delete;
    GlobalsHolder& operator=(const GlobalsHolder&) = delete;

    Globals& globals() const { return *globals_; }

    /// Puts a link or log in place of the thread's; null takes it away. The one before ends with this call, unless it is
    /// running.
    void adopt(std::shared_ptr<clsOPane> link);
    void adopt(std::shared_ptr<clsLog> log);

    /// The set's link, for the length of a call; null when there is none.
    std::shared_ptr<clsOPane> link() const;

private:
    std::shared_ptr<Globals> globals_;
};

/// The calling thread's globals; null when nothing on this thread holds them.
std::shared_ptr<Globals> threadGlobals();

/// The calling thread's link, for the length of a call.
/// @throws RuntimeError 91 (object variable not set) when the thread has none
std::shared_ptr<clsOPane> threadLink();

/// The calling thread's log, for the length of a call; null when it has none.
std::shared_ptr<clsLog> threadLog();

}  // namespace opane
