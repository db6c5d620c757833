#pragma once

#include <string>

#include "platform/dialogs.h"

namespace opane {

/// The file dialog control of a host form. Its settings and its last name stay between uses.
class CommonDialog {
public:
    static constexpr int kOverwritePrompt = 2;  ///< flag: ask before an existing file is replaced

    std::string DialogTitle;
    std::string InitDir;
    std::string Filter;
    bool CancelError = false;  ///< whether a cancelled dialog is an error; it never is one here
    int Flags = 0;
    std::string FileName;  ///< full path; empty after a cancelled dialog

    /// Show the dialog (showFileDialog) and set FileName.
    void ShowOpen();
    void ShowSave();

private:
    void show(FileDialogRequest::Kind kind);

    std::string lastChoice_;
};

}  // namespace opane
