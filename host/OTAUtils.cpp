#include "host/OTAUtils.h"

#include "rtl/SysUtils.h"

#include <QApplication>
#include <QWidget>

namespace zelvane {

using namespace ToolsAPI;

namespace {

using rtl::ExtractFileExt;
using rtl::LowerCase;
using rtl::SameText;

// Whether ext stands in the list text, as a plain substring: an empty extension stands in any
// text, and so does a piece of one (".d" in ".dfm"). Extensions are compared without regard
// to case, as file names are on the platform.
bool ExtIn(const std::string& ext, const std::string& list) {
    return list.find(LowerCase(ext)) != std::string::npos;
}

template <class I> DelphiInterface<I> FirstEditorAnswering(const _di_IOTAModule& module) {
    if (!module) return nullptr;
    for (int i = 0; i < module->GetModuleFileCount(); ++i) {
        DelphiInterface<I> result;
        if (Supports(module->GetModuleFileEditor(i), result)) return result;
    }
    return nullptr;
}

QWidget* FormOfView(const _di_IOTAEditView& view) {
    if (!view) return nullptr;
    _di_INTAEditWindow window = view->GetEditWindow();
    return window ? window->GetForm() : nullptr;
}

// The open modules that the filter lets through: all of them, or with projectOnly those that
// the active project holds; with projectOnly and no project, none.
std::vector<_di_IOTAModule> OpenModules(bool projectOnly) {
    std::vector<_di_IOTAModule> result;
    _di_IOTAModuleServices services = IDEService<IOTAModuleServices>();
    if (!services) return result;
    _di_IOTAProject project;
    if (projectOnly) {
        project = GetActiveProject();
        if (!project) return result;
    }
    for (int i = 0; i < services->GetModuleCount(); ++i) {
        _di_IOTAModule module = services->GetModule(i);
        if (!module) continue;
        bool qualifies = !projectOnly;
        for (int k = 0; !qualifies && k < module->GetOwnerCount(); ++k)
            qualifies = module->GetOwner(k) == project;
        if (qualifies) result.push_back(module);
    }
    return result;
}

std::string NameOfKind(const _di_IOTAModuleInfo& info, TModuleNameKind kind) {
    switch (kind) {
    case mnkFile:
        return info->GetFileName();
    case mnkUnit:
        return info->GetName();
    case mnkForm:
        return info->GetFormName();
    case mnkDesignClass:
        return info->GetDesignClass();
    }
    return {};
}

} // namespace

_di_IOTAKeyboardServices OTAKeyboardServices() {
    return IDEService<IOTAKeyboardServices>();
}

std::string GetProjectFormType() {
    _di_IOTAServices services = IDEService<IOTAServices>();
    return services ? services->GetActiveDesignerType() : std::string();
}

std::string GetProjectFormExt() {
    return "." + GetProjectFormType();
}

_di_IOTAModule GetActiveModule() {
    _di_IOTAModuleServices services = IDEService<IOTAModuleServices>();
    return services ? services->CurrentModule() : nullptr;
}

_di_IOTAProject GetActiveProject() {
    _di_IOTAModuleServices services = IDEService<IOTAModuleServices>();
    if (!services) return nullptr;
    _di_IOTAProject found;
    bool several = false;
    for (int i = 0; i < services->GetModuleCount(); ++i) {
        _di_IOTAModule module = services->GetModule(i);
        _di_IOTAProjectGroup group;
        if (Supports(module, group)) return group->GetActiveProject();
        _di_IOTAProject project;
        if (Supports(module, project)) {
            if (!found)
                found = project;
            else
                several = true;
        }
    }
    return several ? nullptr : found;
}

_di_IOTAProjectResource GetProjectResource() {
    _di_IOTAProject project = GetActiveProject();
    return FirstEditorAnswering<IOTAProjectResource>(project);
}

_di_IOTAFormEditor GetActiveFormEditor() {
    return FirstEditorAnswering<IOTAFormEditor>(GetActiveModule());
}

_di_IOTASourceEditor GetActiveSourceEditor() {
    return GetSourceEditorFromModule(GetActiveModule());
}

QWidget* FindEditorForm() {
    if (!qApp) return nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w->objectName().contains(QStringLiteral("EditWindow"))) return w;
    return nullptr;
}

