#include "rtl/Persistent.h"

#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

namespace rtl {

RTL_IMPLEMENT_CLASS(TPersistent)

void TPersistent::Assign(TPersistent* source) {
    if (source) source->AssignTo(this);
    else AssignError(nullptr);
}

void TPersistent::AssignTo(TPersistent* dest) { dest->AssignError(this); }

void TPersistent::AssignError(TPersistent* source) {
    std::string sourceName = source ? source->ClassName() : "nil";
    throw EConvertError("Cannot assign a " + sourceName + " to a " + ClassName());
}

std::string TPersistent::GetNamePath() const {
    std::string result = ClassName();
    if (TPersistent* owner = GetOwner()) {
        std::string ownerPath = owner->GetNamePath();
        if (!ownerPath.empty()) result = ownerPath + "." + result;
    }
    return result;
}

} // namespace rtl
