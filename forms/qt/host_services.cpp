#include "forms/qt/host_services.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>

#include "forms/qt/qt_text.h"

namespace opane::qt {
namespace {

struct Filter {
    QString shown;   // "description (patterns)"
    QString suffix;  // of the first pattern; empty when it is none
};

/// From "description|pattern", where patterns are separated by semicolons.
Filter qtFilter(const std::string& filter) {
    const QStringList parts = toQt(filter).split(u'|');
    if (parts.size() < 2)
        return {};
    const QString patterns = QString(parts[1]).replace(u';', u' ');
    QString description = parts[0];
    // Qt hides the parenthesis that it takes the patterns from, so that this one is not shown twice.
    const QString told = QStringLiteral(" (%1)").arg(parts[1]);
    if (description.endsWith(told))
        description.chop(told.size());
    const QString first = patterns.section(u' ', 0, 0);
    const QString suffix = first.startsWith(QStringLiteral("*.")) ? first.mid(2) : QString();
    return {QStringLiteral("%1 (%2)").arg(description, patterns), suffix.contains(u'*') ? QString() : suffix};
}

/// The folder, or the nearest one above it that exists: Qt takes the rest of a path for a file's name.
QString existingFolder(const QString& folder) {
    QFileInfo info(folder);
    while (!info.isDir() && !info.isRoot() && !info.path().isEmpty() && info.path() != info.filePath())
        info.setFile(info.path());
    return info.filePath() + u'/';
}

}  // namespace

HostServices::HostServices() {
    services_->messageBox = [this](const std::string& text, const std::string& title, MessageBoxButtons buttons) {
        return showBox(text, title, buttons);
    };
    services_->fileDialog = [this](const FileDialogRequest& request) { return askForFile(request); };
    services_->eventHook = [] { QCoreApplication::processEvents(); };
}

MessageBoxAnswer HostServices::showBox(const std::string& text, const std::string& title,
                                       MessageBoxButtons buttons) const {
    QMessageBox box(parent_);
    box.setWindowTitle(toQt(title));
    box.setTextFormat(Qt::PlainText);
    box.setText(linesToQt(text));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    const bool asks = buttons == MessageBoxButtons::okCancel;
    box.setStandardButtons(asks ? QMessageBox::Ok | QMessageBox::Cancel : QMessageBox::Ok);
    box.setDefaultButton(QMessageBox::Ok);
    box.setEscapeButton(asks ? QMessageBox::Cancel : QMessageBox::Ok);
    return box.exec() == QMessageBox::Ok || !asks ? MessageBoxAnswer::ok : MessageBoxAnswer::cancel;
}

std::optional<std::string> HostServices::askForFile(const FileDialogRequest& request) const {
    const bool saves = request.kind == FileDialogRequest::Kind::save;
    const Filter filter = qtFilter(request.filter);
    QFileDialog dialog(parent_, toQt(request.title), existingFolder(toQt(request.folder)), filter.shown);
    dialog.setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(saves ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !request.overwritePrompt);
    if (saves)
        dialog.setDefaultSuffix(filter.suffix);
    if (!request.suggestion.empty())
        dialog.selectFile(toQt(request.suggestion));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return fromQt(QDir::toNativeSeparators(dialog.selectedFiles().constFirst()));
}

}  // namespace opane::qt
