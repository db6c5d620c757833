#pragma once

#include <functional>
#include <optional>
#include <string>

namespace opane {

// What a host may show and answer in the system's place. All texts are UTF-8.

enum class MessageBoxButtons { ok, okCancel };
enum class MessageBoxAnswer { ok, cancel };

/// Shows a modal box on the calling thread and gives the button that closed it. A line break is carriage return and
/// line feed.
using MessageBoxHandler =
    std::function<MessageBoxAnswer(const std::string& text, const std::string& title, MessageBoxButtons buttons)>;

/// What a file dialog is asked to be.
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

}  // namespace opane
