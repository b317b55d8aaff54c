// Numbers of the texts that the host and the experts take from the string table by name.
#pragma once

namespace zelvane {

// Node names of the settings tree.
constexpr int SExpertsSettings = 51120;      // "Experts settings"
constexpr int SInstalledExperts = 51121;     // "Installed experts"
constexpr int SExpertsMenu = 51122;          // "Experts menu"
constexpr int SSpecialSettings = 51123;      // "Special settings"
constexpr int SExpertFormSettings = 51124;   // "Expert form settings"
constexpr int SEditorFormSettings = 51125;   // "Editor form settings"
constexpr int SExpertsManager = 51126;       // "Experts manager"
constexpr int SInspectorFormView = 51127;    // "Manager of the open windows"
constexpr int SFormUnitView = 51128;         // "Project forms/units preview"
constexpr int SCPUView = 51129;              // "CPU window data scan"
constexpr int SUnitEditorExpert = 51140;     // "Unit editor expert"
constexpr int SUnitManagerExpert = 51141;    // "Manager of the open units"

// Labels of the settings editor.
constexpr int SLabelActive = 51142;
constexpr int SLabelItemCaption = 51143;
constexpr int SLabelImageIndex = 51144;
constexpr int SLabelHaveLineBefore = 51145;
constexpr int SLabelShortCutText = 51146;
constexpr int SLabelAutoSavePlacement = 51147;
constexpr int SLabelFormPlacement = 51148;
constexpr int SLabelSavePlacementShortCut = 51149;
constexpr int SLabelAutoSaveSetting = 51160;
constexpr int SLabelSaveSettingShortCut = 51161;
constexpr int SLabelSetting = 51162;
constexpr int SLabelExpertVersion = 51163;
constexpr int SLabelAutoSaveSettings = 51164;
constexpr int SLabelMainMenuSearchItem = 51165;
constexpr int SLabelInsertMenuBefore = 51166;
constexpr int SLabelMenuLineBefore = 51167;
constexpr int SLabelMenuLineAfter = 51168;
constexpr int SLabelErrorLogAllowed = 51169;
constexpr int SLabelMaxLogSize = 51180;
constexpr int SLabelMoveCursorTopLeft = 51237;
constexpr int SLabelSafeStringMoving = 51238;
constexpr int SLabelDragModeAllowed = 51243;
constexpr int SLabelCloseFormOnShowUnit = 51244;
constexpr int SLabelFilterPanelVisible = 51245;
constexpr int SLabelJumpToUnitsOnApllyFilter = 51246;
constexpr int SLabelHistoryList = 51247;
constexpr int SLabelHistoryStoredCount = 51248;
constexpr int SLabelCloseUnitShortCut = 51249;
constexpr int SLabelFilterUnitsShortCut = 51260;
constexpr int SLabelMoveDownUnitShortCut = 51261;
constexpr int SLabelMoveUpUnitShortCut = 51262;
constexpr int SLabelShowUnitShortCut = 51263;
constexpr int SLabelSortUnitsShortCut = 51264;

// Menu items and window captions.
constexpr int SUnitManagerCaption = 51010;   // "Unit manager", the window
constexpr int SUnitManagerItem = 51043;      // "Unit manager", the menu item

} // namespace zelvane
