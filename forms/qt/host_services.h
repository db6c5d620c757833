#pragma once

#include <QPointer>
#include <QWidget>

#include "platform/services.h"

namespace opane::qt {

/// Lets the library work in a Qt program: while it lives, message boxes and file dialogs of the thread are Qt's, and
/// every wait of the link runs Qt's events. To be made on the thread of the QApplication, which outlives it, before the
/// link is.
class HostServices {
public:
    HostServices();

    /// The window that boxes and dialogs belong to; none at first.
    void parent(QWidget* window) { parent_ = window; }

private:
    MessageBoxAnswer showBox(const std::string& text, const std::string& title, MessageBoxButtons buttons) const;
    std::optional<std::string> askForFile(const FileDialogRequest& request) const;

    QPointer<QWidget> parent_;
    ServicesScope services_;
};

}  // namespace opane::qt
