#include "automation/component/windows/type_information.h"

#include "automation/component/boundary.h"
#include "automation/component/type_information.h"
#include "automation/component/wide_text.h"
#include "opane/OPaneCommDLL.h"
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

UINT typeInformationCount() {
    return 1;
}

ITypeInfo* typeInformation() {
    const TypeLibrary library = ownTypeLibrary();
    ITypeInfo* info = nullptr;
    const HRESULT result = library->GetTypeInfoOfGuid(IID__clsOPaneCommDLL, &info);
    if (FAILED(result))
        throw ComponentError(result, "the type library of this file does not describe _clsOPaneCommDLL");
    return info;
}

}  // namespace opane::component
