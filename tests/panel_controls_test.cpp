#include <gtest/gtest.h>

#include <stdexcept>

#include "forms/window_controls.h"
#include "platform/services.h"
#include "shared/runtime_error.h"

namespace opane::test {
namespace {

using window::Change;

class SmallForm : public window::Form {
public:
    SmallForm() : Form("Small", "Small Error") {
        for (const auto* const entry : {"a", "b"})
            list.entry(list.entries().size(), entry);
        list.onClick = [this] { done += "list" + std::to_string(list.selected()) + " "; };
        options.onClick = [this] { done += "option" + std::to_string(options.selected()) + " "; };
        button.onClick = [this] { work(); };
        services->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons) {
            done += "[" + title + ": " + text + "] ";
            return MessageBoxAnswer::ok;
        };
        services->eventHook = [this] { event(); };
        load();
    }

    std::function<void()> work = [] {};
    std::function<void()> event = [] {};  // what the host's events do in a wait
    std::string done;

    ServicesScope services;
    window::Frame frame{*this, "frame", "Frame", {0, 0}};
    window::ComboBox list{frame, "list", {0, 0}};
    window::OptionGroup options{frame, "options", {"one", "two"}, {1, 0}};
    window::TextBox box{frame, "box", {3, 0}, {.lines = 2}};
    window::CommandButton button{*this, "button", "Button", {1, 0}};

private:
    void Form_Unload() override { done += "unloaded "; }
    void afterError() override { done += "tidied "; }
};

TEST(Controls, RunTheHandlerWhenAnotherEntryIsSelectedByWhomever) {
    SmallForm form;
    form.list.select(1);
    form.list.select(1);
    form.list.userSelects(0);
    form.list.text("b");
    EXPECT_EQ(form.list.selected(), 1);
    form.options[0].click();
    form.options[0].click();
    form.options.select(1);
    EXPECT_FALSE(form.options[0].selected());
    EXPECT_EQ(form.done, "list1 list0 option0 option1 ");
    form.list.text("neither");
    EXPECT_EQ(form.list.selected(), window::ComboBox::kNone);
    EXPECT_THROW(form.list.select(2), RuntimeError);
}

TEST(Controls, KeepLineBreaksAsCarriageReturnAndLineFeed) {
    SmallForm form;
    form.box.userTypes("1\n2\r\n3");
    EXPECT_EQ(form.box.text(), "1\r\n2\r\n3");
}

TEST(Controls, IgnoreThePersonWhileHiddenDisabledOrNotLoaded) {
    SmallForm form;
    int reported = 0;
    form.list.observer([&](Change what) { reported += what == Change::selection ? 1 : 0; });
    form.frame.visible(false);
    form.list.userSelects(1);
    form.frame.visible(true);
    form.frame.enabled(false);
    form.list.userSelects(1);
    EXPECT_EQ(form.list.selected(), window::ComboBox::kNone);
    EXPECT_EQ(reported, 2);  // so that a view puts its own list back
    form.userCloses();
    form.button.click();
    EXPECT_EQ(form.done, "unloaded ");
}

TEST(Controls, TakeNothingButCancelAndCloseWhileAHandlerRuns) {
    SmallForm form;
    bool wentOn = true;
    form.work = [&] {
        form.done += "begin ";
        window::LongWork work(form, "long", 3);
        wentOn = work.advance(1);
        form.list.select(1);  // code may
        form.done += "end ";
    };
    form.event = [&] {
        EXPECT_TRUE(form.busy());
        EXPECT_EQ(form.progress()->value, 1);
        form.button.click();
        form.options[1].click();
        form.box.userTypes("typed");
        form.userCloses();
        form.userCancels();
    };
    form.button.click();
    EXPECT_FALSE(wentOn);
    EXPECT_FALSE(form.progress());
    EXPECT_EQ(form.done, "begin list1 end unloaded ");
    EXPECT_EQ(form.box.text(), "");
    EXPECT_FALSE(form.loaded());
}

TEST(Controls, ShowWhatAHandlerRaisesAndGoOn) {
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[] { throw RuntimeError(ErrorNumber::deviceIo, "gone"); }, "Error 57: gone"},
        {[] { throw std::bad_alloc(); }, "Error 7: out of memory"},
        {[] { throw std::runtime_error("odd"); }, "Error without a number: odd"},
        {[] { throw 1; }, "Error without a number or a text"},
    };
    for (const auto& [work, text] : cases) {
        SmallForm form;
        form.work = work;
        form.button.click();
        EXPECT_EQ(form.done, "[Small Error: " + text + "] tidied ");
        EXPECT_FALSE(form.busy());
    }
}

}  // namespace
}  // namespace opane::test
