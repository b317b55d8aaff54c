// The add-in's menu as the experts see it: actions in the IDE's action list and the items of
// the "Z&elvane" menu. This unit is the only one that makes Qt actions and menus for the add-in;
// the manager's menu operations (ExpMenu.cpp) build them from the settings tree.
//
// A TExpAction owns its QAction, which the IDE's action list shows for as long as it lives; it is
// the sender of an expert's command and update handler. A TExpMenuItem is one entry of a menu:
// a command (the entry is its action's QAction), a separator, or a caption with a submenu. An
// item owns its children and its submenu; the manager owns the top item and the actions, and
// frees the items before the actions, so that no item is left with a dead action.
#pragma once

#include "rtl/Lists.h"
#include "rtl/TypInfo.h"

#include <QMetaObject>

#include <memory>
#include <string>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace zelvane {

class TExpAction : public rtl::TObject {
    RTL_CLASS(TExpAction, rtl::TObject)
public:
    TExpAction();
    ~TExpAction() override;

    QAction* Action() const { return action_; }
    std::string Caption() const;
    void SetCaption(const std::string& value);
    rtl::TShortCut ShortCut() const;
    // Sets the key, with the variants the keyboard delivers for it (see toolsapi/QtBridge.h).
    void SetShortCut(rtl::TShortCut value);
    bool Enabled() const;
    void SetEnabled(bool value);
    bool Checked() const;
    void SetChecked(bool value);
    // Runs the update handler, as the IDE does before a menu opens and when it is idle.
    void Update();

    // What the action runs, with the action as the sender.
    rtl::TNotifyEvent OnExecute;
    rtl::TNotifyEvent OnUpdate;

private:
    QAction* action_;
};

class TExpMenuItem : public rtl::TObject {
    RTL_CLASS(TExpMenuItem, rtl::TObject)
public:
    // An item for the action, or a plain one with the caption ("-" makes a separator).
    explicit TExpMenuItem(TExpAction* action);
    explicit TExpMenuItem(const std::string& caption);
    // A top item: the submenu is the entry.
    static std::unique_ptr<TExpMenuItem> MakeTop(const std::string& name, const std::string& caption);
    ~TExpMenuItem() override;

    // The entry in the parent menu.
    QAction* Entry() const { return entry_; }
    TExpAction* Action() const { return action_; }
    // The submenu of the item; made on first need.
    QMenu* SubMenu();
    bool HasSubMenu() const { return subMenu_ != nullptr; }
    bool IsLine() const;

    std::string Name() const;
    void SetName(const std::string& name);
    std::string Caption() const;
    void SetImageIndex(int32_t index);
    int32_t ImageIndex() const { return imageIndex_; }
    void SetRadioItem(bool value);

    // Children, in menu order.
    void Add(std::unique_ptr<TExpMenuItem> child);
    int Count() const { return int(children_.size()); }
    TExpMenuItem* Item(int index) const { return children_.at(size_t(index)).get(); }
    // Frees the children from the last to the first.
    void Clear();

    // The first hot key the item had; it is given back whenever something else changes it.
    rtl::TShortCut SavedShortCut = rtl::TShortCut(0);
    void MenuChanged();
    // Called when the menu that holds the item opens.
    rtl::TEvent<void(TExpMenuItem* Item)> OnMenuOpen;

private:
    TExpMenuItem() = default;

    QAction* entry_ = nullptr;
    bool ownsEntry_ = false;
    TExpAction* action_ = nullptr;
    std::unique_ptr<QMenu> subMenu_;
    int32_t imageIndex_ = -1;
    std::vector<std::unique_ptr<TExpMenuItem>> children_;
    QMetaObject::Connection changed_;
};

// The picture of the IDE's image list at that index on the item's entry; none for -1 or an
// index the list lacks.
void SetItemImage(QAction* entry, int32_t imageIndex);

// An update handler's work on its sender: enables or disables a TExpAction or a TExpMenuItem;
// any other sender is passed over.
void SetSenderEnabled(rtl::TObject* Sender, bool enabled);

} // namespace zelvane
