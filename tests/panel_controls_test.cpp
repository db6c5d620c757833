#include <gtest/gtest.h>

#include <stdexcept>

#include "forms/window_controls.h"
#include "platform/services.h"
#include "shared/runtime_error.h"

namespace opane::test {
namespace {

class Controls : public window::Form, public testing::Test {
public:
    Controls() : Form("Small", "Small Error") {
        for (const auto* const entry : {"a", "b"})
            list.entry(list.entries().size(), entry);
        list.onClick = [this] { done += "list" + std::to_string(list.selected()) + " "; };
        options.onClick = [this] { done += "option" + std::to_string(options.selected()) + " "; };
        services->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons) {
            done += "[" + title + ": " + text + "] ";
            return MessageBoxAnswer::ok;
        };
        load();
    }

    std::string done;
    ServicesScope services;
    window::Frame frame{*this, "frame", "Frame", {0, 0}};
    window::ComboBox list{frame, "list", {0, 0}};
    window::OptionGroup options{frame, "options", {"one", "two"}, {1, 0}};
    window::TextBox box{frame, "box", {3, 0}, {.lines = 2}};
    window::TextBox shown{frame, "shown", {4, 0}, {.readOnly = true}};
    window::CommandButton button{*this, "button", "Button", {1, 0}};

private:
    void Form_Unload() override { done += "unloaded "; }
    void afterError() override { done += "tidied "; }
};

TEST_F(Controls, RunTheHandlerWhenAnotherEntryIsSelectedByWhomever) {
    list.select(1);
    list.select(1);
    list.userSelects(0);
    list.text("b");
    EXPECT_EQ(list.selected(), 1);
    options[0].click();
    options[0].click();
    options.select(1);
    EXPECT_FALSE(options[0].selected());
    EXPECT_EQ(done, "list1 list0 option0 option1 ");
    list.text("neither");
    EXPECT_EQ(list.selected(), window::ComboBox::kNone);
    EXPECT_THROW(list.select(2), RuntimeError);
}

TEST_F(Controls, IgnoreThePersonWhileHiddenDisabledReadOnlyOrNotLoaded) {
    int reported = 0;
    list.observer([&](window::Change what) { reported += what == window::Change::selection ? 1 : 0; });
    frame.visible(false);
    list.userSelects(1);
    frame.visible(true);
    frame.enabled(false);
    list.userSelects(1);
    EXPECT_EQ(list.selected(), window::ComboBox::kNone);
    EXPECT_EQ(reported, 2);  // so that a view puts its own list back
    frame.enabled(true);
    shown.userTypes("typed");
    EXPECT_EQ(shown.text(), "");
    box.userTypes("1\n2\r\n3");
    EXPECT_EQ(box.text(), "1\r\n2\r\n3");
    userCloses();
    button.click();
    EXPECT_EQ(done, "unloaded ");
}

TEST_F(Controls, TakeNothingButCancelAndCloseWhileAHandlerRuns) {
    bool wentOn = true;
    button.onClick = [&] {
        window::LongWork work(*this, "long", 3);
        wentOn = work.advance(1);
        list.select(1);  // code may
        done += "end ";
    };
    services->eventHook = [&] {
        EXPECT_TRUE(busy());
        EXPECT_EQ(progress()->value, 1);
        options[1].click();
        box.userTypes("typed");
        userCloses();
        userCancels();
    };
    button.click();
    EXPECT_FALSE(wentOn || progress() || loaded());
    EXPECT_EQ(done, "list1 end unloaded ");
    EXPECT_EQ(box.text(), "");
}

TEST_F(Controls, ShowWhatAHandlerRaisesAndGoOn) {
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[] { throw RuntimeError(ErrorNumber::deviceIo, "gone"); }, "Error 57: gone"},
        {[] { throw std::bad_alloc(); }, "Error 7: out of memory"},
        {[] { throw std::runtime_error("odd"); }, "Error without a number: odd"},
        {[] { throw 1; }, "Error without a number or a text"},
    };
    for (const auto& [work, text] : cases) {
        done.clear();
        button.onClick = work;
        button.click();
        EXPECT_EQ(done, "[Small Error: " + text + "] tidied ");
        EXPECT_FALSE(busy());
    }
}

}  // namespace
}  // namespace opane::test
