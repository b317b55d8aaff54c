#include "rtl/Classes.h"

#include "rtl/SysUtils.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "rtl/Filer.h"

namespace rtl {

RTL_BEGIN_CLASS(TComponent)
    Property("Name", &TComponent::Name, &TComponent::SetName).Stored(false);
    Property("Tag", &TComponent::Tag).Default(0);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TCollectionItem)
RTL_IMPLEMENT_CLASS(TCollection)
RTL_IMPLEMENT_CLASS(TOwnedCollection)

namespace {

bool SameIdent(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'a' && x <= 'z') x = char(x - 32);
        if (y >= 'a' && y <= 'z') y = char(y - 32);
        if (x != y) return false;
    }
    return true;
}

[[noreturn]] void ListIndexError(int index) {
    throw EListError("List index out of bounds (" + std::to_string(index) + ")");
}

} // namespace

bool IsValidComponentName(std::string_view name) {
    auto alpha = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; };
    if (name.empty() || !alpha(name[0])) return false;
    return std::all_of(name.begin() + 1, name.end(),
                       [&](char c) { return alpha(c) || (c >= '0' && c <= '9'); });
}

// ---------------------------------------------------------------------------------------------
// TComponent

TComponent::TComponent(TComponent* owner) {
    if (owner) owner->InsertComponent(this);
}

TComponent::~TComponent() {
    Destroying();
    // Tell every component that asked to be told, then forget them.
    while (!freeNotifies_.empty()) {
        TComponent* other = freeNotifies_.back();
        freeNotifies_.pop_back();
        other->Notification(this, opRemove);
        other->RemoveNotification(this);
    }
    DestroyComponents();
    if (owner_) owner_->RemoveComponent(this);
}

void TComponent::Destroying() {
    if (state_.Contains(csDestroying)) return;
    state_.Include(csDestroying);
    for (TComponent* c : components_) c->Destroying();
}

void TComponent::DestroyComponents() {
    while (!components_.empty()) {
        TComponent* c = components_.back();
        Remove(c);
        delete c;
    }
}

TComponent* TComponent::Components(int index) const {
    if (index < 0 || index >= ComponentCount()) ListIndexError(index);
    return components_[static_cast<size_t>(index)];
}

int TComponent::ComponentIndex() const {
    if (!owner_) return -1;
    auto& list = owner_->components_;
    auto it = std::find(list.begin(), list.end(), this);
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}

void TComponent::SetComponentIndex(int index) {
    if (!owner_) return;
    auto& list = owner_->components_;
    int current = ComponentIndex();
    if (current < 0) return;
    index = std::clamp(index, 0, static_cast<int>(list.size()) - 1);
    list.erase(list.begin() + current);
    list.insert(list.begin() + index, this);
}

TComponent* TComponent::FindComponent(std::string_view name) const {
    if (name.empty()) return nullptr;
    for (TComponent* c : components_)
        if (SameIdent(c->name_, name)) return c;
    return nullptr;
}

void TComponent::SetName(const std::string& newName) {
    if (name_ == newName) return;
    if (!newName.empty() && !IsValidComponentName(newName))
        throw EComponentError("'" + newName + "' is not a valid component name");
    if (owner_) owner_->ValidateRename(this, name_, newName);
    else ValidateRename(nullptr, name_, newName);
    SetReference(false);
    ChangeName(newName);
    SetReference(true);
}

void TComponent::ValidateRename(TComponent* component, const std::string& curName,
                                const std::string& newName) {
    if (component && !SameIdent(curName, newName) && component->owner_ == this &&
        FindComponent(newName))
        throw EComponentError("A component named " + newName + " already exists");
}

void TComponent::InsertComponent(TComponent* component) {
    component->ValidateContainer(this);
    ValidateRename(component, "", component->name_);
    Insert(component);
    component->SetReference(true);
    if (state_.Contains(csDesigning)) component->SetDesigning(true);
    Notification(component, opInsert);
}

