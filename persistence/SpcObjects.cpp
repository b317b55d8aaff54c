#include "persistence/SpcObjects.h"

#include <algorithm>

namespace zelvane {

using namespace rtl;

RTL_BEGIN_CLASS(TSpcObject)
Implements<INodeInfo>();
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TCustomSpcObject)

RTL_BEGIN_CLASS(TSpcItem)
Implements<INodeOfItemInfo>();
Implements<INodeInfo>();
RTL_END_CLASS

RTL_BEGIN_CLASS(TSpcCollection)
Implements<INodeInfo>();
RTL_END_CLASS

// ---------------------------------------------------------------------------------------------
// Settings objects

namespace {
HRESULT QueryByTable(TObject* obj, const TGUID& iid, void** intf) {
    return obj->GetInterface(iid, intf) ? S_OK : E_NOINTERFACE;
}
} // namespace

HRESULT TSpcObject::QueryInterface(const TGUID& iid, void** obj) {
    return QueryByTable(this, iid, obj);
}

bool TCustomSpcObject::HasStorageProc(const TStorageProc& proc) const {
    return std::find(FStorageProcs.begin(), FStorageProcs.end(), proc) != FStorageProcs.end();
}

bool TCustomSpcObject::HasBinStorageProc(const TBinStorageProc& proc) const {
    return std::find(FBinStorageProcs.begin(), FBinStorageProcs.end(), proc) !=
           FBinStorageProcs.end();
}

void TCustomSpcObject::DefineProperties(TFiler* filer) {
    TSpcObject::DefineProperties(filer);
    for (const TStorageProc& proc : FStorageProcs) {
        std::string name;
        TReaderProc readData;
        TWriterProc writeData;
        bool hasData = false;
        proc(name, readData, writeData, hasData);
        filer->DefineProperty(name, readData, writeData, hasData);
    }
    for (const TBinStorageProc& proc : FBinStorageProcs) {
        std::string name;
        TStreamProc readData;
        TStreamProc writeData;
        bool hasData = false;
        proc(name, readData, writeData, hasData);
        filer->DefineBinaryProperty(name, readData, writeData, hasData);
    }
}

TSpcItem::TSpcItem(TCollection* collection) : TCollectionItem(collection) {}

HRESULT TSpcItem::QueryInterface(const TGUID& iid, void** obj) {
    return QueryByTable(this, iid, obj);
}

TSpcItem* TSpcCollection::Add() {
    return As<TSpcItem>(TCollection::Add());
}

TSpcItem* TSpcCollection::Insert(int index) {
    return As<TSpcItem>(TCollection::Insert(index));
}

TSpcItem* TSpcCollection::FindItemID(int32_t id) const {
    return As<TSpcItem>(TCollection::FindItemID(id));
}

TSpcItem* TSpcCollection::GetItem(int index) const {
    return As<TSpcItem>(TCollection::GetItem(index));
}

void TSpcCollection::SetItem(int index, TSpcItem* value) {
    TCollection::SetItem(index, value);
}

HRESULT TSpcCollection::QueryInterface(const TGUID& iid, void** obj) {
    return QueryByTable(this, iid, obj);
}

} // namespace zelvane
