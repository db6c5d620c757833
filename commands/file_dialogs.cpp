#include "link/clsOPane.h"
#include "platform/file.h"
#include "platform/folders.h"

namespace opane {
namespace {

void ask(CommonDialog& dialog, const char* title, const char* folder, const char* filter) {
    dialog.DialogTitle = title;
    dialog.InitDir = libraryFolder() + kPathSeparator + folder;
    dialog.Filter = filter;
    dialog.CancelError = false;
}

void askForImage(CommonDialog& dialog, const char* title) {
    ask(dialog, title, "bin", "Fichiers BIN (*.bin)|*.bin");
}

}  // namespace

bool clsOPane::OpenBMPFile(std::string& strReturnFileName) {
    const Running running(*this);
    CommonDialog& dialog = dialog_.dialog();
    ask(dialog, "Ouvrir fichier BPM pour OPane", "bmp", "Fichiers BMP (*.bmp)|*.bmp");
    dialog.Flags = 0;
    dialog.ShowOpen();
    strReturnFileName = dialog.FileName;
    return !strReturnFileName.empty();
}

bool clsOPane::OpenBINFile(std::string& strReturnFileName) {
    const Running running(*this);
    CommonDialog& dialog = dialog_.dialog();
    askForImage(dialog, "Ouvrir fichier BIN pour EEPROM");
    dialog.ShowOpen();
    strReturnFileName = dialog.FileName;
    return !strReturnFileName.empty();
}

bool clsOPane::SaveBINFile(std::string& strReturnFileName) {
    const Running running(*this);
    CommonDialog& dialog = dialog_.dialog();
    askForImage(dialog, "Sauver fichier BIN pour EEPROM");
    dialog.Flags = CommonDialog::kOverwritePrompt;
    dialog.ShowSave();
    strReturnFileName = dialog.FileName;
    return !strReturnFileName.empty();
}

}  // namespace opane
