#include "link/clsOPane.h"

#include <exception>

#include "shared/mdlConstantes.h"
#include "shared/runtime_error.h"

namespace opane {

clsOPane::Running::Running(clsOPane& link) : link_(link.shared_from_this()) {
    if (link_->running_++ == 0)
        link_->log_ = threadLog();
}

clsOPane::Running::~Running() {
    if (--link_->running_ == 0)
        link_->log_.reset();
}

std::shared_ptr<clsOPane> clsOPane::create() {
    return std::shared_ptr<clsOPane>(new clsOPane);
}

clsOPane::clsOPane() : MSComm(comm_.MSComm()) {
    MSComm.InputMode(1);
}

clsOPane::~clsOPane() {
    CloseCommunication();
}

void clsOPane::Baudrate(std::int32_t lngBaudrate) {
    baudrate_ = lngBaudrate;
    CloseCommunication();
    ChangeComPortConfiguration();
    OpenCommunication();
}

void clsOPane::CommPort(std::int16_t intCommPort) {
    CloseCommunication();
    commPort_ = intCommPort;
    ChangeComPortConfiguration();
    OpenCommunication();
}

bool clsOPane::OpenCommunication() {
    try {
        MSComm.PortOpen(true);
    } catch (const std::exception&) {
        return false;  // the control keeps the reason for the error of the next read or write
    }
    synchronized_ = false;  // it was closed until now, perhaps by a device that has vanished
    return true;
}

bool clsOPane::IsOpen() const {
    return MSComm.PortOpen();
}

void clsOPane::CloseCommunication() {
    if (MSComm.PortOpen())
        MSComm.PortOpen(false);
    synchronized_ = false;
}

void clsOPane::ChangeComPortConfiguration() {
    MSComm.CommPort(commPort_);
    MSComm.Settings(std::to_string(baudrate_) + ",N," + std::to_string(dataBits_) + "," + std::to_string(stopBits_));
}

void clsOPane::Initialize() {
    const auto link = threadLink();
    const auto globals = threadGlobals();
    commPort_ = globals->gintCommPort;
    baudrate_ = globals->glngBaudrate;
    dataBits_ = 8;
    stopBits_ = 1;
    if (!link->IsOpen())
        link->OpenCommunication();
}

void clsOPane::Terminate() {
    const auto link = threadLink();
    if (link->IsOpen())
        link->CloseCommunication();
}

void clsOPane::logEvent(std::string_view procedure, std::string_view text, std::int16_t level) {
    if (!log_)
        throw RuntimeError(ErrorNumber::objectNotSet, "this thread has no log: its object has ended");
    if (observer_ != nullptr)
        observer_->noted(procedure, text);
    std::string strProcName(procedure);
    std::string strdata(text);
    log_->LogEvent(strProcName, strdata, level);
}

}  // namespace opane
