#include "forms/common_dialog.h"

namespace opane {

void CommonDialog::ShowOpen() {
    show(FileDialogRequest::Kind::open);
}

void CommonDialog::ShowSave() {
    show(FileDialogRequest::Kind::save);
}

void CommonDialog::show(FileDialogRequest::Kind kind) {
    FileDialogRequest request;
    request.kind = kind;
    request.title = DialogTitle;
    request.folder = InitDir;
    request.filter = Filter;
    request.suggestion = lastChoice_;
    request.overwritePrompt = kind == FileDialogRequest::Kind::save && (Flags & kOverwritePrompt) != 0;

    FileName = showFileDialog(request).value_or(std::string());
    if (!FileName.empty())
        lastChoice_ = FileName;
}

}  // namespace opane
