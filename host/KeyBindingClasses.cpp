#include "host/KeyBindingClasses.h"

#include "host/OTAUtils.h"
#include "rtl/Menus.h"
#include "toolsapi/QtBridge.h"

#include <QAction>

namespace zelvane {

using namespace ToolsAPI;

RTL_IMPLEMENT_CLASS(TBaseKeyBinding)

TBaseKeyBinding::TBaseKeyBinding(QAction* menuItem, ToolsAPI::TShortCut shortCut)
    : ShortCut(shortCut), menuItem_(menuItem),
      name_(menuItem ? menuItem->objectName().toStdString() : std::string()) {}

rtl::HRESULT TBaseKeyBinding::QueryInterface(const rtl::TGUID& iid, void** obj) {
    return QueryInterfaces<IOTAKeyboardBinding, IOTANotifier>(this, iid, obj);
}

std::string TBaseKeyBinding::GetDisplayName() {
    return menuItem_ ? ToBytes(menuItem_->text()) : std::string();
}

std::string TBaseKeyBinding::GetName() {
    return std::string(KeyBindingKeyboard) + "." + name_;
}

void TBaseKeyBinding::BindKeyboard(const _di_IOTAKeyBindingServices& bindingServices) {
    bindingServices->AddKeyBinding(
        {ShortCut},
        [this](const _di_IOTAKeyContext& context, ToolsAPI::TShortCut keyCode,
               TKeyBindingResult& result) { KeyProc(context, keyCode, result); },
        nullptr, 1, KeyBindingKeyboard, name_);
}

void TBaseKeyBinding::KeyProc(const _di_IOTAKeyContext& context, ToolsAPI::TShortCut keyCode,
                              TKeyBindingResult& bindingResult) {
    bindingResult = krHandled;
    if (menuItem_ && menuItem_->isEnabled()) menuItem_->trigger();
}

void TKeyBind::AddKey(QAction* menuItem, ToolsAPI::TShortCut shortCut) {
    if (rtl::ShortCutToText(rtl::TShortCut(shortCut)).empty()) return;
    _di_IOTAKeyboardServices services = OTAKeyboardServices();
    if (!services) return;
    auto binding = MakeInterfaced<TBaseKeyBinding>(menuItem, shortCut);
    binding->Index = services->AddKeyboardBinding(_di_IOTAKeyboardBinding(binding.get()));
    if (binding->Index != -1) bindings_.push_back(binding);
}

void TKeyBind::Clear() {
    _di_IOTAKeyboardServices services = OTAKeyboardServices();
    for (auto it = bindings_.rbegin(); it != bindings_.rend(); ++it)
        if ((*it)->Index != -1 && services) services->RemoveKeyboardBinding((*it)->Index);
    bindings_.clear();
}

} // namespace zelvane
