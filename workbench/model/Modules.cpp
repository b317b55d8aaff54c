// Modules, projects, project groups and module infos.
#include "workbench/model/Files.h"
#include "workbench/model/LibraryClasses.h"
#include "workbench/model/Model.h"

#include <algorithm>
#include <unordered_map>

namespace workbench {

// ---------------------------------------------------------------------------------------------
// TModelModule

TModelModule::TModelModule(TIDEModel* model, std::string fileName)
    : model_(model), fileName_(std::move(fileName)) {}

TModelModule::~TModelModule() {
    if (model_) Detach();
}

_di_IOTAEditor TModelModule::GetModuleFileEditor(int index) {
    if (index < 0 || index >= GetModuleFileCount()) return nullptr;
    return editors_[static_cast<size_t>(index)];
}

int TModelModule::GetOwnerCount() {
    if (!model_) return 0;
    int n = 0;
    for (TProjectModule* p : model_->Projects())
        if (p->HoldsFile(fileName_)) ++n;
    return n;
}

_di_IOTAProject TModelModule::GetOwner(int index) {
    if (!model_) return nullptr;
    for (TProjectModule* p : model_->Projects())
        if (p->HoldsFile(fileName_) && index-- == 0) return _di_IOTAProject(p);
    return nullptr;
}

_di_IOTAEditor TModelModule::GetCurrentEditor() {
    for (auto& e : editors_)
        if (e.get() == current_) return e;
    return editors_.empty() ? nullptr : editors_.front();
}

bool TModelModule::Close() {
    return model_ ? model_->CloseModule(this, true) : true;
}

bool TModelModule::CloseModule(bool forceClosed) {
    return model_ ? model_->CloseModule(this, !forceClosed) : true;
}

bool TModelModule::Save(bool childrenOnly, bool forceSave) {
    for (auto& e : editors_) {
        if (!forceSave && !e->GetModified()) continue;
        if (auto* s = dynamic_cast<TSourceEditor*>(e.get()))
            s->SaveToFile();
        else if (auto* f = dynamic_cast<TFormEditor*>(e.get()))
            f->SaveToFile();
    }
    return true;
}

void TModelModule::Show() {
    _di_IOTAEditor e = GetCurrentEditor();
    if (e) e->Show();
}

bool TModelModule::AnyModified() {
    return std::any_of(editors_.begin(), editors_.end(),
                       [](const _di_IOTAEditor& e) { return e->GetModified(); });
}

TSourceEditor* TModelModule::SourceEditor() const {
    for (auto& e : editors_)
        if (auto* s = dynamic_cast<TSourceEditor*>(e.get())) return s;
    return nullptr;
}

TFormEditor* TModelModule::FormEditor() const {
    for (auto& e : editors_)
        if (auto* f = dynamic_cast<TFormEditor*>(e.get())) return f;
    return nullptr;
}

void TModelModule::Detach() {
    for (auto& e : editors_) {
        if (auto* s = dynamic_cast<TSourceEditor*>(e.get()))
            s->Detach();
        else if (auto* f = dynamic_cast<TFormEditor*>(e.get()))
            f->Detach();
        else if (auto* r = dynamic_cast<TProjectResource*>(e.get()))
            r->Detach();
    }
    editors_.clear();
    current_ = nullptr;
    model_ = nullptr;
}

// ---------------------------------------------------------------------------------------------
// TModuleInfo

TModuleInfo::TModuleInfo(TIDEModel* model, TProjectModule* project, TProjectEntry entry)
    : model_(model), project_(project), entry_(std::move(entry)) {}

std::string TModuleInfo::FormFile() const {
    std::string ext = LowerCase(ExtractFileExt(entry_.FileName));
    if (ext != ".pas" && ext != ".cpp") return {};
    std::string form = FindCompanionFile(entry_.FileName, ".dfm");
    return form.empty() ? FindCompanionFile(entry_.FileName, ".xfm") : form;
}

void TModuleInfo::Resolve() {
    if (resolved_) return;
    resolved_ = true;
    std::string form = FormFile();
    if (form.empty()) return;
    // The form's class is the class of its root; a damaged form file leaves the names the
    // project file gives.
    try {
        TFormFile f = LoadFormFile(form);
        formClass_ = f.Root->ClassName;
        if (entry_.FormName.empty()) entry_.FormName = f.Root->Name;
    } catch (const rtl::Exception&) {
        if (formClass_.empty() && !entry_.FormName.empty()) formClass_ = "T" + entry_.FormName;
    }
    if (!entry_.DesignClass.empty() || formClass_.empty()) return;
    bool cpp = SameText(ExtractFileExt(entry_.FileName), ".cpp");
    std::string declaring = cpp ? FindCompanionFile(entry_.FileName, ".h") : entry_.FileName;
    try {
        entry_.DesignClass = FindParentClass(ReadFileBytes(declaring), formClass_, cpp);
    } catch (const rtl::Exception&) {
    }
}

std::string TModuleInfo::GetFormName() {
    Resolve();
    return entry_.FormName;
}

std::string TModuleInfo::GetDesignClass() {
    Resolve();
    return entry_.DesignClass;
}

TOTAModuleType TModuleInfo::GetModuleType() {
    std::string ext = LowerCase(ExtractFileExt(entry_.FileName));
    if (ext == ".res") return omtRes;
    if (entry_.PackageImport) return omtPackageImport;
    if (ext == ".rc") return omtRc;
    if (ext == ".obj") return omtObj;
    if (ext == ".lib") return omtLib;
    if (ext == ".asm") return omtAsm;
    if (ext == ".def") return omtDef;
    if (FormFile().empty()) return omtUnit;
    Resolve();
    std::string cls = entry_.DesignClass;
    for (int i = 0; i < 32 && !cls.empty(); ++i) {
        if (SameText(cls, "TDataModule")) return omtDataModule;
        std::string next = LibraryClassParent(cls);
        if (next.empty() && project_ && !IsLibraryClass(cls))
            next = project_->FindUnitClassParent(cls);
        cls = next;
    }
    return omtForm;
}

_di_IOTAModule TModuleInfo::OpenModule() {
    if (!model_ || entry_.FileName.empty()) return nullptr;
    return _di_IOTAModule(model_->OpenModuleFile(entry_.FileName, TOpenMode::Background).get());
}

// ---------------------------------------------------------------------------------------------
// TProjectModule

TProjectModule::TProjectModule(TIDEModel* model, TProjectDescription description)
    : TModelModule(model, description.FileName), description_(std::move(description)) {
    for (const auto& e : description_.Entries)
        infos_.push_back(MakeInterfaced<TModuleInfo>(model, this, e));
}

_di_IOTAModuleInfo TProjectModule::GetModule(int index) {
    if (index < 0 || index >= GetModuleCount()) return nullptr;
    return _di_IOTAModuleInfo(infos_[static_cast<size_t>(index)].get());
}

_di_IOTAModuleInfo TProjectModule::FindModuleInfo(const std::string& fileName) {
    for (auto& i : infos_)
        if (SameText(i->GetFileName(), fileName)) return _di_IOTAModuleInfo(i.get());
    return nullptr;
}

_di_IOTAProjectGroup TProjectModule::GetProjectGroup() {
    return _di_IOTAProjectGroup(group_);
}

bool TProjectModule::HoldsFile(const std::string& fileName) const {
    if (SameText(fileName, fileName_)) return true;
    return std::any_of(description_.Entries.begin(), description_.Entries.end(),
                       [&](const TProjectEntry& e) { return SameText(e.FileName, fileName); });
}

namespace {

// The parent of the class as the unit file declares it. The file's classes are read again only
// when it changed: a form whose components are of classes that no unit declares asks for each
// of them across the whole project.
std::string CachedClassParent(const std::string& file, bool cpp, const std::string& className) {
    using TParents = std::unordered_map<std::string, std::string>;
    static TFileCache<TParents> units;
    auto read = [cpp](const std::filesystem::path& unit) {
        TParents parents;
        try {
            for (TClassDeclaration& c : UnitClasses(ReadFileBytes(unit.string()), cpp))
                parents.emplace(LowerCase(c.Name), std::move(c.Parent));
        } catch (const rtl::Exception&) {
            // An unreadable unit declares nothing.
        }
        return parents;
    };
    return units.With(file, read, [&](const TParents& parents) {
        auto it = parents.find(LowerCase(className));
        return it == parents.end() ? std::string() : it->second;
    });
}

} // namespace

std::string TProjectModule::FindUnitClassParent(const std::string& className) {
    for (const auto& e : description_.Entries) {
        std::string ext = LowerCase(ExtractFileExt(e.FileName));
        bool cpp = ext == ".cpp";
        if (ext != ".pas" && !cpp) continue;
        std::string declaring = cpp ? FindCompanionFile(e.FileName, ".h") : e.FileName;
        if (declaring.empty()) continue;
        std::string parent = CachedClassParent(declaring, cpp, className);
        if (!parent.empty()) return parent;
    }
    return {};
}

void TProjectModule::Detach() {
    for (auto& i : infos_)
        i->Detach();
    if (group_) group_->RemoveProject(this);
    group_ = nullptr;
    TModelModule::Detach();
}

// ---------------------------------------------------------------------------------------------
// TGroupModule

TGroupModule::TGroupModule(TIDEModel* model, std::string fileName)
    : TModelModule(model, std::move(fileName)) {}

_di_IOTAProject TGroupModule::GetActiveProject() {
    return _di_IOTAProject(active_);
}

void TGroupModule::SetActiveProject(const _di_IOTAProject& project) {
    for (auto& p : projects_)
        if (project && Identity(static_cast<IOTAProject*>(p.get())) == Identity(project.get())) {
            active_ = p.get();
            return;
        }
}

_di_IOTAProject TGroupModule::GetProject(int index) {
    if (index < 0 || index >= GetProjectCount()) return nullptr;
    return _di_IOTAProject(projects_[static_cast<size_t>(index)].get());
}

void TGroupModule::AddProject(TProjectModule* project) {
    projects_.push_back(DelphiInterface<TProjectModule>(project));
    project->SetGroup(this);
    if (!active_) active_ = project;
}

void TGroupModule::RemoveProject(TProjectModule* project) {
    auto it = std::find_if(projects_.begin(), projects_.end(),
                           [&](const auto& p) { return p.get() == project; });
    if (it == projects_.end()) return;
    DelphiInterface<TProjectModule> keep = *it;
    projects_.erase(it);
    project->SetGroup(nullptr);
    if (active_ == project) active_ = projects_.empty() ? nullptr : projects_.front().get();
}

void TGroupModule::Detach() {
    while (!projects_.empty())
        RemoveProject(projects_.back().get());
    TModelModule::Detach();
}

} // namespace workbench
