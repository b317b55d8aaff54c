// Form editors, their components, and the project resource editor.
#include "workbench/model/Files.h"
#include "workbench/model/LibraryClasses.h"
#include "workbench/model/Model.h"

#include <algorithm>
#include <cctype>

namespace workbench {

// ---------------------------------------------------------------------------------------------
// TFormEditor

TFormEditor::TFormEditor(TIDEModel* model, TModelModule* module, std::string fileName)
    : model_(model), module_(module), fileName_(std::move(fileName)) {}

int TFormEditor::AddNotifier(const _di_IOTANotifier& notifier) {
    if (!notifier) return -1;
    notifiers_[nextNotifier_] = notifier;
    return nextNotifier_++;
}

void TFormEditor::RemoveNotifier(int index) {
    notifiers_.erase(index);
}

template <class F> void TFormEditor::ForEachFormNotifier(F f) {
    // A copy: a notifier may remove itself or others while it is told.
    auto notifiers = notifiers_;
    for (auto& [i, n] : notifiers) {
        _di_IOTAFormNotifier fn;
        if (Supports(n, fn)) f(fn);
    }
}

void TFormEditor::MarkModified() {
    modified_ = true;
    auto notifiers = notifiers_;
    for (auto& [i, n] : notifiers)
        n->Modified();
}

void TFormEditor::Show() {
    if (model_ && module_) model_->ShowFormEditor(this);
}

_di_IOTAModule TFormEditor::GetModule() {
    return _di_IOTAModule(module_);
}

// The parent of a class: the component library's, else what the module's own unit declares,
// else what another unit of a project holding the module declares.
std::string TFormEditor::ClassParent(const std::string& className) {
    // A class of the library has no other parent, the root classes none at all.
    if (!module_ || IsLibraryClass(className)) return LibraryClassParent(className);
    std::string parent;
    std::string unit = module_->GetFileName();
    bool cpp = SameText(ExtractFileExt(unit), ".cpp");
    std::string declaring = cpp ? FindCompanionFile(unit, ".h") : unit;
    if (!declaring.empty()) {
        if (TSourceEditor* s = module_->SourceEditor(); s && SameText(s->GetFileName(), declaring))
            parent = FindParentClass(s->Text(), className, cpp);
        else if (FileExists(declaring))
            parent = FindParentClass(ReadFileBytes(declaring), className, cpp);
    }
    if (parent.empty() && model_)
        for (TProjectModule* p : model_->Projects())
            if (p->HoldsFile(unit) && !(parent = p->FindUnitClassParent(className)).empty()) break;
    return parent;
}

void TFormEditor::CompleteAncestry(TDesignComponent* component) {
    component->Ancestors.clear();
    std::string cls = component->ClassName;
    for (int depth = 0; depth < 64; ++depth) { // a cycle in damaged sources ends here
        std::string parent = ClassParent(cls);
        if (parent.empty() || SameText(parent, cls)) break;
        component->Ancestors.push_back(parent);
        cls = parent;
    }
    for (int i = 0; i < component->ChildCount(); ++i)
        CompleteAncestry(component->Child(i));
}

void TFormEditor::LoadFromFile() {
    form_ = LoadFormFile(fileName_);
    selection_.clear();
    modified_ = false;
    CompleteAncestry(form_.Root.get());
    // A data module is shown in a designer window of its own, which owns it.
    designWindow_.reset();
    if (form_.Root->InheritsFrom("TDataModule")) {
        designWindow_ = std::make_unique<TDesignComponent>();
        designWindow_->ClassName = "TDataModuleForm";
        designWindow_->Ancestors = {"TForm",       "TCustomForm", "TScrollingWinControl",
                                    "TWinControl", "TControl",    "TComponent",
                                    "TPersistent", "TObject"};
        form_.Root->Owner = designWindow_.get();
    }
}

void TFormEditor::SaveToFile() {
    if (!form_.Root) return;
    ForEachFormNotifier([](const _di_IOTAFormNotifier& n) { n->FormSaving(); });
    for (auto& [i, n] : notifiers_)
        n->BeforeSave();
    WriteFileBytes(fileName_, WriteFormFile(form_));
    modified_ = false;
    for (auto& [i, n] : notifiers_)
        n->AfterSave();
}

bool TFormEditor::Contains(const TDesignComponent* component) const {
    if (!component || !form_.Root) return false;
    if (component == form_.Root.get()) return true;
    auto all = form_.Root->AllComponents();
    return std::find(all.begin(), all.end(), component) != all.end();
}

_di_IOTAComponent TFormEditor::Wrap(TDesignComponent* component) {
    if (!component) return nullptr;
    return MakeInterfaced<TComponentRef>(this, component);
}

_di_IOTAComponent TFormEditor::GetRootComponent() {
    return Wrap(form_.Root.get());
}

_di_IOTAComponent TFormEditor::FindComponent(const std::string& name) {
    if (!form_.Root) return nullptr;
    if (SameText(form_.Root->Name, name)) return GetRootComponent();
    return Wrap(form_.Root->FindComponent(name));
}

_di_IOTAComponent TFormEditor::GetComponentFromHandle(TOTAHandle handle) {
    auto* c = static_cast<TDesignComponent*>(const_cast<void*>(handle));
    // A handle is only looked at once it is known to belong to this form.
    if (!handle || !form_.Root) return nullptr;
    if (handle == form_.Root.get()) return GetRootComponent();
    for (TDesignComponent* x : form_.Root->AllComponents())
        if (x == handle) return Wrap(c);
    return nullptr;
}

_di_IOTAComponent TFormEditor::GetSelComponent(int index) {
    if (index < 0 || index >= GetSelCount()) return nullptr;
    return Wrap(selection_[static_cast<size_t>(index)]);
}

_di_IDesigner TFormEditor::GetFormDesigner() {
    if (!form_.Root) return nullptr;
    return MakeInterfaced<TDesigner>(this);
}

void TFormEditor::Select(TDesignComponent* component, bool addToSelection) {
    if (!Contains(component)) return;
    if (!addToSelection) selection_.clear();
    if (std::find(selection_.begin(), selection_.end(), component) == selection_.end())
        selection_.push_back(component);
    // A copy: a listener may remove itself while it is told.
    auto listeners = selectionListeners_;
    for (auto& [i, listener] : listeners)
        if (listener) listener();
    if (model_ && model_->Events.SelectionChanged) model_->Events.SelectionChanged(this);
}

int TFormEditor::AddSelectionListener(std::function<void()> listener) {
    selectionListeners_[nextSelectionListener_] = std::move(listener);
    return nextSelectionListener_++;
}

void TFormEditor::RemoveSelectionListener(int index) {
    selectionListeners_.erase(index);
}

namespace {
bool IsIdentifier(const std::string& s) {
    if (s.empty() || s.size() > 63 ||
        !(std::isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_'))
        return false;
    return std::all_of(s.begin(), s.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
    });
}
} // namespace

void TFormEditor::RenameComponent(TDesignComponent* component, const std::string& newName) {
    if (!Contains(component)) throw EModelError("The component is not on this form");
    if (!IsIdentifier(newName))
        throw EModelError("\"" + newName + "\" is not a valid component name");
    if (SameText(component->Name, newName)) {
        component->Name = newName;
        return;
    }
    if ((SameText(form_.Root->Name, newName)) || form_.Root->FindComponent(newName))
        throw EModelError("A component named " + newName + " already exists");
    std::string oldName = component->Name;
    component->Name = newName;
    MarkModified();
    ForEachFormNotifier(
        [&](const _di_IOTAFormNotifier& n) { n->ComponentRenamed(component, oldName, newName); });
}

void TFormEditor::Detach() {
    if (!module_ && !model_) return;
    module_ = nullptr;
    model_ = nullptr;
    auto notifiers = notifiers_;
    for (auto& [i, n] : notifiers)
        n->Destroyed();
}

void TFormEditor::Activate() {
    if (model_ && module_) model_->MakeCurrent(module_, this);
    ForEachFormNotifier([](const _di_IOTAFormNotifier& n) { n->FormActivated(); });
}

// ---------------------------------------------------------------------------------------------
// TComponentRef

_di_IOTAComponent TComponentRef::GetParent() {
    return editor_->Wrap(component_->Parent());
}

std::vector<std::string> TComponentRef::PropNames() const {
    std::vector<std::string> names;
    for (const TDesignProperty& p : component_->Properties)
        names.push_back(p.Name);
    for (const TLibraryProperty& p : PublishedProperties(*component_))
        if (!component_->FindProperty(p.Name)) names.push_back(p.Name);
    return names;
}

std::string TComponentRef::GetPropName(int index) {
    auto names = PropNames();
    if (index < 0 || index >= static_cast<int>(names.size())) return {};
    return names[static_cast<size_t>(index)];
}

bool TComponentRef::GetPropValueByName(const std::string& name, std::string& value) {
    if (SameText(name, "Name")) {
        value = component_->Name;
        return true;
    }
    if (const TDesignProperty* p = component_->FindProperty(name)) {
        value = p->Text;
        return true;
    }
    if (const TLibraryProperty* p = FindPublishedProperty(*component_, name)) {
        value = UnstoredDesignProperty(*component_, *p).Text;
        return true;
    }
    return false;
}

namespace {
// Where a property the component did not store goes among those it stores: before the first
// one the class publishes after it, as the form file would have had it. A form writes its
// PixelsPerInch and TextHeight after all its published properties, events included.
size_t PlaceOfNewProperty(const TDesignComponent& component, const std::string& name) {
    const auto& published = PublishedProperties(component);
    const int afterAll = static_cast<int>(published.size());
    auto rank = [&](std::string_view propName) -> int {
        // A nested property ("Font.Name") is where its object is.
        propName = propName.substr(0, propName.find('.'));
        if (SameText(propName, "PixelsPerInch") || SameText(propName, "TextHeight"))
            return afterAll;
        for (size_t i = 0; i < published.size(); ++i)
            if (SameText(published[i].Name, propName)) return static_cast<int>(i);
        return -1; // written by the class itself among the others: no guide to the order
    };
    int own = rank(name);
    if (own >= 0)
        for (size_t i = 0; i < component.Properties.size(); ++i)
            if (rank(component.Properties[i].Name) > own) return i;
    return component.Properties.size();
}
} // namespace

bool TComponentRef::SetPropByName(const std::string& name, const std::string& value) {
    if (SameText(name, "Name")) {
        editor_->RenameComponent(component_, value);
        return true;
    }
    TDesignProperty p;
    try {
        p = ParseDesignProperty(name, value);
        if (p.Kind == TDesignValueKind::Integer) {
            auto [stored, size] = FormSizeToStore(*component_, name, p.Int);
            if (stored != name) p = ParseDesignProperty(stored, std::to_string(size));
        }
    } catch (const EFormFileError&) {
        return false;
    }
    // A published property takes only values of its type.
    const TLibraryProperty* published = FindPublishedProperty(*component_, p.Name);
    if (published && !FitLibraryValue(*published, p)) return false;
    if (const TDesignProperty* old = component_->FindProperty(p.Name)) {
        p.Name = old->Name;
        component_->SetProperty(std::move(p));
    } else {
        if (published) p.Name = published->Name;
        auto& props = component_->Properties;
        props.insert(props.begin() +
                         static_cast<std::ptrdiff_t>(PlaceOfNewProperty(*component_, p.Name)),
                     std::move(p));
    }
    editor_->MarkModified();
    return true;
}

std::vector<TDesignComponent*> TComponentRef::Controls() const {
    std::vector<TDesignComponent*> result;
    for (int i = 0; i < component_->ChildCount(); ++i)
        if (component_->Child(i)->IsControl()) result.push_back(component_->Child(i));
    return result;
}

int TComponentRef::GetControlCount() {
    return static_cast<int>(Controls().size());
}

_di_IOTAComponent TComponentRef::GetControl(int index) {
    auto controls = Controls();
    if (index < 0 || index >= static_cast<int>(controls.size())) return nullptr;
    return editor_->Wrap(controls[static_cast<size_t>(index)]);
}

// The root owns every component of its form; the others own none.
int TComponentRef::GetComponentCount() {
    return component_ == editor_->Root() ? static_cast<int>(component_->AllComponents().size()) : 0;
}

_di_IOTAComponent TComponentRef::GetComponent(int index) {
    if (component_ != editor_->Root()) return nullptr;
    auto all = component_->AllComponents();
    if (index < 0 || index >= static_cast<int>(all.size())) return nullptr;
    return editor_->Wrap(all[static_cast<size_t>(index)]);
}

bool TComponentRef::Select(bool addToSelection) {
    if (!editor_->Contains(component_)) return false;
    editor_->Select(component_, addToSelection);
    return true;
}

bool TComponentRef::Focus(bool addToSelection) {
    if (!Select(addToSelection)) return false;
    editor_->Show();
    return true;
}

// ---------------------------------------------------------------------------------------------
// TProjectResource

std::vector<std::string> ReadResourceEntries(std::string_view bytes, const std::string& fileName) {
    auto fail = [&](const std::string& what) -> std::vector<std::string> {
        throw EModelError("Resource file \"" + fileName + "\" is damaged: " + what);
    };
    auto u32 = [&](size_t p) {
        return uint32_t(uint8_t(bytes[p])) | uint32_t(uint8_t(bytes[p + 1])) << 8 |
               uint32_t(uint8_t(bytes[p + 2])) << 16 | uint32_t(uint8_t(bytes[p + 3])) << 24;
    };
    auto u16 = [&](size_t p) { return uint16_t(uint8_t(bytes[p]) | uint8_t(bytes[p + 1]) << 8); };
    std::vector<std::string> entries;
    size_t pos = 0;
    while (pos < bytes.size()) {
        if (bytes.size() - pos < 32)
            return fail("a header is cut short at offset " + std::to_string(pos));
        uint32_t dataSize = u32(pos), headerSize = u32(pos + 4);
        if (headerSize < 24 || headerSize > bytes.size() - pos ||
            dataSize > bytes.size() - pos - headerSize)
            return fail("an entry runs past the end at offset " + std::to_string(pos));
        // Type and name: 0xFFFF and a number, or a zero-terminated UTF-16 name.
        size_t p = pos + 8, headerEnd = pos + headerSize;
        auto readId = [&](std::string& out) {
            if (p + 2 > headerEnd) return false;
            if (u16(p) == 0xFFFF) {
                if (p + 4 > headerEnd) return false;
                out = "#" + std::to_string(u16(p + 2));
                p += 4;
                return true;
            }
            while (p + 2 <= headerEnd && u16(p) != 0) {
                uint16_t ch = u16(p);
                out += ch < 128 ? char(ch) : '?';
                p += 2;
            }
            if (p + 2 > headerEnd) return false;
            p += 2;
            return true;
        };
        std::string type, name;
        if (!readId(type) || !readId(name)) return fail("an entry's name is cut short");
        // The leading empty entry marks a 32-bit resource file.
        if (!(dataSize == 0 && type == "#0" && name == "#0")) entries.push_back(type + "/" + name);
        pos += headerSize + dataSize;
        pos = (pos + 3) & ~size_t(3);
    }
    return entries;
}

TProjectResource::TProjectResource(TIDEModel* model, TModelModule* module, std::string fileName)
    : model_(model), module_(module), fileName_(std::move(fileName)) {
    entries_ = ReadResourceEntries(ReadFileBytes(fileName_), fileName_);
}

void TProjectResource::Show() {
    if (model_ && module_) model_->ShowEditor(module_, this);
}

_di_IOTAModule TProjectResource::GetModule() {
    return _di_IOTAModule(module_);
}

std::string TProjectResource::GetEntryName(int index) {
    if (index < 0 || index >= GetEntryCount()) return {};
    return entries_[static_cast<size_t>(index)];
}

} // namespace workbench