QWidget* GetEditorForm() {
    _di_IOTAEditorServices services = IDEService<IOTAEditorServices>();
    if (!services) return nullptr;
    _di_IOTAEditBuffer buffer = services->GetTopBuffer();
    if (!buffer || buffer->GetEditViewCount() < 1) return nullptr;
    return FormOfView(services->GetTopView());
}

QWidget* GetEditorForm2() {
    _di_IOTASourceEditor editor = GetActiveSourceEditor();
    if (!editor || editor->GetEditViewCount() < 1) return nullptr;
    return FormOfView(editor->GetEditView(0));
}

QObject* GetEditorFormComponent(const std::string& name) {
    QWidget* form = GetEditorForm();
    if (!form) return nullptr;
    QString wanted = QString::fromStdString(name);
    for (QObject* o : form->findChildren<QObject*>())
        if (o->objectName().compare(wanted, Qt::CaseInsensitive) == 0) return o;
    return nullptr;
}

_di_IOTAFormEditor GetFormEditorFromModule(const _di_IOTAModule& module) {
    return FirstEditorAnswering<IOTAFormEditor>(module);
}

_di_IOTASourceEditor GetSourceEditorFromModule(const _di_IOTAModule& module) {
    return FirstEditorAnswering<IOTASourceEditor>(module);
}

_di_IDesigner GetActiveFormDesigner(const _di_IOTAFormEditor& formEditor) {
    _di_INTAFormEditor native;
    if (!Supports(formEditor, native)) return nullptr;
    return native->GetFormDesigner();
}

TDesignComponent* GetFormFromEditor(const _di_IOTAEditor& editor) {
    _di_INTAFormEditor native;
    if (!Supports(editor, native)) return nullptr;
    _di_IDesigner designer = native->GetFormDesigner();
    return designer ? designer->GetRoot() : nullptr;
}

TDesignComponent* GetFormFromEditor(const _di_IOTAEditor& editor, TProjectFormTypes types) {
    TDesignComponent* root = GetFormFromEditor(editor);
    if (!root) return nullptr;
    if (root->InheritsFrom("TForm") && types.Contains(pfkForm)) return root;
    if (root->InheritsFrom("TDataModule") && types.Contains(pfkDataModule)) return root;
    if (root->InheritsFrom("TFrame") && types.Contains(pfkFrame)) return root;
    if (root->ClassParentName() == "TQuickRep" && types.Contains(pfkQuickRep)) return root;
    return nullptr;
}

QWidget* GetRootControl(TDesignComponent* component) {
    if (!component || (!component->Widget && !component->InheritsFrom("TDataModule")))
        return nullptr;
    if (component->Owner && component->Owner->Widget) return component->Owner->Widget;
    return component->Widget;
}

bool IsFormComponent(const TDesignComponent* component) {
    return component &&
           (component->InheritsFrom("TCustomForm") || component->InheritsFrom("TDataModule") ||
            component->InheritsFrom("TFrame") || component->ClassParentName() == "TQuickRep");
}

void GetProjectForms(std::vector<TDesignComponent*>& list, TProjectFormTypes types) {
    list.clear();
    _di_IOTAProject project = GetActiveProject();
    if (!project) return;
    for (int i = 0; i < project->GetModuleCount(); ++i) {
        _di_IOTAModuleInfo info = project->GetModule(i);
        if (!info || info->GetFileName().empty()) continue;
        _di_IOTAModule module = info->OpenModule();
        TDesignComponent* root =
            GetFormFromEditor(_di_IOTAEditor(GetFormEditorFromModule(module)), types);
        if (root) list.push_back(root);
    }
}

void GetProjectForms(std::vector<TDesignComponent*>& list, TProjectFormTypes types,
                     bool projectOnly) {
    list.clear();
    for (const _di_IOTAModule& module : OpenModules(projectOnly)) {
        TDesignComponent* root =
            GetFormFromEditor(_di_IOTAEditor(GetFormEditorFromModule(module)), types);
        if (root) list.push_back(root);
    }
}

void GetOpenedFormEditors(std::vector<_di_IOTAFormEditor>& list, TProjectFormTypes types,
                          bool projectOnly) {
    list.clear();
    for (const _di_IOTAModule& module : OpenModules(projectOnly)) {
        _di_IOTAFormEditor editor = GetFormEditorFromModule(module);
        if (GetFormFromEditor(_di_IOTAEditor(editor), types)) list.push_back(editor);
    }
}

