#include "platform/message_box.h"

#include <cstdio>

#include "platform/services.h"
#include "platform/windows/desktop.h"
#include "platform/windows/system_text.h"

namespace opane {

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

}  // namespace opane
