#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

#include "forms/qt/work_bar.h"
#include "forms/window_controls.h"

namespace opane::qt {

/// A window that shows a form and takes what a person does there. Widgets have the names of their controls.
///
/// While a handler runs it takes no other input, neither mouse nor keyboard: but for cancelling long work (its button,
/// or Escape) and for closing, which waits until the handler has ended. The form outlives it; one view shows it.
class FormView final : public QWidget {
public:
    explicit FormView(window::Form& form);
    ~FormView() override;

    /// Called when the form has been unloaded and the window is hidden. It must not end the view.
    std::function<void()> onClosed;

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    void formChanged(window::Change what);
    void showBusy(bool busy);
    bool holds(const QObject* receiver) const;

    window::Form& form_;
    WorkBar* workBar_;
    QPointer<QWidget> focusBefore_;  // when the running handler began
};

}  // namespace opane::qt
