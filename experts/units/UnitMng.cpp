#include "experts/units/UnitMng.h"

#include "experts/units/UnitForm.h"
#include "host/ExpMenu.h"
#include "host/OTAUtils.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"

#include <QWidget>

namespace zelvane {

using namespace rtl;

RTL_BEGIN_CLASS(TUnitManager)
Property("DragModeAllowed", &TUnitManager::DragModeAllowed).Default(false);
Property("CloseFormOnShowUnit", &TUnitManager::CloseFormOnShowUnit).Default(false);
Property("FilterPanelVisible", &TUnitManager::FilterPanelVisible).Default(false);
Property("JumpToUnitsOnApllyFilter", &TUnitManager::JumpToUnitsOnApllyFilter).Default(false);
Property("HistoryList", &TUnitManager::GetHistoryList, &TUnitManager::SetHistoryList);
Property("HistoryStoredCount", &TUnitManager::HistoryStoredCount);
Property("CloseUnitShortCut", &TUnitManager::CloseUnitShortCut);
Property("FilterUnitsShortCut", &TUnitManager::FilterUnitsShortCut);
Property("MoveDownUnitShortCut", &TUnitManager::MoveDownUnitShortCut);
Property("MoveUpUnitShortCut", &TUnitManager::MoveUpUnitShortCut);
Property("ShowUnitShortCut", &TUnitManager::ShowUnitShortCut);
Property("SortUnitsShortCut", &TUnitManager::SortUnitsShortCut);
Method<&TUnitManager::ShowUnits>("ShowUnits");
Method<&TUnitManager::CheckShownState>("CheckShownState");
RTL_END_CLASS

TUnitManager::TUnitManager() : historyList_(std::make_unique<TStringList>()) {
    AddStoredData(this, "UnitManagerData", LocaleStr(SUnitManagerExpert),
                  LabelTemplate("TUnitManager",
                                {{"DragModeAllowed", SLabelDragModeAllowed},
                                 {"CloseFormOnShowUnit", SLabelCloseFormOnShowUnit},
                                 {"FilterPanelVisible", SLabelFilterPanelVisible},
                                 {"JumpToUnitsOnApllyFilter", SLabelJumpToUnitsOnApllyFilter},
                                 {"HistoryList", SLabelHistoryList},
                                 {"HistoryStoredCount", SLabelHistoryStoredCount},
                                 {"CloseUnitShortCut", SLabelCloseUnitShortCut},
                                 {"FilterUnitsShortCut", SLabelFilterUnitsShortCut},
                                 {"MoveDownUnitShortCut", SLabelMoveDownUnitShortCut},
                                 {"MoveUpUnitShortCut", SLabelMoveUpUnitShortCut},
                                 {"ShowUnitShortCut", SLabelShowUnitShortCut},
                                 {"SortUnitsShortCut", SLabelSortUnitsShortCut}}));
}

TUnitManager::~TUnitManager() {
    // An open window runs this package's code; it closes before the package goes.
    delete form_.data();
}

void TUnitManager::Init(TAddItemFunc AddItem) {
    TExpMenuItemData* data = AddItem("UnitManagerItem");
    data->Caption = LocaleStr(SUnitManagerItem);
    data->ShortCutText = "Ctrl+Shift+Q";
    data->HaveLineBefore = true;
    data->ImageIndex = 61;
    data->OnExecute = TNotifyEvent::Of<&TUnitManager::ShowUnits>(this);
    data->OnUpdate = TNotifyEvent::Of<&TUnitManager::CheckShownState>(this);
}

void TUnitManager::ShowUnits(TObject*) {
    std::unique_ptr<TUnitForm> form = MakeForm<TUnitForm>(nullptr, this);
    form_ = form.release();
    form_->show();
    form_->raise();
    form_->activateWindow();
}

void TUnitManager::CheckShownState(TObject* Sender) {
    SetSenderEnabled(Sender, FindEditorTabControl() != nullptr);
}

QWidget* TUnitManager::FindEditorTabControl() {
    QWidget* form = GetEditorForm();
    if (!form) form = GetEditorForm2();
    if (!form) form = FindEditorForm();
    if (!form) return nullptr;
    auto* control = form->findChild<QWidget*>(QStringLiteral("TabControl"));
    if (control && !dynamic_cast<ToolsAPI::ITabControl*>(control))
        throw EInvalidCast("Invalid class typecast");
    return control;
}

ToolsAPI::ITabControl* TabsOf(QWidget* tabControl) {
    return dynamic_cast<ToolsAPI::ITabControl*>(tabControl);
}

} // namespace zelvane
