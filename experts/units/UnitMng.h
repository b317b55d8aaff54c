// Unit UnitMng: the expert behind "Unit manager". It holds the settings of the unit list window
// (experts/units/UnitForm.h) and opens it. All it knows of the IDE's edit window is one lookup,
// FindEditorTabControl, and its menu item is enabled only while that lookup finds the tab row.
#pragma once

#include "host/ExpShrForm.h"
#include "rtl/Lists.h"

#include <QPointer>

#include <memory>

class QWidget;

namespace ToolsAPI {
class ITabControl;
}

namespace zelvane {

class TUnitForm;

class TUnitManager : public TSharedManager {
    RTL_CLASS(TUnitManager, TSharedManager)
public:
    TUnitManager();
    ~TUnitManager() override;

    bool DragModeAllowed = false;
    bool CloseFormOnShowUnit = false;
    bool FilterPanelVisible = false;
    bool JumpToUnitsOnApllyFilter = false;
    // The filter history, newest first.
    rtl::TStringList* GetHistoryList() const { return historyList_.get(); }
    void SetHistoryList(rtl::TStringList* value) { historyList_->Assign(value); }
    int32_t HistoryStoredCount = 10;
    // Hot keys of the window's commands, as texts; the window turns them into keys.
    TShortCutString CloseUnitShortCut = "Del";
    TShortCutString FilterUnitsShortCut = "Alt+F";
    TShortCutString MoveDownUnitShortCut = "Alt+Right";
    TShortCutString MoveUpUnitShortCut = "Alt+Left";
    TShortCutString ShowUnitShortCut = "Alt+S";
    TShortCutString SortUnitsShortCut = "Alt+R";

    void Init(TAddItemFunc AddItem) override;

    // Opens a new window; the open window disables the IDE, so this is never reached twice.
    void ShowUnits(rtl::TObject* Sender);
    // Enables a menu item or action sender while the tab row can be found.
    void CheckShownState(rtl::TObject* Sender);
    // The IDE's edit window tab row ("TabControl"), or nullptr. A control of that name that is
    // no tab row raises EInvalidCast.
    static QWidget* FindEditorTabControl();

private:
    std::unique_ptr<rtl::TStringList> historyList_;
    // The window while it is open; it goes with the expert, whose code it runs.
    QPointer<TUnitForm> form_;
};

// The tab row behind a control that FindEditorTabControl gave.
ToolsAPI::ITabControl* TabsOf(QWidget* tabControl);

} // namespace zelvane
