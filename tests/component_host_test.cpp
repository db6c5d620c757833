// What a component takes from the host of its thread.

#include "automation/component/component_host.h"

#include <gtest/gtest.h>

#include <cstring>

#include "forms/common_dialog.h"
#include "opane/component_runtime.h"
#include "platform/dialogs.h"
#include "platform/serial_control.h"

namespace opane::component {
namespace {

/// The thread's host, which answers everything and keeps what it was asked.
struct ComponentHost : testing::Test {
    static ComponentHost& from(void* context) { return *static_cast<ComponentHost*>(context); }

    std::string asked;
    BOOL accepts = 1;
    OpaneHost host{this, nullptr,
                   [](void* context, const char* text, const char* title, BOOL withCancel) -> BOOL {
                       from(context).asked = std::string(title) + "|" + text + (withCancel != 0 ? "|Cancel" : "");
                       return from(context).accepts;
                   },
                   [](void* context, const OpaneFileDialog* dialog, char* path, std::size_t pathBytes) -> BOOL {
                       from(context).asked = std::string(dialog->title) + "|" + dialog->filter +
                                             (dialog->save != 0 ? "|save" : "|open") +
                                             (dialog->overwritePrompt != 0 ? "|ask" : "");
                       std::strncpy(path, "/chosen/file.bin", pathBytes - 1);
                       return from(context).accepts;
                   },
                   [](void*, SHORT comPort) -> const char* { return comPort == 2 ? "/dev/second" : nullptr; }};
};

TEST_F(ComponentHost, AnswersBoxesDialogsAndPortsAndMayGoInTheMiddleOfACall) {
    OpaneSetHost(&host);
    const ComponentHostScope scope;
    EXPECT_EQ(showMessageBox("Text", "Title", MessageBoxButtons::okCancel), MessageBoxAnswer::ok);
    EXPECT_EQ(asked, "Title|Text|Cancel");
    CommonDialog dialog;
    dialog.DialogTitle = "Save it";
    dialog.Filter = "Binary|*.bin";
    dialog.Flags = CommonDialog::kOverwritePrompt;
    dialog.ShowSave();
    EXPECT_EQ(dialog.FileName, "/chosen/file.bin");
    EXPECT_EQ(asked, "Save it|Binary|*.bin|save|ask");
    EXPECT_EQ(devicePath(1), "");
    EXPECT_EQ(devicePath(2), "/dev/second");
    accepts = 0;
    EXPECT_EQ(showMessageBox("Text", "Title", MessageBoxButtons::okCancel), MessageBoxAnswer::cancel);
    dialog.ShowOpen();
    EXPECT_EQ(dialog.FileName, "");

    asked.clear();
    OpaneSetHost(nullptr);
    EXPECT_EQ(devicePath(2), systemDevicePath(2));
    testing::internal::CaptureStderr();
    EXPECT_EQ(showMessageBox("Text", "Title", MessageBoxButtons::ok), MessageBoxAnswer::ok);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Text"), std::string::npos);
    dialog.ShowOpen();
    EXPECT_EQ(dialog.FileName + asked, "");
}

}  // namespace
}  // namespace opane::component
