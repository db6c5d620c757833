#include <QApplication>
#include <QScreen>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <variant>

#include "forms/qt/display.h"
#include "forms/qt/form_view.h"
#include "forms/qt/host_services.h"
#include "panel/frmOPane.h"
#include "platform/utf8_path.h"
#include "simulator/served_module.h"
#include "tools/command_line/command_line.h"
#include "tools/opane-panel/arguments.h"
#include "tools/opane-panel/module_window.h"

namespace opane::panel_tool {
namespace {

/// The ports that the command line tells of; all others are none.
void mapPorts(ServicesScope& services, const Arguments& arguments, simulator::ServedModule* module) {
    if (!arguments.hidesOtherPorts())
        return;
    services->portMap = [&arguments, module](std::int16_t comPort) {
        if (module != nullptr)
            return comPort == 1 ? module->devicePath() : std::string();
        return comPort == 1 || comPort == 2 ? arguments.devices[static_cast<std::size_t>(comPort - 1)] : std::string();
    };
}

/// @return why nothing can be logged; empty when all is well
std::string setLog(const Arguments& arguments) {
    const auto log = threadLog();
    if (!log)
        return {};  // the form could not be loaded, which it has shown
    if (arguments.logLevel)
        log->LogLevel(*arguments.logLevel);
    if (!arguments.logFolder.empty())
        log->LogFolder(arguments.logFolder);
    std::error_code ignored;
    if (log->LogLevel() == 0 || std::filesystem::is_directory(utf8Path(log->LogFolder()), ignored))
        return {};
    return "the folder \"" + log->LogFolder() + "\" for the log is missing; make it, or name another with --log-folder";
}

/// Side by side, where the screen has room for both; else where the desktop puts them.
void placeBeside(QWidget& left, QWidget& right) {
    constexpr int kGap = 24;  // for the frames that the desktop draws, too
    const QRect screen = left.screen()->availableGeometry();
    const QSize leftSize = left.sizeHint();
    const QSize rightSize = right.sizeHint();
    const QPoint corner = screen.topLeft() + QPoint(kGap, 2 * kGap);
    const QPoint rightCorner = corner + QPoint(leftSize.width() + kGap, 0);
    if (!screen.contains(QRect(corner, leftSize)) || !screen.contains(QRect(rightCorner, rightSize)))
        return;
    left.move(corner);
    right.move(rightCorner);
}

int showPanel(const Arguments& arguments) {
    std::unique_ptr<simulator::ServedModule> module;
    if (arguments.simulate)
        module = std::make_unique<simulator::ServedModule>(simulator::ModuleOptions{.keepFrames = false});
    qt::HostServices host;
    ServicesScope services;
    mapPorts(services, arguments, module.get());

    frmOPane form;
    qt::FormView view(form);
    view.onClosed = [] { QApplication::quit(); };
    host.parent(&view);
    form.load();
    if (const std::string fault = setLog(arguments); !fault.empty()) {
        std::cerr << "opane-panel: " << fault << '\n';
        return tools::kWrongUsage;
    }

    std::unique_ptr<ModuleWindow> moduleWindow;
    if (module) {
        moduleWindow = std::make_unique<ModuleWindow>(*module);
        placeBeside(view, *moduleWindow);
        moduleWindow->show();
    }
    view.show();  // the last one is the active one
    return QApplication::exec();
}

}  // namespace
}  // namespace opane::panel_tool

int main(int argc, char** argv) {
    using namespace opane;
    using namespace opane::panel_tool;
    const auto arguments = readArguments(argc, argv);
    if (const auto* exit = std::get_if<tools::Exit>(&arguments))
        return exit->status;
    if (const std::string missing = qt::missingDisplay(); !missing.empty()) {
        std::cerr << "opane-panel: " << missing << '\n';
        return tools::kErrorRaised;
    }
    qt::exitOnFatalMessages("opane-panel", tools::kErrorRaised);
    int qtArguments = 1;  // the program's name alone: ours are no options of Qt
    const QApplication application(qtArguments, argv);
    try {
        qt::applyTheme(std::get<Arguments>(arguments).theme);
        return showPanel(std::get<Arguments>(arguments));
    } catch (const std::exception& error) {
        std::cerr << "opane-panel: " << error.what() << '\n';
        return tools::kErrorRaised;
    }
}
