// Settings editing, the manager's side: the experts made anew so that changed settings, hot keys,
// menu items and the language take effect at once, "Load default", the rebuild of the menu on a
// posted message, and the settings editor's translation table.
#include "host/ExpMenu.h"
#include "host/ExpMng.h"

#include "foundation/Dialogs.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/SysUtils.h"

namespace zelvane {

using namespace rtl;
using ToolsAPI::Application;
using ToolsAPI::Screen;

namespace {

// The hourglass while the experts are made anew; the default cursor comes back whatever happens.
template <class F> void WithHourGlass(F&& work) {
    if (Screen) Screen->SetCursor(ToolsAPI::crHourGlass);
    try {
        work();
    } catch (...) {
        if (Screen) Screen->SetCursor(ToolsAPI::crDefault);
        throw;
    }
    if (Screen) Screen->SetCursor(ToolsAPI::crDefault);
}

} // namespace

// The settings objects in the order of start-up. The menu is left alone: its items hold actions
// whose experts are gone, so they are made inert here and stay so until the posted rebuild.
void TExpManager::RecreateExperts() {
    for (const auto& action : expActions_) {
        action->OnUpdate = nullptr;
        action->OnExecute = nullptr;
    }
    execProcs_.clear();
    RemoveStoredData(data_.get());
    data_.reset();
    data_ = std::make_unique<TExpManagerData>(this);
    DeleteExpObjects();
    RecreateExpData();
    FillPresentList();
    AddStoredData(data_.get(), "ExpManagerData", LocaleStr(SExpertsManager),
                  GetLocalPropNames());
    LoadExpData();
    LocalizeEditor();
    CreateExpObjects();
    InitExperts();
    // Again, now with the experts' labels.
    LocalizeEditor();
}

// The second read gives the new experts their values, as at start.
void TExpManager::DoRecreateExperts() {
    WithHourGlass([this] {
        RecreateExperts();
        LoadSettings();
        DoApplySettings();
    });
}

// The built-in defaults are what the experts have with no settings file.
void TExpManager::LoadDefaultSettings(TObject* Sender) {
    if (!QueryDialog("Load default expert\x92s settings?")) return;
    WithHourGlass([this] {
        DeleteFile(ExpDataFileName());
        RecreateExperts();
        LoadNotify(false);
        DoApplySettings();
    });
}

// The command that asks for the rebuild runs from an item of the menu that must go: the rebuild
// waits until it has ended.
void TExpManager::DoApplySettings() {
    ToolsAPI::PostMessage(handle_, WM_APPLYSETTINGS, 0, 0);
}

void TExpManager::ApplySettings() {
    SetEngLayout();
    DeleteExpertMenu();
    if (Application) Application->ProcessMessages();
    CreateExpertMenu();
    if (Application) Application->ProcessMessages();
    SetActiveLayout();
}

std::string TExpManager::TranslatingTable() {
    return LabelTemplate("TExpertInfo", {{"Active", SLabelActive}}) + "\r\n" +
           LabelTemplate("TExpMenuItemData", {{"Caption", SLabelItemCaption},
                                              {"ImageIndex", SLabelImageIndex},
                                              {"HaveLineBefore", SLabelHaveLineBefore},
                                              {"ShortCutText", SLabelShortCutText}}) +
           "\r\n" +
           LabelTemplate("TFormSetting", {{"AutoSavePlacement", SLabelAutoSavePlacement},
                                          {"FormPlacement", SLabelFormPlacement},
                                          {"SavePlacementShortCut", SLabelSavePlacementShortCut}}) +
           "\r\n" +
           LabelTemplate("TEditorFormData", {{"AutoSaveSetting", SLabelAutoSaveSetting},
                                             {"SaveSettingShortCut", SLabelSaveSettingShortCut},
                                             {"Setting", SLabelSetting}}) +
           "\r\n" + ExpData->LocalPropNames;
}

} // namespace zelvane
