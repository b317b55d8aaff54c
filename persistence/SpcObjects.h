// The base classes of settings objects and how they present themselves as nodes of the settings
// editor's tree: TSpcObject, TCustomSpcObject, TSpcItem, TSpcCollection, with the node
// interfaces INodeInfo and INodeOfItemInfo.
//
// They stand below the storage code, which builds its fixed and free collections on them, and
// below the specification layer, which builds files and the editor's table of functions on
// them. Interfaces on these objects are not counted: objects live by ownership.
#pragma once

#include "rtl/Classes.h"
#include "rtl/Filer.h"
#include "rtl/Persistent.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <string>
#include <vector>

namespace zelvane {

// ---------------------------------------------------------------------------------------------
// Tree nodes

// How an object presents itself as a node of the editor's tree.
class INodeInfo : public rtl::IInterface {
public:
    // {70E42159-AD26-479D-B0FD-A67ED16897A8}
    static constexpr rtl::TGUID IID{
        0x70E42159, 0xAD26, 0x479D, {0xB0, 0xFD, 0xA6, 0x7E, 0xD1, 0x68, 0x97, 0xA8}};
    // The caption of the node; empty leaves the editor's default (the property's or class's
    // name).
    virtual std::string GetNodeName() = 0;
    // Empty in every class of the system.
    virtual std::string GetNodePropName() = 0;
    // True: the caption goes through the editor's translation table. False: it is final text.
    virtual bool NeedsTranslate() = 0;

protected:
    ~INodeInfo() = default;
};

// The node of a collection item.
class INodeOfItemInfo : public INodeInfo {
public:
    // {9CA9F8D8-3590-4A68-9852-AE5CC980FD91}
    static constexpr rtl::TGUID IID{
        0x9CA9F8D8, 0x3590, 0x4A68, {0x98, 0x52, 0xAE, 0x5C, 0xC9, 0x80, 0xFD, 0x91}};
    // True: the item's caption gets its index appended.
    virtual bool NeedsIterate() = 0;

protected:
    ~INodeOfItemInfo() = default;
};

// ---------------------------------------------------------------------------------------------
// Settings objects

// The base of settings objects. Instances are made through the class's virtual constructor
// (rtl::CreateInstance), so descendants keep a constructor without arguments. Interfaces are
// not counted: objects live by ownership.
class TSpcObject : public rtl::TPersistent, public INodeInfo {
    RTL_CLASS(TSpcObject, rtl::TPersistent)
public:
    TSpcObject() = default;

    std::string GetNodeName() override { return {}; }
    std::string GetNodePropName() override { return {}; }
    bool NeedsTranslate() override { return true; }

    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override;
    int32_t _AddRef() override { return -1; }
    int32_t _Release() override { return -1; }
};

// A storage procedure: given an empty name, empty handlers and hasData false, it fills in the
// stored value it defines. A binary one does the same with handlers that take a stream.
using TStorageProc = rtl::TEvent<void(std::string& name, rtl::TReaderProc& readData,
                                      rtl::TWriterProc& writeData, bool& hasData)>;
using TBinStorageProc = rtl::TEvent<void(std::string& name, rtl::TStreamProc& readData,
                                         rtl::TStreamProc& writeData, bool& hasData)>;

// A settings object to which stored values can be attached at run time, without a subclass
// that overrides DefineProperties: each storage procedure defines one value for the filer.
class TCustomSpcObject : public TSpcObject {
    RTL_CLASS(TCustomSpcObject, TSpcObject)
public:
    TCustomSpcObject() = default;

    void AddStorageProc(const TStorageProc& proc) { FStorageProcs.push_back(proc); }
    void AddBinStorageProc(const TBinStorageProc& proc) { FBinStorageProcs.push_back(proc); }
    // Whether an entry is the same method of the same object.
    bool HasStorageProc(const TStorageProc& proc) const;
    bool HasBinStorageProc(const TBinStorageProc& proc) const;

    // Offers the filer one property per storage procedure, then one binary property per binary
    // storage procedure, in the order they were added.
    void DefineProperties(rtl::TFiler* filer) override;

private:
    std::vector<TStorageProc> FStorageProcs;
    std::vector<TBinStorageProc> FBinStorageProcs;
};

// The base of settings collection items. The node name is a caption that descendants may
// return from GetNodeName; the base ignores it.
class TSpcItem : public rtl::TCollectionItem, public INodeOfItemInfo {
    RTL_CLASS(TSpcItem, rtl::TCollectionItem)
public:
    explicit TSpcItem(rtl::TCollection* collection = nullptr);

    const std::string& NodeName() const { return FNodeName; }
    void SetNodeName(const std::string& value) { FNodeName = value; }

    std::string GetNodeName() override { return {}; }
    std::string GetNodePropName() override { return {}; }
    bool NeedsIterate() override { return true; }
    bool NeedsTranslate() override { return true; }

    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override;
    int32_t _AddRef() override { return -1; }
    int32_t _Release() override { return -1; }

protected:
    std::string FNodeName;
};

// The base of settings collections: an owned collection of TSpcItem descendants, with typed
// access. A cast to TSpcItem of an item of another class raises EInvalidCast.
class TSpcCollection : public rtl::TOwnedCollection, public INodeInfo {
    RTL_CLASS(TSpcCollection, rtl::TOwnedCollection)
public:
    TSpcCollection(rtl::TPersistent* owner, rtl::TClass itemClass)
        : TOwnedCollection(owner, itemClass) {}

    TSpcItem* Add();
    TSpcItem* Insert(int index);
    TSpcItem* FindItemID(int32_t id) const;
    TSpcItem* GetItem(int index) const;
    void SetItem(int index, TSpcItem* value);
    TSpcItem* operator[](int index) const { return GetItem(index); }

    std::string GetNodeName() override { return {}; }
    std::string GetNodePropName() override { return {}; }
    bool NeedsTranslate() override { return true; }

    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override;
    int32_t _AddRef() override { return -1; }
    int32_t _Release() override { return -1; }
};

} // namespace zelvane
