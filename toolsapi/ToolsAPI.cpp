#include "toolsapi/ToolsAPI.h"

#include "rtl/TypInfo.h"

namespace ToolsAPI {

RTL_IMPLEMENT_CLASS(TInterfacedObject)
RTL_IMPLEMENT_CLASS(TNotifierObject)

rtl::IInterface* Identity(rtl::IInterface* intf) {
    if (!intf) return nullptr;
    void* p = nullptr;
    if (intf->QueryInterface(IID_IInterface, &p) != S_OK || !p) return intf;
    auto* id = static_cast<rtl::IInterface*>(p);
    id->_Release();
    return id;
}

_di_IBorlandIDEServices BorlandIDEServices;

namespace {
TRegisterWizardProc& WizardProc() {
    static TRegisterWizardProc proc;
    return proc;
}
} // namespace

void SetRegisterWizardProc(TRegisterWizardProc proc) {
    WizardProc() = std::move(proc);
}

bool RegisterPackageWizard(const _di_IOTAWizard& wizard) {
    if (!wizard || !WizardProc()) return false;
    return WizardProc()(wizard);
}

} // namespace ToolsAPI