void TComponent::RemoveComponent(TComponent* component) {
    ValidateRename(component, component->name_, "");
    Notification(component, opRemove);
    component->SetReference(false);
    Remove(component);
}

void TComponent::Insert(TComponent* component) {
    components_.push_back(component);
    component->owner_ = this;
}

void TComponent::Remove(TComponent* component) {
    auto it = std::find(components_.begin(), components_.end(), component);
    if (it != components_.end()) components_.erase(it);
    component->owner_ = nullptr;
}

void TComponent::SetReference(bool enable) {
    if (!owner_ || name_.empty()) return;
    for (TClass c = owner_->ClassType(); c; c = c->Parent)
        for (const auto& f : c->Fields)
            if (SameIdent(f.Name, name_)) {
                f.Assign(owner_, enable ? this : nullptr);
                return;
            }
}

void TComponent::Notification(TComponent* component, TOperation operation) {
    if (operation == opRemove && component) RemoveFreeNotification(component);
    // A copy: a notified component may free others it owns.
    auto owned = components_;
    for (TComponent* c : owned)
        if (std::find(components_.begin(), components_.end(), c) != components_.end())
            c->Notification(component, operation);
}

void TComponent::FreeNotification(TComponent* component) {
    if (!component || component == this) return;
    if (owner_ && component->owner_ == owner_) return; // siblings are told by the owner anyway
    if (std::find(freeNotifies_.begin(), freeNotifies_.end(), component) == freeNotifies_.end()) {
        freeNotifies_.push_back(component);
        component->FreeNotification(this);
    }
    state_.Include(csFreeNotification);
}

void TComponent::RemoveFreeNotification(TComponent* component) {
    RemoveNotification(component);
    component->RemoveNotification(this);
}

void TComponent::RemoveNotification(TComponent* component) {
    auto it = std::find(freeNotifies_.begin(), freeNotifies_.end(), component);
    if (it != freeNotifies_.end()) freeNotifies_.erase(it);
    if (freeNotifies_.empty()) state_.Exclude(csFreeNotification);
}

void TComponent::SetDesigning(bool value, bool setChildren) {
    SetState(csDesigning, value);
    if (setChildren)
        for (TComponent* c : components_) c->SetDesigning(value, true);
}

void TComponent::SetInline(bool value) { SetState(csInline, value); }

void TComponent::SetSubComponent(bool value) {
    if (value) style_.Include(csSubComponent);
    else style_.Exclude(csSubComponent);
}

void TComponent::SetState(TComponentStateItem item, bool on) {
    if (on) state_.Include(item);
    else state_.Exclude(item);
}

void TComponent::SetAncestor(bool value) {
    SetState(csAncestor, value);
    for (TComponent* c : components_) c->SetAncestor(value);
}

void TComponent::Loaded() { state_.Exclude(csLoading); }

void TComponent::ReadState(TReader* reader) { reader->ReadData(this); }
void TComponent::WriteState(TWriter* writer) { writer->WriteData(this); }

std::string TComponent::GetNamePath() const { return name_; }

HRESULT TComponent::QueryInterface(const TGUID& iid, void** obj) {
    return GetInterface(iid, obj) ? S_OK : E_NOINTERFACE;
}

TComponent* CreateComponent(TClass cls, TComponent* owner) {
    if (!cls->InheritsFrom(TComponent::StaticClass()))
        throw EInvalidCast("Class " + cls->Name + " is not a component class");
    // Built without an owner and inserted once whole, so that the owner's Notification sees the
    // component as the class it is.
    std::unique_ptr<TComponent> c(static_cast<TComponent*>(CreateInstance(cls, nullptr)));
    if (owner) owner->InsertComponent(c.get());
    return c.release();
}

