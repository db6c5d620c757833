#include "platform/dialogs.h"

#include <cstdio>

#include "platform/services.h"

namespace opane {

MessageBoxAnswer showMessageBox(const std::string& text, const std::string& title, MessageBoxButtons buttons) {
    if (const auto handler = services().messageBox)
        return handler(text, title, buttons);
    std::fprintf(stderr, "%s\n%s\n", title.c_str(), text.c_str());
    return MessageBoxAnswer::ok;
}

std::optional<std::string> showFileDialog(const FileDialogRequest& request) {
    const auto handler = services().fileDialog;
    return handler ? handler(request) : std::nullopt;
}

}  // namespace opane
