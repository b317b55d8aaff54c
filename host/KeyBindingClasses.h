// Unit KeyBindingClasses: a menu item's command bound to a key through the IDE's keyboard
// services, as the IDE's editor binds its own keys. The hot keys of the experts' menu items work
// through their actions' shortcuts; a binding is the other road, taken in the edit window before
// the shortcuts are matched.
//
// A TBaseKeyBinding is counted: the IDE holds it from AddKeyboardBinding to RemoveKeyboardBinding,
// and TKeyBind holds it as long as it is registered. It holds its menu item weakly: an item that
// has gone leaves a binding that still takes its key and runs nothing. Nothing here raises.
#pragma once

#include "toolsapi/ToolsAPI.h"

#include <QPointer>

#include <string>
#include <vector>

class QAction;

namespace zelvane {

// The id under which the add-in's bindings are registered: the wizard's.
inline constexpr const char* KeyBindingKeyboard = "Zelvane.ServiceDelphiWizards";

class TBaseKeyBinding : public ToolsAPI::TNotifierObject,
                        public virtual ToolsAPI::IOTAKeyboardBinding {
    RTL_CLASS(TBaseKeyBinding, ToolsAPI::TNotifierObject)
public:
    TBaseKeyBinding(QAction* menuItem, ToolsAPI::TShortCut shortCut);

    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override;

    ToolsAPI::TBindingType GetBindingType() override { return ToolsAPI::btPartial; }
    // The menu item's caption; empty once the item has gone.
    std::string GetDisplayName() override;
    // "Zelvane.ServiceDelphiWizards." and the menu item's name.
    std::string GetName() override;
    // Binds the one key to KeyProc.
    void BindKeyboard(const ToolsAPI::_di_IOTAKeyBindingServices& bindingServices) override;
    // Clicks the menu item when it is enabled. The key counts as handled in every case, so that a
    // disabled item's key is swallowed rather than typed.
    void KeyProc(const ToolsAPI::_di_IOTAKeyContext& context, ToolsAPI::TShortCut keyCode,
                 ToolsAPI::TKeyBindingResult& bindingResult);

    QAction* MenuItem() const { return menuItem_; }
    ToolsAPI::TShortCut ShortCut = ToolsAPI::TShortCut(0);
    // The binding's number at the keyboard services; -1 when it was refused.
    int32_t Index = -1;

private:
    QPointer<QAction> menuItem_;
    std::string name_;
};

// The bindings that the add-in has registered, removed again by Clear or on destruction.
class TKeyBind {
public:
    TKeyBind() = default;
    ~TKeyBind() { Clear(); }
    TKeyBind(const TKeyBind&) = delete;
    TKeyBind& operator=(const TKeyBind&) = delete;

    // Binds the key to the menu item. A shortcut that names no key, or a binding the keyboard
    // services refuse, adds nothing.
    void AddKey(QAction* menuItem, ToolsAPI::TShortCut shortCut);
    // Removes every registered binding from the keyboard services, the last first.
    void Clear();

    int Count() const { return int(bindings_.size()); }
    TBaseKeyBinding* Binding(int index) const { return bindings_.at(size_t(index)).get(); }

private:
    std::vector<ToolsAPI::DelphiInterface<TBaseKeyBinding>> bindings_;
};

} // namespace zelvane