TComponent* FindNestedComponent(TComponent* root, std::string_view namePath) {
    if (namePath.empty() || !root) return nullptr;
    TComponent* current = root;
    while (!namePath.empty()) {
        size_t end = namePath.find_first_of(".-");
        std::string_view name = namePath.substr(0, end);
        if (end == std::string_view::npos) namePath = {};
        else if (namePath[end] == '-' && end + 1 < namePath.size() && namePath[end + 1] == '>')
            namePath.remove_prefix(end + 2);
        else namePath.remove_prefix(end + 1);
        TComponent* found = current->FindComponent(name);
        if (!found && SameIdent(name, "Owner")) found = current;
        if (!found) return nullptr;
        current = found;
    }
    return current;
}

// ---------------------------------------------------------------------------------------------
// TCollectionItem

TCollectionItem::TCollectionItem(TCollection* collection) {
    // While this base constructor runs the object is only a TCollectionItem to C++, so the check
    // of the item class would refuse every descendant: the item joins unchecked.
    if (collection) collection->InsertItem(this, false);
}

TCollectionItem::~TCollectionItem() { SetCollection(nullptr); }

void TCollectionItem::SetCollection(TCollection* value) {
    if (collection_ == value) return;
    if (collection_) collection_->RemoveItem(this);
    if (value) value->InsertItem(this);
}

int TCollectionItem::Index() const {
    if (!collection_) return -1;
    auto& items = collection_->items_;
    auto it = std::find(items.begin(), items.end(), this);
    return it == items.end() ? -1 : static_cast<int>(it - items.begin());
}

void TCollectionItem::SetIndex(int value) {
    if (collection_ && value != Index()) {
        collection_->MoveItem(this, value);
        Changed(true);
    }
}

void TCollectionItem::Changed(bool allItems) {
    if (collection_ && collection_->updateCount_ == 0)
        collection_->Update(allItems ? nullptr : this);
}

std::string TCollectionItem::GetNamePath() const {
    if (!collection_) return ClassName();
    return collection_->GetNamePath() + "[" + std::to_string(Index()) + "]";
}

TPersistent* TCollectionItem::GetOwner() const { return collection_; }

// ---------------------------------------------------------------------------------------------
// TCollection

TCollection::TCollection(TClass itemClass) : itemClass_(itemClass) {}

TCollection::~TCollection() {
    updateCount_ = 1; // no Update calls while the items go
    while (!items_.empty()) delete items_.back();
}

TCollectionItem* TCollection::Add() {
    // The item is built detached and joins the collection once it is whole, so that Notify and
    // Update see it as the class it is.
    std::unique_ptr<TObject> obj(CreateInstance(itemClass_, nullptr));
    auto* item = dynamic_cast<TCollectionItem*>(obj.get());
    if (!item)
        throw EInvalidCast("Class " + itemClass_->Name + " is not a collection item class");
    item->SetCollection(this);
    obj.release();
    return item;
}

TCollectionItem* TCollection::Insert(int index) {
    TCollectionItem* item = Add();
    item->SetIndex(index);
    return item;
}

void TCollection::Delete(int index) {
    TCollectionItem* item = GetItem(index);
    Notify(item, cnDeleting);
    delete item;
}

