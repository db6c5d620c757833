#include "platform/file_dialog.h"

namespace opane {

std::optional<std::string> systemFileDialog(const FileDialogRequest& /*request*/) {
    return std::nullopt;
}

}  // namespace opane
