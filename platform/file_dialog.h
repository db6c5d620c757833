#pragma once

#include <functional>
#include <optional>
#include <string>

namespace opane {

/// What a file dialog is asked to be. All texts are UTF-8.
struct FileDialogRequest {
    enum class Kind { open, save };

    Kind kind = Kind::open;
    std::string title;
    std::string folder;            ///< where it starts
    std::string filter;            ///< "description|pattern"
    std::string suggestion;        ///< the name chosen before; only a suggestion
    bool overwritePrompt = false;  ///< ask before an existing file is replaced
};

/// Shows the dialog modally on the calling thread; gives the full path, or nothing when it was cancelled.
using FileDialogHandler = std::function<std::optional<std::string>(const FileDialogRequest&)>;

/// The system's own dialog, for a thread without a handler: on POSIX there is none, so it is cancelled at once, as it
/// is on Windows in a program without a visible desktop. A library in a program without a screen never blocks.
std::optional<std::string> systemFileDialog(const FileDialogRequest& request);

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

    /// Show the dialog through the thread's handler (services.h), else the system's own, and set FileName.
    void ShowOpen();
    void ShowSave();

private:
    void show(FileDialogRequest::Kind kind);

    std::string lastChoice_;
};

}  // namespace opane
