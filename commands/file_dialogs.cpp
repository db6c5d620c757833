#include "link/clsOPane.h"
#include "platform/file.h"
#include "platform/folders.h"

namespace opane {
namespace {

/// What a dialog asks for.
struct FileQuestion {
    const char* title;
    const char* folder;  // under the library's own
    const char* filter;
    int flags;
    void (CommonDialog::*show)();
};

constexpr FileQuestion kOpenBitmap{"Ouvrir fichier BPM pour OPane", "bmp", "Fichiers BMP (*.bmp)|*.bmp", 0,
                                   &CommonDialog::ShowOpen};
constexpr FileQuestion kOpenImage{"Ouvrir fichier BIN pour EEPROM", "bin", "Fichiers BIN (*.bin)|*.bin", 0,
                                  &CommonDialog::ShowOpen};
constexpr FileQuestion kSaveImage{"Sauver fichier BIN pour EEPROM", "bin", "Fichiers BIN (*.bin)|*.bin",
                                  CommonDialog::kOverwritePrompt, &CommonDialog::ShowSave};

bool ask(CommonDialog& dialog, const FileQuestion& question, std::string& strReturnFileName) {
    dialog.DialogTitle = question.title;
    dialog.InitDir = libraryFolder() + kPathSeparator + question.folder;
    dialog.Filter = question.filter;
    dialog.CancelError = false;
    dialog.Flags = question.flags;
    (dialog.*question.show)();
    strReturnFileName = dialog.FileName;
    return !strReturnFileName.empty();
}

}  // namespace

bool clsOPane::OpenBMPFile(std::string& strReturnFileName) {
    const Running running(*this);  // the dialog is this link's own
    return ask(dialog_.dialog(), kOpenBitmap, strReturnFileName);
}

bool clsOPane::OpenBINFile(std::string& strReturnFileName) {
    const Running running(*this);
    return ask(dialog_.dialog(), kOpenImage, strReturnFileName);
}

bool clsOPane::SaveBINFile(std::string& strReturnFileName) {
    const Running running(*this);
    return ask(dialog_.dialog(), kSaveImage, strReturnFileName);
}

}  // namespace opane
