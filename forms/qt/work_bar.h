#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include "forms/window_controls.h"

namespace opane::qt {

/// The strip at the foot of a form's window. It says that a handler takes its time, and shows how far long work is,
/// with a button that cancels it. It keeps its place while it is empty.
class WorkBar final : public QWidget {
public:
    explicit WorkBar(window::Form& form);

    /// A handler has begun or ended.
    void busy(bool isBusy);
    /// The person wants to close the window while a handler runs.
    void closing();
    /// The form's long work has begun, moved on or ended.
    void progressChanged();

    /// The one control that takes input while a handler runs.
    const QWidget* cancelButton() const { return &cancel_; }

private:
    void showParts(const QString& text, bool progress);

    window::Form& form_;
    QLabel text_;
    QProgressBar bar_;
    QPushButton cancel_;
    QTimer patience_;
    bool closing_ = false;  // asked for while a handler runs
};

}  // namespace opane::qt
