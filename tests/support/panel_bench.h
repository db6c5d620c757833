#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "panel/frmOPane.h"
#include "panel/number_text.h"
#include "support/bench.h"

namespace opane::test {

using Texts = std::vector<std::string>;

inline void forEachControl(const window::Container& in, const std::function<void(const window::Control&)>& use) {
    for (const window::Control* const control : in.controls()) {
        use(*control);
        if (const auto* const inner = dynamic_cast<const window::Container*>(control))
            forEachControl(*inner, use);
    }
}

/// The loaded panel on a line in memory, with message boxes and file dialogs that are recorded and answered.
class PanelBench : public Bench {
public:
    explicit PanelBench(simulator::ModuleOptions options = {}) : Bench(std::move(options)) {
        services->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons buttons) {
            boxes.push_back(title + "|" + text + (buttons == MessageBoxButtons::okCancel ? "|Cancel" : ""));
            return answer;
        };
        services->fileDialog = [this](const FileDialogRequest&) { return chosenFile; };
        panel.load();
    }

    void synchronize() {
        panel.cmdSynchronize.click();
        ASSERT_EQ(panel.txtSystemStatus.text(), "System Synchronized");
    }

    template <class... Names>
    void click(const Names&... names) {
        (clickOne(panel.find(names)), ...);
    }
    /// Clicks one, and gives the texts of these boxes, the command's status, what was sent and what was shown.
    Texts press(const std::string& button, const Texts& names = {}) {
        click(button);
        Texts report;
        for (const std::string& name : names)
            report.push_back(text(name));
        report.push_back(status());
        for (const Texts& part : {sent(), shown()})
            report.insert(report.end(), part.begin(), part.end());
        return report;
    }
    void type(const std::string& name, const std::string& text) { box(name).userTypes(text); }
    std::string text(const std::string& name) { return box(name).text(); }
    std::string status() { return panel.txtCommandStatus.text(); }
    bool pagesShown() { return panel.FrameSSTab.visible(); }

    /// What the module has heard since the last call, a frame each: the type, Aux1, Aux2 and the data in hexadecimal.
    Texts sent() {
        Texts texts;
        for (; framesSeen_ < module.frames().size(); ++framesSeen_) {
            const auto& frame = module.frames()[framesSeen_];
            std::string text = hexByteText(frame[5]) + " " + hexByteText(frame[3]) + hexByteText(frame[4]) + " ";
            for (std::size_t i = 6; i + 1 < frame.size(); ++i)
                text += hexByteText(frame[i]);
            texts.push_back(text);
        }
        return texts;
    }

    /// The boxes since the last call.
    Texts shown() { return std::exchange(boxes, {}); }

    /// The module refuses one command, which is tried five times, after that many good ones.
    void refuseCommand(std::size_t after) {
        module.fault({.fault = simulator::Fault::typeZero, .count = 5, .after = after});
    }

    MessageBoxAnswer answer = MessageBoxAnswer::ok;
    std::optional<std::string> chosenFile;
    Texts boxes;  ///< "title|text", with "|Cancel" when it has that button too
    frmOPane panel;

private:
    static void clickOne(window::Control* button) {
        if (auto* const option = dynamic_cast<window::OptionButton*>(button))
            option->click();
        else
            dynamic_cast<window::CommandButton&>(*button).click();
    }
    window::TextBox& box(const std::string& name) { return dynamic_cast<window::TextBox&>(*panel.find(name)); }

    std::size_t framesSeen_ = 0;
};

/// The same, synchronised over the defaults; byte n of either EEPROM is n.
class SynchronizedPanel : public PanelBench {
public:
    SynchronizedPanel() {
        synchronize();
        std::iota(module.state().systemEeprom.begin(), module.state().systemEeprom.end(), std::uint8_t{0});
        std::iota(module.state().userEeprom.begin(), module.state().userEeprom.end(), std::uint8_t{0});
    }

    void cancelAfter(int blocks) {
        services->eventHook = [this, blocks] {
            if (panel.progress() && panel.progress()->value == blocks)
                panel.userCancels();
        };
    }
};

}  // namespace opane::test
