#include "platform/file_dialog.h"

#include "platform/services.h"

namespace opane {

std::optional<std::string> showFileDialog(const FileDialogRequest& request) {
    const auto handler = services().fileDialog;
    return handler ? handler(request) : std::nullopt;
}

}  // namespace opane
