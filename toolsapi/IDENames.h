// The object names of the IDE's main form, main menu, menus, commands and tool bars. Packages
// and tests find these components by their names (QObject::objectName), never by their
// captions, which carry accelerators and may be translated; the host gives its components these
// names. A name written as a constant is checked by the compiler where a string would not be.
#pragma once

namespace ToolsAPI::ide {

inline constexpr char MainForm[] = "AppBuilder";
inline constexpr char MainMenu[] = "MainMenu";

// The menus of the main menu, and the submenu of the debugger's windows.
inline constexpr char FileMenu[] = "FileMenu";
inline constexpr char EditMenu[] = "EditMenu";
inline constexpr char SearchMenu[] = "SearchMenu";
inline constexpr char ViewMenu[] = "ViewMenu";
inline constexpr char ViewDebugMenu[] = "ViewDebugMenu";
inline constexpr char ProjectMenu[] = "ProjectMenu";
inline constexpr char RunMenu[] = "RunMenu";
inline constexpr char ComponentMenu[] = "ComponentMenu";
inline constexpr char ToolsMenu[] = "ToolsMenu";
inline constexpr char HelpMenu[] = "HelpMenu";

// The commands of the action list.
inline constexpr char FileOpenCommand[] = "FileOpenCommand";
inline constexpr char FileOpenProjectCommand[] = "FileOpenProjectCommand";
inline constexpr char FileSaveCommand[] = "FileSaveCommand";
inline constexpr char FileSaveAllCommand[] = "FileSaveAllCommand";
inline constexpr char FileCloseCommand[] = "FileCloseCommand";
inline constexpr char FileCloseAllCommand[] = "FileCloseAllCommand";
inline constexpr char FileExitCommand[] = "FileExitCommand";
inline constexpr char EditUndoCommand[] = "EditUndoCommand";
inline constexpr char EditRedoCommand[] = "EditRedoCommand";
inline constexpr char EditCutCommand[] = "EditCutCommand";
inline constexpr char EditCopyCommand[] = "EditCopyCommand";
inline constexpr char EditPasteCommand[] = "EditPasteCommand";
inline constexpr char EditDeleteCommand[] = "EditDeleteCommand";
inline constexpr char EditSelectAllCommand[] = "EditSelectAllCommand";
inline constexpr char EditReadOnlyCommand[] = "EditReadOnlyCommand";
inline constexpr char SearchFindCommand[] = "SearchFindCommand";
inline constexpr char SearchAgainCommand[] = "SearchAgainCommand";
inline constexpr char SearchGoToCommand[] = "SearchGoToCommand";
inline constexpr char ViewPrjMgrCommand[] = "ViewPrjMgrCommand";
inline constexpr char ViewObjInspCommand[] = "ViewObjInspCommand";
inline constexpr char ViewCPUCommand[] = "ViewCPUCommand";
inline constexpr char ViewUnitsCommand[] = "ViewUnitsCommand";
inline constexpr char ViewFormsCommand[] = "ViewFormsCommand";
inline constexpr char ViewSwapSourceFormCommand[] = "ViewSwapSourceFormCommand";
inline constexpr char ProjectCompileCommand[] = "ProjectCompileCommand";
inline constexpr char ProjectBuildCommand[] = "ProjectBuildCommand";
inline constexpr char ProjectSyntaxCommand[] = "ProjectSyntaxCommand";
inline constexpr char ProjectOptionsCommand[] = "ProjectOptionsCommand";
inline constexpr char RunRunCommand[] = "RunRunCommand";
inline constexpr char RunStepOverCommand[] = "RunStepOverCommand";
inline constexpr char RunTraceIntoCommand[] = "RunTraceIntoCommand";
inline constexpr char RunResetCommand[] = "RunResetCommand";
inline constexpr char ComponentInstallPackagesCommand[] = "ComponentInstallPackagesCommand";
inline constexpr char ToolsEditorOptionsCommand[] = "ToolsEditorOptionsCommand";
inline constexpr char HelpAboutCommand[] = "HelpAboutCommand";

// The tool bars, as INTAServices::GetToolBar names them, and the view tool bar's two buttons.
inline constexpr char StandardToolBar[] = "StandardToolBar";
inline constexpr char ViewToolBar[] = "ViewToolBar";
inline constexpr char DebugToolBar[] = "DebugToolBar";
inline constexpr char ViewUnitButton[] = "ViewUnitButton";
inline constexpr char ViewFormButton[] = "ViewFormButton";

} // namespace ToolsAPI::ide