void GetOpenedEditors(std::vector<_di_IOTAEditor>& list, TModuleType moduleType, bool projectOnly) {
    list.clear();
    for (const _di_IOTAModule& module : OpenModules(projectOnly)) {
        if (moduleType == mtForm) {
            _di_IOTAFormEditor editor = GetFormEditorFromModule(module);
            if (GetFormFromEditor(_di_IOTAEditor(editor))) list.push_back(_di_IOTAEditor(editor));
            continue;
        }
        for (int i = 0; i < module->GetModuleFileCount(); ++i) {
            _di_IOTASourceEditor source;
            if (Supports(module->GetModuleFileEditor(i), source))
                list.push_back(_di_IOTAEditor(source));
        }
    }
}

void GetOpenedSourceEditors(std::vector<IOTASourceEditor*>& list, bool projectOnly) {
    list.clear();
    for (const _di_IOTAModule& module : OpenModules(projectOnly)) {
        for (int i = 0; i < module->GetModuleFileCount(); ++i) {
            _di_IOTASourceEditor source;
            // The module holds the editor, so the plain pointer stays valid after the query's
            // reference goes.
            if (Supports(module->GetModuleFileEditor(i), source)) list.push_back(source.get());
        }
    }
}

void GetProjectModules(std::vector<_di_IOTAModuleInfo>& list) {
    list.clear();
    _di_IOTAProject project = GetActiveProject();
    if (!project) return;
    for (int i = 0; i < project->GetModuleCount(); ++i)
        if (_di_IOTAModuleInfo info = project->GetModule(i)) list.push_back(info);
}

void GetProjectModuleNames(std::vector<std::string>& strings, TModuleNameKind kind) {
    if (kind == mnkDesignClass) return;
    std::vector<_di_IOTAModuleInfo> modules;
    GetProjectModules(modules);
    for (const auto& info : modules) {
        std::string name = NameOfKind(info, kind);
        if (!name.empty()) strings.push_back(name);
    }
}

TModuleNames GetProjectModuleNames() {
    TModuleNames result;
    std::vector<_di_IOTAModuleInfo> modules;
    GetProjectModules(modules);
    for (const auto& info : modules)
        result.push_back(
            {info->GetFileName(), info->GetName(), info->GetFormName(), info->GetDesignClass()});
    return result;
}

void ShowModule(const _di_IOTAModuleInfo& info, TModuleNameKind kind, bool formOnly,
                bool displacingView) {
    if (!info) return;
    _di_IOTAModule module = info->OpenModule();
    if (!module || kind == mnkDesignClass) return; // a design class names nothing to show
    // The editors first: showing one may change the module's list.
    std::vector<_di_IOTAEditor> editors;
    for (int i = 0; i < module->GetModuleFileCount(); ++i)
        editors.push_back(module->GetModuleFileEditor(i));
    for (const _di_IOTAEditor& editor : editors) {
        if (!editor) continue;
        std::string ext = ExtractFileExt(editor->GetFileName());
        if (kind == mnkFile || kind == mnkUnit) {
            if (!ExtIn(ext, ".dfm.xfm.h.bpr.res")) editor->Show();
        } else if (ExtIn(ext, ".dfm.xfm")) {
            editor->Show();
        } else if (!formOnly && ExtIn(ext, ".pas.cpp")) {
            if (displacingView && SameText(ext, ".cpp")) {
                editor->Show();
            } else if (_di_IOTAActionServices actions = IDEService<IOTAActionServices>()) {
                actions->OpenFile(editor->GetFileName());
            }
        }
    }
}

void ShowModuleByName(const std::string& name, TModuleNameKind kind, bool formOnly,
                      bool displacingView) {
    std::vector<_di_IOTAModuleInfo> modules;
    GetProjectModules(modules);
    for (const auto& info : modules) {
        // A design class is never matched by its text: only an empty name matches it.
        std::string own = kind == mnkDesignClass ? std::string() : NameOfKind(info, kind);
        if (SameText(own, name)) {
            ShowModule(info, kind, formOnly, displacingView);
            return;
        }
    }
}

} // namespace zelvane
