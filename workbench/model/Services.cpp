// The services object: open modules, the views' order, notifiers, key bindings.
#include "workbench/model/Files.h"
#include "workbench/model/Model.h"

#include <algorithm>
#include <filesystem>

#include "rtl/TypInfo.h"

namespace workbench {

RTL_IMPLEMENT_CLASS(EModelError)
RTL_IMPLEMENT_CLASS(EReadOnlyBuffer)

namespace fs = std::filesystem;

TIDEModel::TIDEModel() {
    windows_.push_back(MakeInterfaced<TEditWindow>());
}

TIDEModel::~TIDEModel() {
    // Nothing is asked at shut-down; what the add-in still holds loses its module.
    while (!modules_.empty()) {
        DelphiInterface<TModelModule> m = modules_.back();
        modules_.pop_back();
        m->Detach();
    }
    ideNotifiers_.clear();
    bindings_.clear();
}

// ---------------------------------------------------------------------------------------------
// Module services

_di_IOTAModule TIDEModel::GetModule(int index) {
    if (index < 0 || index >= GetModuleCount()) return nullptr;
    return _di_IOTAModule(modules_[static_cast<size_t>(index)].get());
}

_di_IOTAModule TIDEModel::CurrentModule() {
    return _di_IOTAModule(current_);
}

_di_IOTAModule TIDEModel::FindModule(const std::string& fileName) {
    for (auto& m : modules_)
        if (SameText(m->GetFileName(), fileName)) return _di_IOTAModule(m.get());
    return nullptr;
}

TModelModule* TIDEModel::FindOpenModule(const std::string& fileName) const {
    for (auto& m : modules_) {
        if (SameText(m->GetFileName(), fileName)) return m.get();
        for (int i = 0; i < m->GetModuleFileCount(); ++i)
            if (SameText(m->GetModuleFileEditor(i)->GetFileName(), fileName)) return m.get();
    }
    return nullptr;
}

bool TIDEModel::CloseAll() {
    // Units first, then projects, then groups, as the IDE closes them.
    auto rank = [](TModelModule* m) {
        if (dynamic_cast<TGroupModule*>(m)) return 2;
        if (dynamic_cast<TProjectModule*>(m)) return 1;
        return 0;
    };
    for (int r = 0; r <= 2; ++r) {
        std::vector<DelphiInterface<TModelModule>> these;
        for (auto& m : modules_)
            if (rank(m.get()) == r) these.push_back(m);
        for (auto it = these.rbegin(); it != these.rend(); ++it)
            if ((*it)->IsOpen() && !CloseModule(it->get(), true)) return false;
    }
    return true;
}

bool TIDEModel::SaveAll() {
    for (auto& m : modules_)
        m->Save(false, false);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Editor services and views

_di_IOTAEditView TIDEModel::GetTopView() {
    if (viewOrder_.empty()) return nullptr;
    return _di_IOTAEditView(viewOrder_.back());
}

_di_IOTAEditBuffer TIDEModel::GetTopBuffer() {
    if (viewOrder_.empty()) return nullptr;
    return viewOrder_.back()->GetBuffer();
}

TEditWindow* TIDEModel::NewEditWindow() {
    windows_.push_back(MakeInterfaced<TEditWindow>());
    return windows_.back().get();
}

TEditView* TIDEModel::OpenView(TSourceEditor* buffer, TEditWindow* window) {
    TEditView* view = buffer->AddView(window ? window : MainEditWindow());
    BringToFront(view);
    return view;
}

void TIDEModel::BringToFront(TEditView* view) {
    viewOrder_.erase(std::remove(viewOrder_.begin(), viewOrder_.end(), view), viewOrder_.end());
    viewOrder_.push_back(view);
}

void TIDEModel::ViewRemoved(TEditView* view) {
    viewOrder_.erase(std::remove(viewOrder_.begin(), viewOrder_.end(), view), viewOrder_.end());
}

void TIDEModel::ShowSourceEditor(TSourceEditor* editor) {
    TEditView* view = editor->View(0);
    if (!view) view = editor->AddView(MainEditWindow());
    // The view of this buffer that stands highest stays on top.
    for (auto it = viewOrder_.rbegin(); it != viewOrder_.rend(); ++it)
        if (&(*it)->Buffer() == editor) {
            view = *it;
            break;
        }
    BringToFront(view);
    ShowEditor(editor->Module(), editor);
}

void TIDEModel::ShowFormEditor(TFormEditor* editor) {
    ShowEditor(editor->Module(), editor);
    editor->Activate();
}

void TIDEModel::ShowEditor(TModelModule* module, IOTAEditor* editor) {
    if (!module) return;
    MakeCurrent(module, editor);
    if (Events.EditorShown) Events.EditorShown(editor);
}

void TIDEModel::MakeCurrent(TModelModule* module, IOTAEditor* editor) {
    if (!module) return;
    current_ = module;
    module->SetCurrentEditor(editor);
}

// ---------------------------------------------------------------------------------------------
// IDE notifiers

int TIDEModel::AddNotifier(const _di_IOTAIDENotifier& notifier) {
    if (!notifier) return -1;
    ideNotifiers_[nextNotifier_] = notifier;
    return nextNotifier_++;
}

void TIDEModel::RemoveNotifier(int index) {
    ideNotifiers_.erase(index);
}

bool TIDEModel::FireFileNotification(TOTAFileNotification code, const std::string& fileName) {
    bool cancel = false;
    auto notifiers = ideNotifiers_; // a notifier may remove itself
    for (auto& [i, n] : notifiers)
        n->FileNotification(code, fileName, cancel);
    return !cancel;
}

std::string TIDEModel::GetActiveDesignerType() {
    // The current module's designer; with another module current, the platform's own forms as
    // long as any designer is up; none without a form open.
    if (TFormEditor* f = current_ ? current_->FormEditor() : nullptr)
        return SameText(ExtractFileExt(f->GetFileName()), ".xfm") ? "xfm" : "dfm";
    for (const auto& m : modules_)
        if (m->FormEditor()) return "dfm";
    return "";
}

// ---------------------------------------------------------------------------------------------
// Opening and closing

int TIDEModel::Ask(const std::string& caption, const std::string& text) {
    return question_ ? question_(caption, text) : mrCancel;
}

void TIDEModel::Register(const DelphiInterface<TModelModule>& module) {
    modules_.push_back(module);
    if (!current_) current_ = module.get();
    FireFileNotification(ofnFileOpened, module->GetFileName());
    if (Events.ModulesChanged) Events.ModulesChanged();
}

DelphiInterface<TModelModule> TIDEModel::CreateUnitModule(const std::string& fileName) {
    auto module = MakeInterfaced<TModelModule>(this, fileName);
    try {
        auto source = MakeInterfaced<TSourceEditor>(this, module.get(), fileName);
        source->LoadFromFile();
        module->AddEditor(_di_IOTAEditor(source.get()));
        if (SameText(ExtractFileExt(fileName), ".cpp")) {
            std::string header = FindCompanionFile(fileName, ".h");
            if (!header.empty()) {
                auto h = MakeInterfaced<TSourceEditor>(this, module.get(), header);
                h->LoadFromFile();
                module->AddEditor(_di_IOTAEditor(h.get()));
            }
        }
        std::string ext = LowerCase(ExtractFileExt(fileName));
        if (ext == ".pas" || ext == ".cpp") {
            std::string form = FindCompanionFile(fileName, ".dfm");
            if (form.empty()) form = FindCompanionFile(fileName, ".xfm");
            if (!form.empty()) {
                auto f = MakeInterfaced<TFormEditor>(this, module.get(), form);
                f->LoadFromFile();
                module->AddEditor(_di_IOTAEditor(f.get()));
            }
        }
    } catch (...) {
        module->Detach();
        throw;
    }
    return module;
}

DelphiInterface<TModelModule> TIDEModel::OpenModuleFile(const std::string& fileName,
                                                        TOpenMode mode) {
    std::string path = ResolvePath("", fileName);
    std::string ext = LowerCase(ExtractFileExt(path));
    if (ext == ".dfm" || ext == ".xfm") {
        std::string unit = FindCompanionFile(path, ".pas");
        if (unit.empty()) unit = FindCompanionFile(path, ".cpp");
        if (!unit.empty()) path = unit;
    }
    if (TModelModule* open = FindOpenModule(path)) {
        if (mode == TOpenMode::Show) {
            // The editor of the file asked for comes up, else the module's current one.
            _di_IOTAEditor shown;
            for (int i = 0; i < open->GetModuleFileCount() && !shown; ++i)
                if (SameText(open->GetModuleFileEditor(i)->GetFileName(), path))
                    shown = open->GetModuleFileEditor(i);
            if (shown)
                shown->Show();
            else
                open->Show();
        }
        return DelphiInterface<TModelModule>(open);
    }
    // A project's resource file belongs to its project module; compiled packages and object
    // files have no module to open.
    if (ext == ".res") {
        for (TProjectModule* p : Projects())
            if (SameText(p->Description().ResFile, path)) return DelphiInterface<TModelModule>(p);
        return nullptr;
    }
    if (ext == ".dcp" || ext == ".bpi" || ext == ".obj" || ext == ".lib") return nullptr;
    if (ext == ".dpr" || ext == ".dpk" || ext == ".bpr" || ext == ".bpk" || ext == ".bpg")
        return DelphiInterface<TModelModule>(
            dynamic_cast<TModelModule*>(Query<IOTAModule>(OpenProjectFile(path)).get()));
    if (!FileExists(path)) throw rtl::EFOpenError("File \"" + path + "\" not found");
    if (!FireFileNotification(ofnFileOpening, path)) return nullptr;
    DelphiInterface<TModelModule> module = CreateUnitModule(path);
    Register(module);
    if (mode != TOpenMode::Hidden) {
        TSourceEditor* source = module->SourceEditor();
        TEditView* view = source->AddView(MainEditWindow());
        if (mode == TOpenMode::Show)
            source->Show();
        else
            viewOrder_.insert(viewOrder_.begin(), view);
    }
    return module;
}

DelphiInterface<TProjectModule> TIDEModel::OpenProjectModule(const std::string& fileName) {
    if (TModelModule* open = FindOpenModule(fileName))
        if (auto* p = dynamic_cast<TProjectModule*>(open))
            return DelphiInterface<TProjectModule>(p);
    TProjectDescription d = LoadProject(fileName);
    if (!FireFileNotification(ofnFileOpening, fileName)) return nullptr;
    auto project = MakeInterfaced<TProjectModule>(this, d);
    if (!d.SourceFile.empty() && FileExists(d.SourceFile)) {
        auto source = MakeInterfaced<TSourceEditor>(this, project.get(), d.SourceFile);
        source->LoadFromFile();
        project->AddEditor(_di_IOTAEditor(source.get()));
    }
    if (!SameText(d.SourceFile, fileName)) { // a C++Builder project: its options file too
        auto options = MakeInterfaced<TSourceEditor>(this, project.get(), fileName);
        options->LoadFromFile();
        project->AddEditor(_di_IOTAEditor(options.get()));
    }
    if (!d.ResFile.empty())
        project->AddEditor(
            _di_IOTAEditor(MakeInterfaced<TProjectResource>(this, project.get(), d.ResFile).get()));
    Register(project);
    return project;
}

_di_IOTAModule TIDEModel::OpenProjectFile(const std::string& path) {
    std::string file = ResolvePath("", path);
    if (DirectoryExists(file)) {
        std::vector<std::string> groups, projects, units;
        for (const auto& entry : fs::directory_iterator(file)) {
            if (!entry.is_regular_file()) continue;
            std::string name = entry.path().string();
            std::string ext = LowerCase(ExtractFileExt(name));
            if (ext == ".bpg")
                groups.push_back(name);
            else if (ext == ".dpr" || ext == ".bpr" || ext == ".dpk" || ext == ".bpk")
                projects.push_back(name);
            else if (ext == ".pas" || ext == ".cpp")
                units.push_back(name);
        }
        std::sort(groups.begin(), groups.end());
        std::sort(projects.begin(), projects.end());
        std::sort(units.begin(), units.end());
        if (!groups.empty()) return OpenProjectFile(groups.front());
        _di_IOTAModule first;
        for (const auto& p : projects) {
            _di_IOTAModule m(OpenProjectModule(p).get());
            if (!first) first = m;
        }
        if (first) return first;
        // Units alone: a project of the directory's units.
        TProjectDescription d;
        d.FileName = file;
        for (const auto& u : units)
            d.Entries.push_back(
                TProjectEntry{ExtractFileName(ChangeFileExt(u, "")), u, "", "", false});
        if (!FireFileNotification(ofnFileOpening, file)) return nullptr;
        auto project = MakeInterfaced<TProjectModule>(this, d);
        Register(project);
        return _di_IOTAModule(project.get());
    }
    if (SameText(ExtractFileExt(file), ".bpg")) {
        if (TModelModule* open = FindOpenModule(file)) return _di_IOTAModule(open);
        std::vector<std::string> projects;
        try {
            projects = ParseProjectGroup(file, ReadFileBytes(file));
        } catch (const rtl::EFOpenError& e) {
            throw EProjectFileError(e.Message());
        }
        if (!FireFileNotification(ofnFileOpening, file)) return nullptr;
        auto group = MakeInterfaced<TGroupModule>(this, file);
        auto source = MakeInterfaced<TSourceEditor>(this, group.get(), file);
        source->LoadFromFile();
        group->AddEditor(_di_IOTAEditor(source.get()));
        Register(group);
        for (const auto& p : projects) {
            if (!FileExists(p)) continue; // the IDE names a missing project and goes on
            if (auto project = OpenProjectModule(p)) group->AddProject(project.get());
        }
        return _di_IOTAModule(group.get());
    }
    return _di_IOTAModule(OpenProjectModule(file).get());
}

bool TIDEModel::CloseModule(TModelModule* module, bool ask) {
    if (!module || !module->IsOpen()) return true;
    DelphiInterface<TModelModule> keep(module);
    if (auto* group = dynamic_cast<TGroupModule*>(module)) {
        // A group closes with its projects.
        while (group->GetProjectCount() > 0) {
            auto* p = dynamic_cast<TProjectModule*>(
                group->GetProject(group->GetProjectCount() - 1).get());
            if (!CloseModule(p, ask)) return false;
        }
    }
    if (ask && module->AnyModified()) {
        int answer =
            Ask("Confirm", "Save changes to " + ExtractFileName(module->GetFileName()) + "?");
        if (answer == mrYes)
            module->Save(false, false);
        else if (answer != mrNo)
            return false;
    }
    if (!FireFileNotification(ofnFileClosing, module->GetFileName())) return false;
    modules_.erase(std::remove_if(modules_.begin(), modules_.end(),
                                  [&](const auto& m) { return m.get() == module; }),
                   modules_.end());
    module->Detach();
    if (current_ == module) {
        current_ = nullptr;
        if (!viewOrder_.empty() && viewOrder_.back()->Attached())
            current_ = viewOrder_.back()->Buffer().Module();
        if (!current_ && !modules_.empty()) current_ = modules_.back().get();
    }
    if (Events.ModulesChanged) Events.ModulesChanged();
    return true;
}

std::vector<TProjectModule*> TIDEModel::Projects() const {
    std::vector<TProjectModule*> result;
    for (auto& m : modules_)
        if (auto* p = dynamic_cast<TProjectModule*>(m.get())) result.push_back(p);
    return result;
}

TProjectModule* TIDEModel::ProjectOf(const std::string& fileName) const {
    for (TProjectModule* p : Projects())
        if (p->HoldsFile(fileName)) return p;
    return nullptr;
}

// ---------------------------------------------------------------------------------------------
// Action services

bool TIDEModel::OpenFile(const std::string& fileName) {
    try {
        return static_cast<bool>(OpenModuleFile(fileName, TOpenMode::Show));
    } catch (const rtl::Exception&) {
        return false;
    }
}

bool TIDEModel::OpenProject(const std::string& projName, bool newProjGroup) {
    try {
        if (newProjGroup && !CloseAll()) return false;
        return static_cast<bool>(OpenProjectFile(projName));
    } catch (const rtl::Exception&) {
        return false;
    }
}

bool TIDEModel::CloseFile(const std::string& fileName) {
    TModelModule* m = FindOpenModule(ResolvePath("", fileName));
    return m && CloseModule(m, true);
}

bool TIDEModel::SaveFile(const std::string& fileName) {
    TModelModule* m = FindOpenModule(ResolvePath("", fileName));
    if (!m) return false;
    try {
        return m->Save(false, true);
    } catch (const rtl::Exception&) {
        return false;
    }
}

QIcon TIDEModel::GetImage(int index) {
    return index >= 0 && index < images_.size() ? images_[index] : QIcon();
}

QToolBar* TIDEModel::GetToolBar(const std::string& toolBarName) {
    auto it = toolBars_.find(toolBarName);
    return it == toolBars_.end() ? nullptr : it->second;
}

// ---------------------------------------------------------------------------------------------
// Keyboard

// What a binding sees of the keyboard services while it binds its keys.
class TKeyBindingCollector : public TInterfacedObject, public virtual IOTAKeyBindingServices {
public:
    explicit TKeyBindingCollector(std::vector<TIDEModel::TKeyBinding>& keys) : keys_(keys) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAKeyBindingServices>(this, iid, obj);
    }
    bool AddKeyBinding(const std::vector<TShortCut>& keys, TKeyBindingProc proc, void* context,
                       int flags, const std::string& keyboard,
                       const std::string& menuItemName) override {
        if (keys.empty() || !proc ||
            std::any_of(keys.begin(), keys.end(), [](TShortCut k) { return k == 0; }))
            return false;
        keys_.push_back(TIDEModel::TKeyBinding{keys, std::move(proc), context});
        return true;
    }

private:
    std::vector<TIDEModel::TKeyBinding>& keys_;
};

class TKeyContext : public TInterfacedObject, public virtual IOTAKeyContext {
public:
    TKeyContext(void* context, _di_IOTAEditBuffer buffer, _di_IOTAKeyboardServices services)
        : context_(context), buffer_(std::move(buffer)), services_(std::move(services)) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAKeyContext>(this, iid, obj);
    }
    void* GetContext() override { return context_; }
    _di_IOTAEditBuffer GetEditBuffer() override { return buffer_; }
    _di_IOTAKeyboardServices GetKeyboardServices() override { return services_; }

private:
    void* context_;
    _di_IOTAEditBuffer buffer_;
    _di_IOTAKeyboardServices services_;
};

