// Components and collections: ownership, names, notifications, collection items with IDs, the
// integer-identifier tables the filer uses, and FindNestedComponent.
#pragma once

#include "rtl/Persistent.h"
#include "rtl/Streams.h"
#include "rtl/TypInfo.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace rtl {

class TComponent;
class TCollection;
class TCollectionItem;
class TReader;
class TWriter;

RTL_ENUM(TOperation, opInsert, opRemove)

RTL_ENUM(TComponentStateItem, csLoading, csReading, csWriting, csDestroying, csDesigning,
         csAncestor, csUpdating, csFixups, csFreeNotification, csInline, csDesignInstance)
RTL_SET(TComponentState, TComponentStateItem)

RTL_ENUM(TComponentStyleItem, csInheritable, csCheckPropAvail, csSubComponent, csTransient)
RTL_SET(TComponentStyle, TComponentStyleItem)

using TGetChildProc = std::function<void(TComponent* child)>;

// A component: a persistent object with a name, an owner that frees it, and the components it
// owns. It implements IInterface without reference counting: it lives by ownership.
class TComponent : public TPersistent, public IInterface {
    RTL_CLASS(TComponent, TPersistent)
public:
    using TConstructorArg = TComponent;

    explicit TComponent(TComponent* owner = nullptr);
    ~TComponent() override;

    const std::string& Name() const { return name_; }
    // Renames the component. The name must be a valid identifier or empty, and unique among the
    // owner's components (case-insensitive): EComponentError otherwise.
    void SetName(const std::string& newName);
    int32_t Tag = 0;

    TComponent* Owner() const { return owner_; }
    int ComponentCount() const { return static_cast<int>(components_.size()); }
    TComponent* Components(int index) const;
    int ComponentIndex() const;
    void SetComponentIndex(int index);
    // The owned component of that name, case-insensitive, or nullptr.
    TComponent* FindComponent(std::string_view name) const;

    void InsertComponent(TComponent* component);
    void RemoveComponent(TComponent* component);
    // Frees every owned component, the last first.
    void DestroyComponents();
    void Destroying();

    // Asks to be told, through Notification(opRemove), when component is freed.
    void FreeNotification(TComponent* component);
    void RemoveFreeNotification(TComponent* component);

    const TComponentState& ComponentState() const { return state_; }
    const TComponentStyle& ComponentStyle() const { return style_; }
    void SetDesigning(bool value, bool setChildren = true);
    void SetInline(bool value);
    void SetSubComponent(bool value);

    // Filer hooks.
    virtual void GetChildren(const TGetChildProc& proc, TComponent* root) {}
    virtual TComponent* GetChildOwner() { return nullptr; }
    virtual TComponent* GetChildParent() { return nullptr; }
    virtual void SetChildOrder(TComponent* child, int order) {}
    virtual bool HasParent() const { return false; }
    virtual TComponent* GetParentComponent() const { return nullptr; }
    virtual void SetParentComponent(TComponent* value) {}
    virtual void Loaded();
    virtual void ReadState(TReader* reader);
    virtual void WriteState(TWriter* writer);
    // The state changes the filer makes while it reads or writes a component.
    void SetState(TComponentStateItem item, bool on);
    void SetAncestor(bool value);

    std::string GetNamePath() const override;
    TPersistent* GetOwner() const override { return owner_; }

    // IInterface, not counted.
    HRESULT QueryInterface(const TGUID& iid, void** obj) override;
    int32_t _AddRef() override { return -1; }
    int32_t _Release() override { return -1; }

protected:
    virtual void Notification(TComponent* component, TOperation operation);
    virtual void ValidateRename(TComponent* component, const std::string& curName,
                                const std::string& newName);
    virtual void ValidateContainer(TComponent* component) {}
    virtual void ValidateInsert(TComponent* component) {}
    virtual void ChangeName(const std::string& newName) { name_ = newName; }
    // Links the owner's published field of this component's name to it, or unlinks it.
    void SetReference(bool enable);

private:
    void Insert(TComponent* component);
    void Remove(TComponent* component);
    void RemoveNotification(TComponent* component);

    std::string name_;
    TComponent* owner_ = nullptr;
    std::vector<TComponent*> components_;
    std::vector<TComponent*> freeNotifies_;
    TComponentState state_;
    TComponentStyle style_ = {csInheritable};
};

