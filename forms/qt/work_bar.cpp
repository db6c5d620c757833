#include "forms/qt/work_bar.h"

#include <QApplication>
#include <QHBoxLayout>

#include "forms/qt/grid.h"
#include "forms/qt/qt_text.h"

namespace opane::qt {
namespace {

constexpr int kPatienceMs = 400;  ///< what ends sooner is not worth a word
const QString kClosing = QStringLiteral("Closing when this has ended ...");

}  // namespace

WorkBar::WorkBar(window::Form& form) : form_(form), cancel_(QStringLiteral("Cancel")) {
    text_.setObjectName("workText");
    text_.setTextFormat(Qt::PlainText);
    bar_.setObjectName("workProgress");
    bar_.setAccessibleName(QStringLiteral("Progress"));
    cancel_.setObjectName("workCancel");
    cancel_.setAutoDefault(true);
    cancel_.setToolTip(QStringLiteral("Ends it after the step that is under way (Escape)"));
    cancel_.setCursor(Qt::ArrowCursor);
    connect(&cancel_, &QPushButton::clicked, this, [this] { form_.userCancels(); });
    patience_.setSingleShot(true);
    connect(&patience_, &QTimer::timeout, this, [this] {
        if (QApplication::activeModalWidget() != nullptr)
            patience_.start(kPatienceMs);  // the person is being asked; the module is not
        else if (text_.text().isEmpty())
            text_.setText(QStringLiteral("Waiting for the module ..."));
    });

    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(&text_, 1);
    for (QWidget* const widget : {static_cast<QWidget*>(&bar_), static_cast<QWidget*>(&cancel_)}) {
        row->addWidget(widget);
        keepPlace(*widget);
    }
    showParts({}, false);
}

void WorkBar::busy(bool isBusy) {
    patience_.stop();
    closing_ = false;
    if (isBusy)
        patience_.start(kPatienceMs);
    else
        showParts({}, false);
}

void WorkBar::closing() {
    closing_ = true;
    text_.setText(kClosing);
}

void WorkBar::progressChanged() {
    const auto& progress = form_.progress();
    if (!progress)
        return showParts({}, false);
    const QString text = progress->cancelRequested ? QStringLiteral("Cancelling ...") : toQt(progress->text);
    showParts(closing_ ? kClosing : text, true);
    bar_.setMaximum(progress->maximum);
    bar_.setValue(progress->value);
    cancel_.setEnabled(!progress->cancelRequested);
}

void WorkBar::showParts(const QString& text, bool progress) {
    text_.setText(text);
    bar_.setVisible(progress);
    cancel_.setVisible(progress);
}

}  // namespace opane::qt
