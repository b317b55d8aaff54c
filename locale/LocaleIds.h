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
constexpr int SLabelDisplacingView = 51181;
constexpr int SLabelDisplayFormScrollbars = 51182;
constexpr int SLabelDisplayUnitScrollbars = 51183;
constexpr int SLabelEditorAutoSave = 51184;
constexpr int SLabelEditorReadOnly = 51185;
constexpr int SLabelEllipsisFilePath = 51186;
constexpr int SLabelFormEnhancedState = 51187;
constexpr int SLabelSynchronizeModules = 51188;
constexpr int SLabelToolBarUpdated = 51189;
constexpr int SLabelSetFocusToModules = 51200;
constexpr int SLabelSelectFocusedItem = 51201;
constexpr int SLabelGroupedUnits = 51202;
constexpr int SLabelSeparatorAllowed = 51203;
constexpr int SLabelSeparatorColor = 51204;
constexpr int SLabelSeparatorStyle = 51205;
constexpr int SLabelExtendedDrawing = 51206;
constexpr int SLabelFormFont = 51207;
constexpr int SLabelFormUnitFont = 51208;
constexpr int SLabelUnitFont = 51209;
constexpr int SLabelDisplayPanel = 51220;
constexpr int SLabelProjectFormsOnly = 51221;
constexpr int SLabelReturnFocus = 51222;
constexpr int SLabelAutoShowForm = 51223;

// Menu items and window captions.
constexpr int SUnitManagerCaption = 51010;   // "Unit manager", the window
constexpr int SUnitManagerItem = 51043;      // "Unit manager", the menu item
constexpr int SViewFormsItem = 51040;        // "View Forms..."
constexpr int SViewUnitsItem = 51041;        // "View Units..."

// The inspector's pop-up menu.
constexpr int SDisplayPanelItem = 51022;     // "Display panel"
constexpr int SProjectFormsOnlyItem = 51023; // "Project forms only"
constexpr int SReturnFocusItem = 51024;      // "Return focus"
constexpr int SSelectParentItem = 51025;     // "Select parent"
constexpr int SSelectFormItem = 51026;       // "Select form"
constexpr int SShowFormItem = 51027;         // "Show form"

// The module viewer.
constexpr int SFormsChoice = 51005;          // "Forms"
constexpr int SUnitsChoice = 51006;          // "Units"
constexpr int SViewFormCaption = 51007;      // "View Form"
constexpr int SViewUnitCaption = 51008;      // "View Unit"
constexpr int SCancelButton = 51011;         // "Cancel"
constexpr int SMoreButton = 51012;           // "More"
constexpr int SSynchronizeModules = 51028;   // "Synchronize modules"
constexpr int SDisplayScrollbars = 51029;    // "Display scrollbars"
constexpr int SClxFormsNotSupported = 51104; // "CLX forms are not supported."

// The CPU capture.
constexpr int SViewCPUCaption = 51009;       // "View CPU", the window
constexpr int SViewCPUItem = 51042;          // "View CPU data", the menu item
constexpr int SStringsCount = 51066;         // "%d strings"
constexpr int SCustomStrCount = 51067;       // "Custom..."
constexpr int SGetDataHint = 51069;          // "Get data from CPU window"
constexpr int SSetStrCountHint = 51070;      // "Lines to read"
constexpr int SStrCountCaption = 51071;      // "Parameters"
constexpr int SStrCountLabel = 51072;        // "String count:"
constexpr int SDisasmViewTitle = 51073;      // "Assembler code"
constexpr int SRegViewTitle = 51080;         // "Processor’s registers"
constexpr int SFlagsViewTitle = 51081;       // "Processor’s flags"
constexpr int SDumpViewTitle = 51082;        // "Memory dump"
constexpr int SStackViewTitle = 51083;       // "Program stack"
constexpr int SAllViewsTitle = 51084;        // "All types"
constexpr int SExitHint = 51085;             // "Exit"
constexpr int SDialogCancel = 50623;         // "Cancel"
constexpr int SLabelReadLineCount = 51224;
constexpr int SLabelViewObject = 51225;
constexpr int SLabelDisasmView = 51226;
constexpr int SLabelRegView = 51227;
constexpr int SLabelFlagsView = 51228;
constexpr int SLabelDumpView = 51229;
constexpr int SLabelStackView = 51235;
constexpr int SLabelAllViews = 51236;

} // namespace zelvane