// Creates a component of the class through its virtual constructor.
TComponent* CreateComponent(TClass cls, TComponent* owner);

// The component reached from root by a path of component names separated by "." (or "->");
// "Owner" names the current component. nullptr when any step is missing.
TComponent* FindNestedComponent(TComponent* root, std::string_view namePath);

// Whether the text is a valid component name: a Pascal identifier.
bool IsValidComponentName(std::string_view name);

// ---------------------------------------------------------------------------------------------
// Collections

RTL_ENUM(TCollectionNotification, cnAdded, cnExtracting, cnDeleting)

class TCollectionItem : public TPersistent {
    RTL_CLASS(TCollectionItem, TPersistent)
public:
    using TConstructorArg = TCollection;

    explicit TCollectionItem(TCollection* collection = nullptr);
    ~TCollectionItem() override;

    TCollection* Collection() const { return collection_; }
    void SetCollection(TCollection* value);
    int32_t ID() const { return id_; }
    int Index() const;
    void SetIndex(int value);
    std::string DisplayName() const { return GetDisplayName(); }
    virtual void SetDisplayName(const std::string& value) { Changed(false); }

    std::string GetNamePath() const override;
    TPersistent* GetOwner() const override;

protected:
    virtual std::string GetDisplayName() const { return ClassName(); }
    // Tells the collection that this item, or with allItems every item, changed.
    void Changed(bool allItems);

private:
    friend class TCollection;
    TCollection* collection_ = nullptr;
    int32_t id_ = 0;
};

class TCollection : public TPersistent {
    RTL_CLASS(TCollection, TPersistent)
public:
    explicit TCollection(TClass itemClass);
    ~TCollection() override;

    TCollectionItem* Add();
    TCollectionItem* Insert(int index);
    void Delete(int index);
    void Clear();
    virtual void BeginUpdate() { ++updateCount_; }
    virtual void EndUpdate();
    TCollectionItem* FindItemID(int32_t id) const;
    int Count() const { return static_cast<int>(items_.size()); }
    TCollectionItem* GetItem(int index) const;
    void SetItem(int index, TCollectionItem* value);
    TCollectionItem* operator[](int index) const { return GetItem(index); }
    TClass ItemClass() const { return itemClass_; }
    int UpdateCount() const { return updateCount_; }
    int32_t NextID() const { return nextID_; }

    void Assign(TPersistent* source) override;
    std::string GetNamePath() const override;
    // The name of the owner's published property that holds this collection.
    std::string PropName() const;
    void SetPropName(std::string name) { propName_ = std::move(name); }

protected:
    virtual void Update(TCollectionItem* item) {}
    virtual void Notify(TCollectionItem* item, TCollectionNotification action) {}
    void Changed();

private:
    friend class TCollectionItem;
    // checkClass is false for an item joining from its base constructor, when C++ doesn't yet
    // see the item's own class.
    void InsertItem(TCollectionItem* item, bool checkClass = true);
    void RemoveItem(TCollectionItem* item);
    void MoveItem(TCollectionItem* item, int newIndex);

    TClass itemClass_;
    std::vector<TCollectionItem*> items_;
    int updateCount_ = 0;
    int32_t nextID_ = 0;
    mutable std::string propName_;
};

class TOwnedCollection : public TCollection {
    RTL_CLASS(TOwnedCollection, TCollection)
public:
    TOwnedCollection(TPersistent* owner, TClass itemClass)
        : TCollection(itemClass), owner_(owner) {}
    TPersistent* GetOwner() const override { return owner_; }

private:
    TPersistent* owner_;
};

// ---------------------------------------------------------------------------------------------
// Integer identifiers: the tables by which the filer writes an integer property as a name
// (clRed) and reads it back.

struct TIdentMapEntry {
    int32_t Value;
    const char* Name;
};
using TIdentToInt = bool (*)(std::string_view ident, int32_t& value);
using TIntToIdent = bool (*)(int32_t value, std::string& ident);

bool IdentToInt(std::string_view ident, int32_t& value, std::span<const TIdentMapEntry> map);
bool IntToIdent(int32_t value, std::string& ident, std::span<const TIdentMapEntry> map);
void RegisterIntegerConsts(PTypeInfo intType, TIdentToInt identToInt, TIntToIdent intToIdent);
TIdentToInt FindIdentToInt(PTypeInfo intType);
TIntToIdent FindIntToIdent(PTypeInfo intType);

} // namespace rtl
