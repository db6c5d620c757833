#include "automation/component/type_information.h"

#include "automation/component/boundary.h"

namespace opane::component {

UINT typeInformationCount() {
    return 0;
}

ITypeInfo* typeInformation(LCID /*lcid*/) {
    throw ComponentError(DISP_E_BADINDEX, "there is no type library on this system");
}

}  // namespace opane::component
