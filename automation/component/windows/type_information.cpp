#include "automation/component/type_information.h"

#include "automation/component/boundary.h"
#include "automation/component/windows/type_library.h"
#include "opane/OPaneCommDLL.h"

namespace opane::component {

UINT typeInformationCount() {
    return 1;
}

ITypeInfo* typeInformation(LCID /*lcid*/) {
    const TypeLibrary library = ownTypeLibrary();
    ITypeInfo* info = nullptr;
    const HRESULT result = library->GetTypeInfoOfGuid(IID__clsOPaneCommDLL, &info);
    if (FAILED(result))
        throw ComponentError(result, "the type library of this file does not describe _clsOPaneCommDLL");
    return info;
}

}  // namespace opane::component
