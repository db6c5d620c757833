#pragma once

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "forms/qt/form_view.h"
#include "forms/qt/host_services.h"
#include "panel/frmOPane.h"
#include "simulator/served_module.h"

namespace opane::test {

/// A tenth of the system's time, so that a busy machine answers in time; a wait that does nothing else is over at once.
class PatientTime final : public TickCounter {
public:
    std::uint32_t now() override { return (systemTickCounter().now() - start_) / 10 + leapt_; }
    void pause() override { leapt_ += 100; }

private:
    std::uint32_t start_ = systemTickCounter().now();
    std::uint32_t leapt_ = 0;
};

/// The panel in a real window, on a simulated module behind a pseudo-terminal that is COM 1. Widgets are reached by the
/// names of their controls, as a person reaches them: on their page.
class PanelWindow {
public:
    PanelWindow() {
        services->tickCounter = &time;
        services->portMap = [this](std::int16_t port) { return port == 1 ? module.devicePath() : std::string(); };
        host.parent(&view);
        form.load();
        view.show();
    }

    template <class Widget>
    Widget& at(const char* name) {
        auto* const found = view.findChild<Widget*>(name);
        if (found == nullptr)
            throw std::runtime_error(std::string("the window has no such widget as ") + name);
        for (QWidget* widget = found; widget != nullptr; widget = widget->parentWidget())
            if (widget->objectName().startsWith(QStringLiteral("SSTab(")))
                tabs().setCurrentWidget(widget);
        return *found;
    }
    QTabWidget& tabs() { return *view.findChild<QTabWidget*>("SSTab"); }

    void click(const char* name) {
        // A radio button reacts to its indicator and its text, which need not be as wide as it is.
        auto& button = at<QAbstractButton>(name);
        QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(10, button.height() / 2));
    }
    void type(const char* name, const char* text) {
        auto& box = at<QWidget>(name);
        QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&box, Qt::Key_Delete);
        QTest::keyClicks(&box, QString::fromUtf8(text));
    }
    void choose(const char* name, const char* entry) {
        auto& list = at<QComboBox>(name);
        list.showPopup();
        list.view()->setCurrentIndex(list.model()->index(list.findText(QString::fromUtf8(entry)), 0));
        QTest::keyClick(list.view(), Qt::Key_Return);
    }
    std::string text(const char* name) {
        for (const char* const property : {"text", "plainText", "currentText"})
            if (const QVariant shown = view.findChild<QWidget*>(name)->property(property); shown.isValid())
                return shown.toString().toStdString();
        throw std::runtime_error(std::string("there is no text in ") + name);
    }
    bool showsTabs() const { return view.findChild<QWidget*>("FrameSSTab")->isVisible(); }

    std::size_t frames() {
        return module.withModule([](const simulator::SimulatedModule& heard) { return heard.frames().size(); });
    }

    simulator::ServedModule module;
    PatientTime time;
    qt::HostServices host;
    ServicesScope services;
    frmOPane form;
    qt::FormView view{form};
};

/// Answers every message box while it lives with its first button (OK or Yes), and keeps what they said.
class BoxAnswers {
public:
    BoxAnswers() {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { answer(); });
        timer_.start(0);
    }

    std::vector<std::string> said;           ///< "title|text"
    std::function<void(QMessageBox&)> look;  ///< before it is answered; may answer it itself

private:
    void answer() {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible())
            return;
        said.push_back((box->windowTitle() + u'|' + box->text()).toStdString());
        if (look)
            look(*box);
        if (box->isVisible())
            QTest::mouseClick(box->buttons().constFirst(), Qt::LeftButton);
    }

    QTimer timer_;
};

}  // namespace opane::test