int TIDEModel::AddKeyboardBinding(const _di_IOTAKeyboardBinding& binding) {
    if (!binding) return -1;
    TBindingRecord record;
    record.Binding = binding;
    record.Name = binding->GetName();
    // A binding's name is its identity at the keyboard services.
    for (auto& [i, r] : bindings_)
        if (SameText(r.Name, record.Name)) return -1;
    auto collector = MakeInterfaced<TKeyBindingCollector>(record.Keys);
    binding->BindKeyboard(_di_IOTAKeyBindingServices(collector.get()));
    if (record.Keys.empty()) return -1;
    int index = nextBinding_++;
    bindings_[index] = std::move(record);
    return index;
}

void TIDEModel::RemoveKeyboardBinding(int index) {
    bindings_.erase(index);
}

bool TIDEModel::IsBoundKey(TShortCut key) const {
    if (key == 0) return false;
    for (const auto& [index, record] : bindings_)
        for (const TKeyBinding& k : record.Keys)
            if (k.Keys.size() == 1 && k.Keys.front() == key) return true;
    return false;
}

TKeyBindingResult TIDEModel::DispatchKey(TShortCut key) {
    auto bindings = bindings_; // a handler may remove bindings
    for (auto it = bindings.rbegin(); it != bindings.rend(); ++it) {
        for (auto& k : it->second.Keys) {
            if (k.Keys.size() != 1 || k.Keys.front() != key) continue;
            TKeyBindingResult result = krUnhandled;
            _di_IOTAKeyContext context(MakeInterfaced<TKeyContext>(k.Context, GetTopBuffer(),
                                                                   _di_IOTAKeyboardServices(this))
                                           .get());
            k.Proc(context, key, result);
            if (result != krNextProc) return result;
        }
    }
    return krUnhandled;
}

} // namespace workbench
