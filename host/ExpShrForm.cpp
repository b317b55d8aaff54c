#include "host/ExpShrForm.h"

#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/Menus.h"
#include "toolsapi/QtBridge.h"

#include <QAction>

namespace zelvane {

RTL_BEGIN_CLASS(TFormSetting)
Property("AutoSavePlacement", &TFormSetting::AutoSavePlacement).Default(false);
Property("FormPlacement", &TFormSetting::FormPlacement);
Property("SavePlacementShortCut", &TFormSetting::SavePlacementShortCut);
RTL_END_CLASS

RTL_BEGIN_CLASS(TSharedManager)
Property("FormSetting", &TSharedManager::GetFormSetting, &TSharedManager::SetFormSetting);
RTL_END_CLASS

bool ModuleBrowsing = false;
std::vector<TExpMenuItemData*> ExpMenuItems;
ToolsAPI::IOTASourceEditor* OpenEditor = nullptr;

void TFormSetting::Assign(rtl::TPersistent* source) {
    auto* s = dynamic_cast<TFormSetting*>(source);
    if (!s) return TSpcObject::Assign(source);
    AutoSavePlacement = s->AutoSavePlacement;
    FormPlacement = s->FormPlacement;
    SavePlacementShortCut = s->SavePlacementShortCut;
}

std::string TFormSetting::GetNodeName() {
    return LocaleStr(SExpertFormSettings);
}

TSharedManager::TSharedManager() : formSetting_(std::make_unique<TFormSetting>()) {}
TSharedManager::~TSharedManager() = default;

TSharedForm::TSharedForm(QWidget* owner, TSharedManager* manager)
    : TSmartForm(owner), manager_(manager) {}

void TSharedForm::SetProperties() {
    TSmartForm::SetProperties();
    TFormSetting* setting = manager_->GetFormSetting();
    scSavePlacement()->setShortcuts(
        ToolsAPI::ShortCutToKeySequences(rtl::TextToShortCut(setting->SavePlacementShortCut)));
    FormPlacement = setting->FormPlacement;
    AutoSavePlacement = setting->AutoSavePlacement;
}

void TSharedForm::ReadFormData() {
    TSmartForm::ReadFormData();
    manager_->GetFormSetting()->FormPlacement = FormPlacement;
}

} // namespace zelvane
