#include "automation/component/registration.h"

#include <string>
#include <system_error>

#include "automation/component/boundary.h"
#include "opane/OPaneCommDLL.h"
#include "platform/folders.h"
#include "platform/utf8_path.h"

namespace opane::component {
namespace {

/// @throws ComponentError with the runtime's own explanation
void check(HRESULT result) {
    if (SUCCEEDED(result))
        return;
    throw ComponentError(result, takeErrorText("the registry could not be changed"));
}

}  // namespace

void registerComponent() {
    const std::string file = libraryFile();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(utf8Path(file), ignored))
        throw ComponentError(SELFREG_E_CLASS, "the component's own file \"" + file + "\" is not there any more");
    check(OpaneRegisterClass(CLSID_clsOPaneCommDLL, PROGID_clsOPaneCommDLL, file.c_str()));
}

void unregisterComponent() {
    check(OpaneUnregisterClass(CLSID_clsOPaneCommDLL));
}

}  // namespace opane::component
