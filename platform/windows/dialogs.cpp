#include "platform/dialogs.h"

#include <algorithm>
#include <cstdio>

#include "platform/services.h"
#include "platform/windows/system_text.h"
// After windows.h, which it needs.
#include <commdlg.h>

namespace opane {
namespace {

constexpr std::size_t kLongestPath = 32768;  // UTF-16 units, the system's own limit

/// Whether somebody can see and answer a window of this process: not in a service, for instance.
bool hasVisibleDesktop() {
    USEROBJECTFLAGS flags{};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr) != 0 &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

/// "description|pattern" as the system takes it: each part ended by a zero, and all by one more.
std::wstring systemFilter(const std::string& filter) {
    std::wstring parts = wideText(filter);
    std::replace(parts.begin(), parts.end(), L'|', L'\0');
    return parts + L'\0';  // and the string's own
}

/// Without its folder, which would win against the one where the dialog is to start.
std::wstring nameOnly(const std::string& path) {
    return wideText(path.substr(path.find_last_of("\\/:") + 1));
}

}  // namespace

MessageBoxAnswer showMessageBox(const std::string& text, const std::string& title, MessageBoxButtons buttons) {
    if (const auto handler = services().messageBox)
        return handler(text, title, buttons);
    const int pressed = hasVisibleDesktop()
                            ? MessageBoxW(GetActiveWindow(), wideText(text).c_str(), wideText(title).c_str(),
                                          buttons == MessageBoxButtons::ok ? MB_OK : MB_OKCANCEL)
                            : 0;
    if (pressed <= 0)  // it could not be shown
        std::fprintf(stderr, "%s\n%s\n", title.c_str(), text.c_str());
    return pressed == IDCANCEL ? MessageBoxAnswer::cancel : MessageBoxAnswer::ok;
}

std::optional<std::string> showFileDialog(const FileDialogRequest& request) {
    if (const auto handler = services().fileDialog)
        return handler(request);
    if (!hasVisibleDesktop())
        return std::nullopt;
    const std::wstring title = wideText(request.title);
    const std::wstring folder = wideText(request.folder);
    const std::wstring filter = systemFilter(request.filter);
    std::wstring name = nameOnly(request.suggestion);
    name.resize(kLongestPath);

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = GetActiveWindow();
    dialog.lpstrTitle = request.title.empty() ? nullptr : title.c_str();
    dialog.lpstrInitialDir = request.folder.empty() ? nullptr : folder.c_str();
    dialog.lpstrFilter = request.filter.empty() ? nullptr : filter.c_str();
    dialog.lpstrFile = name.data();
    dialog.nMaxFile = static_cast<DWORD>(name.size());
    dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (request.overwritePrompt)
        dialog.Flags |= OFN_OVERWRITEPROMPT;

    const bool chosen =
        request.kind == FileDialogRequest::Kind::open ? GetOpenFileNameW(&dialog) != 0 : GetSaveFileNameW(&dialog) != 0;
    return chosen ? std::optional(utf8Text(name.c_str())) : std::nullopt;
}

}  // namespace opane
