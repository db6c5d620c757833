#include "automation/component/component_host.h"

#include <climits>

#include "opane/component_runtime.h"
#include "platform/dialogs.h"
#include "platform/serial_control.h"

namespace opane::component {
namespace {

MessageBoxAnswer withoutHandler(const std::string& text, const std::string& title, MessageBoxButtons buttons) {
    ServicesScope services;
    services->messageBox = nullptr;
    return showMessageBox(text, title, buttons);
}

}  // namespace

ComponentHostScope::ComponentHostScope() {
    // The handlers ask for the host anew: one of its events may have replaced it.
    const OpaneHost* const host = OpaneGetHost();
    if (host == nullptr)
        return;
    if (host->runEvents != nullptr)
        services_->eventHook = [] {
            if (const OpaneHost* now = OpaneGetHost(); now != nullptr && now->runEvents != nullptr)
                now->runEvents(now->context);
        };
    if (host->showMessageBox != nullptr)
        services_->messageBox = [](const std::string& text, const std::string& title, MessageBoxButtons buttons) {
            const OpaneHost* now = OpaneGetHost();
            if (now == nullptr || now->showMessageBox == nullptr)
                return withoutHandler(text, title, buttons);
            const bool ok = now->showMessageBox(now->context, text.c_str(), title.c_str(),
                                                buttons == MessageBoxButtons::okCancel ? 1 : 0) != 0;
            return ok ? MessageBoxAnswer::ok : MessageBoxAnswer::cancel;
        };
    if (host->chooseFile != nullptr)
        services_->fileDialog = [](const FileDialogRequest& request) -> std::optional<std::string> {
            const OpaneFileDialog dialog{request.kind == FileDialogRequest::Kind::save ? 1 : 0,
                                         request.title.c_str(),
                                         request.folder.c_str(),
                                         request.filter.c_str(),
                                         request.suggestion.c_str(),
                                         request.overwritePrompt ? 1 : 0};
            char path[PATH_MAX] = "";
            const OpaneHost* now = OpaneGetHost();
            if (now == nullptr || now->chooseFile == nullptr ||
                now->chooseFile(now->context, &dialog, path, sizeof path) == 0)
                return std::nullopt;
            path[sizeof path - 1] = '\0';
            return path;
        };
    if (host->deviceOfPort != nullptr)
        services_->portMap = [](std::int16_t comPort) -> std::string {
            const OpaneHost* now = OpaneGetHost();
            if (now == nullptr || now->deviceOfPort == nullptr)
                return systemDevicePath(comPort);
            const char* const device = now->deviceOfPort(now->context, comPort);
            return device != nullptr ? device : "";
        };
}

}  // namespace opane::component
