#include "automation/component/type_information.h"

namespace opane::component {

UINT typeInformationCount() {
    return 0;
}

ITypeInfo* typeInformation() {
    return nullptr;
}

}  // namespace opane::component
