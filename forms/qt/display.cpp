#include "forms/qt/display.h"

#include <QString>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

namespace opane::qt {
namespace {

const char* programName = "";
int fatalStatus = 1;

void handleMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    std::fprintf(stderr, "%s: %s\n", programName, text.toLocal8Bit().constData());
    if (type == QtFatalMsg)
        std::_Exit(fatalStatus);
}

}  // namespace

std::string missingDisplay() {
    for (const char* const variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        if (!qEnvironmentVariableIsEmpty(variable))
            return {};
    return "there is no display: none of DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM is set; run it in a desktop "
           "session, or on a virtual display with xvfb-run";
}

void exitOnFatalMessages(const char* program, int status) {
    programName = program;
    fatalStatus = status;
    qInstallMessageHandler(handleMessage);
}

}  // namespace opane::qt
