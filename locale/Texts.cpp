// The package's own texts, in English: what LocaleStr gives when no language module has the
// number. 0x92 is the typographic apostrophe of Windows-1251.
#include "foundation/ResStrings.h"
#include "locale/LocaleIds.h"

namespace zelvane {

namespace {

const TResStringEntry kTexts[] = {
    {SExpertsSettings, "Experts settings"},
    {SInstalledExperts, "Installed experts"},
    {SExpertsMenu, "Experts menu"},
    {SSpecialSettings, "Special settings"},
    {SExpertFormSettings, "Expert form settings"},
    {SEditorFormSettings, "Editor form settings"},
    {SExpertsManager, "Experts manager"},
    {SInspectorFormView, "Manager of the open windows"},
    {SFormUnitView, "Project forms/units preview"},
    {SCPUView, "CPU window data scan"},
    {SUnitEditorExpert, "Unit editor expert"},
    {SUnitManagerExpert, "Manager of the open units"},
    {SLabelActive, "Active"},
    {SLabelItemCaption, "menu item\x92s text"},
    {SLabelImageIndex, "Picture index for menu item"},
    {SLabelHaveLineBefore, "Separator before##menu item"},
    {SLabelShortCutText, "Hotkeys ##for menu item call"},
    {SLabelAutoSavePlacement, "Autosave##form position"},
    {SLabelFormPlacement, "Save form##position"},
    {SLabelSavePlacementShortCut, "Hotkey for##form position save"},
    {SLabelAutoSaveSetting, "Form properties autosave"},
    {SLabelSaveSettingShortCut, "Hotkey for##form properties save"},
    {SLabelSetting, "Save form properties"},
    {SLabelExpertVersion, "Current library version"},
    {SLabelAutoSaveSettings, "Experts settings autosave##on exit"},
    {SLabelMainMenuSearchItem, "Menu item in ##Delphi/C++Builder main menu"},
    {SLabelInsertMenuBefore, "Insert experts menu ##before found menu item"},
    {SLabelMenuLineBefore, "Separator##before experts menu item"},
    {SLabelMenuLineAfter, "Separator##after experts menu item"},
    {SLabelErrorLogAllowed, "Error log allowed"},
    {SLabelMaxLogSize, "Maximal size of the logfile,##kilobytes"},
    {SLabelMoveCursorTopLeft, "Always set cursor##to the first position of the selected block"},
    {SLabelSafeStringMoving, "Drag selected block##with safe mode"},
};

const TResStringBlock kBlock(kTexts);

} // namespace

} // namespace zelvane
