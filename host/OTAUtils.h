// The add-in's thin layer over the IDE: the active project, the open editors, the forms of a
// project and the IDE's own windows, all taken from BorlandIDEServices. Every routine gives an
// empty result where the IDE has nothing to give; none raises an error of its own.
#pragma once

#include "rtl/TypInfo.h"
#include "toolsapi/ToolsAPI.h"

#include <array>
#include <string>
#include <vector>

class QObject;
class QWidget;

namespace zelvane {

using ToolsAPI::TDesignComponent;

RTL_ENUM(TProjectFormType, pfkForm, pfkFrame, pfkDataModule, pfkQuickRep)
RTL_SET(TProjectFormTypes, TProjectFormType)
RTL_ENUM(TModuleType, mtForm, mtUnit)
RTL_ENUM(TModuleNameKind, mnkFile, mnkUnit, mnkForm, mnkDesignClass)

// All four names of one module, indexed by TModuleNameKind.
using TModuleNameRec = std::array<std::string, 4>;
using TModuleNames = std::vector<TModuleNameRec>;

inline constexpr TProjectFormTypes AllProjectFormTypes{pfkForm, pfkFrame, pfkDataModule,
                                                       pfkQuickRep};

ToolsAPI::_di_IOTAKeyboardServices OTAKeyboardServices();

// The extension of the active designer's forms, without its point ("dfm"), and with it.
std::string GetProjectFormType();
std::string GetProjectFormExt();

ToolsAPI::_di_IOTAModule GetActiveModule();
// The project group's active project; without a group the one open project, and none when two
// or more projects are open loose.
ToolsAPI::_di_IOTAProject GetActiveProject();
ToolsAPI::_di_IOTAProjectResource GetProjectResource();
ToolsAPI::_di_IOTAFormEditor GetActiveFormEditor();
ToolsAPI::_di_IOTASourceEditor GetActiveSourceEditor();

// The first visible top-level window whose object name contains "EditWindow".
QWidget* FindEditorForm();
// The form of the top view's edit window.
QWidget* GetEditorForm();
// The form of the edit window of the active source editor's first view.
QWidget* GetEditorForm2();
// The object of that name on GetEditorForm, compared without regard to case.
QObject* GetEditorFormComponent(const std::string& name);

ToolsAPI::_di_IOTAFormEditor GetFormEditorFromModule(const ToolsAPI::_di_IOTAModule& module);
ToolsAPI::_di_IOTASourceEditor GetSourceEditorFromModule(const ToolsAPI::_di_IOTAModule& module);
ToolsAPI::_di_IDesigner GetActiveFormDesigner(const ToolsAPI::_di_IOTAFormEditor& formEditor);

// The designer's root of a form editor, or nullptr.
TDesignComponent* GetFormFromEditor(const ToolsAPI::_di_IOTAEditor& editor);
// The same, kept only when it is of one of the kinds: a form, a data module, a frame, or a
// class whose direct parent is TQuickRep.
TDesignComponent* GetFormFromEditor(const ToolsAPI::_di_IOTAEditor& editor,
                                    TProjectFormTypes types);

// The window that carries a design root in the designer: a form gives itself, a data module the
// designer window that holds it. nullptr for a component of a kind the IDE shows in no window.
QWidget* GetRootControl(TDesignComponent* component);
// Whether the component is a design root of one of the kinds the IDE designs: a form, a data
// module, a frame, or a class whose direct parent is TQuickRep.
bool IsFormComponent(const TDesignComponent* component);

// The roots of all modules of the active project, each opened for it.
void GetProjectForms(std::vector<TDesignComponent*>& list, TProjectFormTypes types);
// The roots of the open modules; with projectOnly only those of the active project's modules.
void GetProjectForms(std::vector<TDesignComponent*>& list, TProjectFormTypes types,
                     bool projectOnly);
void GetOpenedFormEditors(std::vector<ToolsAPI::_di_IOTAFormEditor>& list, TProjectFormTypes types,
                          bool projectOnly);
// mtForm: the form editors with a root; mtUnit: every editor that is a source editor.
void GetOpenedEditors(std::vector<ToolsAPI::_di_IOTAEditor>& list, TModuleType moduleType,
                      bool projectOnly);
// The source editors of the open modules, as plain pointers that hold no reference: they stay
// valid while their modules are open.
void GetOpenedSourceEditors(std::vector<ToolsAPI::IOTASourceEditor*>& list, bool projectOnly);

void GetProjectModules(std::vector<ToolsAPI::_di_IOTAModuleInfo>& list);
// The non-empty names of one kind of the active project's modules; mnkDesignClass adds nothing.
void GetProjectModuleNames(std::vector<std::string>& strings, TModuleNameKind kind);
TModuleNames GetProjectModuleNames();

// Opens the module and shows those of its editors that the kind asks for.
void ShowModule(const ToolsAPI::_di_IOTAModuleInfo& info, TModuleNameKind kind, bool formOnly,
                bool displacingView);
void ShowModuleByName(const std::string& name, TModuleNameKind kind, bool formOnly,
                      bool displacingView);

} // namespace zelvane
