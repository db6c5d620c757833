#include "automation/component/windows/type_library.h"

#include "automation/component/boundary.h"
#include "automation/component/wide_text.h"
#include "platform/folders.h"

namespace opane::component {

TypeLibrary ownTypeLibrary() {
    const std::string file = libraryFile();
    ITypeLib* library = nullptr;
    const HRESULT result = LoadTypeLibEx(wideText(file).c_str(), REGKIND_NONE, &library);
    if (FAILED(result))
        throw ComponentError(result, "the type library in \"" + file + "\" cannot be read");
    return TypeLibrary(library);
}

}  // namespace opane::component
