#include "forms/qt/form_view.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QKeyEvent>
#include <QVBoxLayout>

#include "forms/qt/control_widgets.h"
#include "forms/qt/qt_text.h"

namespace opane::qt {
namespace {

bool isInput(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::Shortcut:
        case QEvent::ShortcutOverride:
        case QEvent::InputMethod:
        case QEvent::ContextMenu:
        case QEvent::TabletPress:
        case QEvent::TabletRelease:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::DragEnter:
        case QEvent::Drop:
            return true;
        default:
            return false;
    }
}

}  // namespace

FormView::FormView(window::Form& form) : form_(form) {
    setWindowTitle(toQt(form.caption()));
    auto* const controls = new QWidget;
    showControls(form, *controls);
    controls->layout()->setContentsMargins(0, 0, 0, 0);
    showReadOnlyColours(*controls);
    workBar_ = new WorkBar(form);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(controls, 1);
    column->addWidget(workBar_);
    form_.observer([this](window::Change what) { formChanged(what); });
    qApp->installEventFilter(this);
}

FormView::~FormView() {
    form_.observer(nullptr);
    untie(form_);
}

void FormView::formChanged(window::Change what) {
    switch (what) {
        case window::Change::busy:
            showBusy(form_.busy());
            break;
        case window::Change::progress:
            workBar_->progressChanged();
            break;
        case window::Change::closed:
            hide();
            if (onClosed)
                onClosed();
            break;
        default:
            break;
    }
}

void FormView::showBusy(bool busy) {
    workBar_->busy(busy);
    if (busy) {
        focusBefore_ = focusWidget();
        setCursor(Qt::WaitCursor);
        return;
    }
    unsetCursor();
    // A handler that disables its own button has sent the focus elsewhere.
    if (focusBefore_ && focusBefore_->isEnabled() && focusBefore_->isVisibleTo(this))
        return focusBefore_->setFocus();
    // One that has hidden the focus with its page leaves it to the first button that can be pressed next.
    for (auto* const button : findChildren<QPushButton*>())
        if (button->isEnabled() && button->isVisibleTo(this))
            return button->setFocus();
}

void FormView::closeEvent(QCloseEvent* event) {
    event->ignore();  // the form says when
    if (form_.busy())
        workBar_->closing();
    form_.userCloses();
}

void FormView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showReadOnlyColours(*this);
}

/// Whether it is one of this window's widgets, the lists that fold out of it among them, and not a box above it.
bool FormView::holds(const QObject* receiver) const {
    for (const auto* widget = qobject_cast<const QWidget*>(receiver); widget != nullptr;
         widget = widget->window()->parentWidget()) {
        if (widget->window() == this)
            return true;
        if (widget->window()->windowType() != Qt::Popup)
            return false;
    }
    return false;
}

bool FormView::eventFilter(QObject* receiver, QEvent* event) {
    if (!isInput(event->type()) || !holds(receiver))
        return false;
    if (!form_.busy()) {
        const auto* const combo = qobject_cast<QComboBox*>(receiver);
        if (event->type() != QEvent::Wheel || combo == nullptr || combo->hasFocus())
            return false;
        event->ignore();
        return true;
    }
    if (receiver == workBar_->cancelButton())
        return false;
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
        form_.userCancels();
    event->accept();
    return true;
}

}  // namespace opane::qt