void TCollection::Clear() {
    if (items_.empty()) return;
    BeginUpdate();
    try {
        while (!items_.empty()) delete items_.back();
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

void TCollection::EndUpdate() {
    if (updateCount_ > 0) --updateCount_;
    Changed();
}

void TCollection::Changed() {
    if (updateCount_ == 0) Update(nullptr);
}

TCollectionItem* TCollection::FindItemID(int32_t id) const {
    for (TCollectionItem* item : items_)
        if (item->id_ == id) return item;
    return nullptr;
}

TCollectionItem* TCollection::GetItem(int index) const {
    if (index < 0 || index >= Count()) ListIndexError(index);
    return items_[static_cast<size_t>(index)];
}

void TCollection::SetItem(int index, TCollectionItem* value) { GetItem(index)->Assign(value); }

void TCollection::InsertItem(TCollectionItem* item, bool checkClass) {
    if (checkClass && !item->InheritsFrom(itemClass_))
        throw EInvalidCast("Invalid class typecast: " + item->ClassName() + " is not " +
                           itemClass_->Name);
    items_.push_back(item);
    item->collection_ = this;
    item->id_ = nextID_++;
    Notify(item, cnAdded);
    Changed();
}

void TCollection::RemoveItem(TCollectionItem* item) {
    Notify(item, cnExtracting);
    auto it = std::find(items_.begin(), items_.end(), item);
    if (it != items_.end()) items_.erase(it);
    item->collection_ = nullptr;
    Changed();
}

void TCollection::MoveItem(TCollectionItem* item, int newIndex) {
    auto it = std::find(items_.begin(), items_.end(), item);
    if (it == items_.end()) return;
    if (newIndex < 0 || newIndex >= Count()) ListIndexError(newIndex);
    items_.erase(it);
    items_.insert(items_.begin() + newIndex, item);
}

void TCollection::Assign(TPersistent* source) {
    if (auto* src = dynamic_cast<TCollection*>(source)) {
        BeginUpdate();
        try {
            Clear();
            for (TCollectionItem* item : src->items_) Add()->Assign(item);
        } catch (...) {
            EndUpdate();
            throw;
        }
        EndUpdate();
        return;
    }
    TPersistent::Assign(source);
}

std::string TCollection::PropName() const {
    if (!propName_.empty()) return propName_;
    TPersistent* owner = GetOwner();
    if (!owner) return {};
    for (PPropInfo p : GetPropInfos(owner->ClassType()))
        if (p->PropType->Kind == tkClass && p->GetProc && GetObjectProp(owner, p) == this) {
            propName_ = p->Name;
            break;
        }
    return propName_;
}

std::string TCollection::GetNamePath() const {
    std::string result = ClassName();
    TPersistent* owner = GetOwner();
    if (!owner) return result;
    std::string ownerPath = owner->GetNamePath();
    if (ownerPath.empty()) return result;
    std::string prop = PropName();
    if (prop.empty()) return result;
    return ownerPath + "." + prop;
}

// ---------------------------------------------------------------------------------------------
// Integer identifiers

bool IdentToInt(std::string_view ident, int32_t& value, std::span<const TIdentMapEntry> map) {
    for (const auto& e : map)
        if (SameIdent(e.Name, ident)) {
            value = e.Value;
            return true;
        }
    return false;
}

bool IntToIdent(int32_t value, std::string& ident, std::span<const TIdentMapEntry> map) {
    for (const auto& e : map)
        if (e.Value == value) {
            ident = e.Name;
            return true;
        }
    return false;
}

namespace {
struct IntConstEntry {
    TIdentToInt identToInt;
    TIntToIdent intToIdent;
};
struct IntConstRegistry {
    std::mutex lock;
    std::map<PTypeInfo, IntConstEntry> byType;
};
IntConstRegistry& IntConsts() {
    static IntConstRegistry r;
    return r;
}
} // namespace

void RegisterIntegerConsts(PTypeInfo intType, TIdentToInt identToInt, TIntToIdent intToIdent) {
    auto& r = IntConsts();
    std::lock_guard g(r.lock);
    r.byType[intType] = {identToInt, intToIdent};
}

TIdentToInt FindIdentToInt(PTypeInfo intType) {
    auto& r = IntConsts();
    std::lock_guard g(r.lock);
    auto it = r.byType.find(intType);
    return it == r.byType.end() ? nullptr : it->second.identToInt;
}

TIntToIdent FindIntToIdent(PTypeInfo intType) {
    auto& r = IntConsts();
    std::lock_guard g(r.lock);
    auto it = r.byType.find(intType);
    return it == r.byType.end() ? nullptr : it->second.intToIdent;
}

} // namespace rtl
