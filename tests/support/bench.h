#pragma once

#include <memory>
#include <string>
#include <vector>

#include "link/clsOPane.h"
#include "platform/services.h"
#include "shared/mdlConstantes.h"
#include "support/memory_serial_control.h"
#include "support/raised_number.h"

namespace opane::test {

/// Lines of the log as they would be written.
class RecordingWriter final : public LineWriter {
public:
    explicit RecordingWriter(std::vector<std::string>& lines) : lines_(lines) {}
    void write(const std::string& /*fileName*/, const std::string& line, std::int16_t /*level*/) override {
        // After the level and its indentation: the message padded to 70, then the procedure.
        const auto level = line.find("Level");
        const auto message = line.find_first_not_of(' ', level + 7);
        const auto end = line.find("  ", message);
        lines_.push_back(line.substr(message, end - message));
    }

private:
    std::vector<std::string>& lines_;
};

/// A line in memory with virtual time, and a simulated module or another peer at its other end.
class Bench {
public:
    explicit Bench(simulator::ModuleOptions options = {}) : module(std::move(options)) {
        services->tickCounter = &time;
        services->makeSerialControl = [this] { return std::make_unique<MemorySerialControl>(line); };
    }

    simulator::SimulatedModule module;
    ModulePeer modulePeer{module};
    VirtualTime time;
    MemoryLine line{time, &modulePeer};
    ServicesScope services;
};

/// A bench with the thread's link on it, as an owner would set it up, synchronised by nobody yet. Message boxes are kept
/// and answered with OK.
class LinkBench : public Bench {
public:
    explicit LinkBench(simulator::ModuleOptions options = {}) : Bench(std::move(options)) {
        services->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons buttons) {
            boxes.push_back(title + ": " + text + (buttons == MessageBoxButtons::okCancel ? "|Cancel" : ""));
            return MessageBoxAnswer::ok;
        };
        holder.adopt(clsOPane::create());
        holder.adopt(std::make_shared<clsLog>());
        holder.globals().gintCommPort = 1;
        link().Initialize();
        link().CommunicationType("RS232");
        threadLog()->LogLevel(3);
        threadLog()->writer(std::make_unique<RecordingWriter>(log));
    }

    clsOPane& link() { return *holder.link(); }

    /// The log's lines, a bar between each two.
    std::string logged() const {
        std::string all;
        for (const std::string& entry : log)
            all += (all.empty() ? "" : "|") + entry;
        return all;
    }

    /// Puts a scripted peer at the other end.
    ScriptedPeer& scripted() {
        line.peer = &script;
        return script;
    }

    std::vector<std::string> log;
    std::vector<std::string> boxes;  ///< "title: text", with "|Cancel" when it has that button too
    ScriptedPeer script;
    GlobalsHolder holder;
};

}  // namespace opane::test
