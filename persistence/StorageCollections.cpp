// Fixed and free collections: collections whose set of items the running program decides.
//
// A plain collection read from a stream is cleared and rebuilt from it, so the stream decides
// which items exist. For settings that is the wrong way round: a file from an older build may
// name items that are gone and lack new ones. A fixed collection's items are made by code with a
// key, and a stream only updates the items whose key it names. A free collection's items wrap
// live objects owned elsewhere, registered by code under an identifier; a stream updates the
// registered objects and never makes one.
//
// Both are written by TFitWriter::WriteCollection like any collection; only their reading
// differs. Owners use them from DefineProperties handlers: WriteCollectionEx to write,
// ReadFixedCollection or ReadFreeCollection to read.
#include "persistence/Storage.h"

#include "foundation/AppUtils.h"

#include <memory>

namespace zelvane {

using namespace rtl;

RTL_IMPLEMENT_CLASS(EFixedCollectionError)
RTL_IMPLEMENT_CLASS(EFreeCollectionError)
RTL_IMPLEMENT_CLASS(TFixedCollection)
RTL_IMPLEMENT_CLASS(TNestedObject)

RTL_BEGIN_CLASS(TWrapperItem)
Property("AObjectID", &TWrapperItem::AObjectID);
Property("NestedObject", &TWrapperItem::NestedObject);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TFreeCollection)

namespace {

// The key of an item: the value of its published string property of that name, or nothing when
// it has none.
bool ItemKey(TObject* item, const std::string& keyName, std::string& key) {
    PPropInfo p = GetPropInfo(item->ClassType(), keyName);
    if (!p || !p->GetProc) return false;
    TTypeKind kind = p->PropType->Kind;
    if (kind != tkString && kind != tkLString) return false;
    key = GetStrProp(item, p);
    return true;
}

// Items match when both have the key property with the same non-empty value.
bool SameKey(TObject* a, TObject* b, const std::string& keyName) {
    std::string ka, kb;
    return ItemKey(a, keyName, ka) && ItemKey(b, keyName, kb) && !ka.empty() && ka == kb;
}

// A collection without an owner that holds the stream's entries while they are matched: of the
// collection's own class where that class can be made without an owner and then has the same
// item class, otherwise a plain collection of the item class.
std::unique_ptr<TCollection> TemporaryCollection(TCollection* collection) {
    TClass cls = collection->ClassType();
    if (cls->CreateWith) {
        // The class of a collection makes collections.
        std::unique_ptr<TCollection> same(static_cast<TCollection*>(CreateInstance(cls, nullptr)));
        if (same->ItemClass() == collection->ItemClass()) return same;
    }
    return std::make_unique<TCollection>(collection->ItemClass());
}

// The index an item moves to for a stream position: the position, or the end past the last item.
int ReorderTarget(TCollection* collection, int position) {
    return position < collection->Count() ? position : collection->Count() - 1;
}

// Runs f between BeginUpdate and EndUpdate of the collection, also when f raises.
template <class F> void InUpdate(TCollection* collection, F&& f) {
    collection->BeginUpdate();
    try {
        f();
    } catch (...) {
        collection->EndUpdate();
        throw;
    }
    collection->EndUpdate();
}

} // namespace

// ---------------------------------------------------------------------------------------------
// TFixedCollection

TSpcItem* TFixedCollection::Add(const std::string& key) {
    std::string keyName = GetUpdateName();
    for (int i = 0; i < Count(); ++i)
        if (GetStrProp(TCollection::GetItem(i), keyName) == key)
            CreateException<EFixedCollectionError>(SCollItemExists, {key});
    std::unique_ptr<TSpcItem> item(TSpcCollection::Add());
    SetStrProp(item.get(), keyName, key);
    return item.release();
}

void ReadFixedCollection(TReader& reader, TFixedCollection* collection, bool reorder) {
    if (!collection) throw EFitReaderError("Cannot read into a nil collection");
    TObjectSaver saver;
    std::unique_ptr<TCollection> stored = TemporaryCollection(collection);
    reader.CheckValue(vaCollection);
    reader.ReadCollection(stored.get());
    if (collection->Count() == 0) return;
    std::string keyName = collection->GetUpdateName();
    InUpdate(collection, [&] {
        for (int i = 0; i < stored->Count(); ++i) {
            TCollectionItem* entry = stored->GetItem(i);
            for (int j = 0; j < collection->Count(); ++j) {
                TCollectionItem* item = collection->TCollection::GetItem(j);
                if (!SameKey(entry, item, keyName)) continue;
                std::string props;
                TPersistent* source[] = {entry};
                TPersistent* target[] = {item};
                saver.GetObjectProps(source, props);
                saver.SetObjectProps(target, props);
                if (reorder && i != j) item->SetIndex(ReorderTarget(collection, i));
                break;
            }
        }
    });
}

// ---------------------------------------------------------------------------------------------
// TFreeCollection

TFreeCollection::TFreeCollection(TPersistent* owner, TClass itemClass)
    : TSpcCollection(owner, itemClass) {
    if (!itemClass || !itemClass->InheritsFrom(TWrapperItem::StaticClass()))
        CreateException<EFreeCollectionError>(
            "The items of a free collection must be TWrapperItem descendants, not %s",
            {itemClass ? itemClass->Name : std::string("nil")});
}

TWrapperItem* TFreeCollection::Add(TNestedObject* obj, const std::string& id) {
    if (FindObjectID(id)) CreateException<EFreeCollectionError>(SObjectExists, {id});
    TWrapperItem* item = As<TWrapperItem>(TSpcCollection::Add());
    item->NestedObject = obj;
    item->AObjectID = id;
    return item;
}

void TFreeCollection::Assign(TPersistent* source) {
    auto* other = dynamic_cast<TFreeCollection*>(source);
    if (!other) {
        TSpcCollection::Assign(source);
        return;
    }
    if (other == this) return;
    InUpdate(this, [&] {
        Clear();
        for (int i = 0; i < other->Count(); ++i) {
            TWrapperItem* from = other->GetItem(i);
            Add(from->NestedObject, from->AObjectID)->SetNodeName(from->NodeName());
        }
    });
}

TWrapperItem* TFreeCollection::GetItem(int index) const {
    return As<TWrapperItem>(TCollection::GetItem(index));
}

void TFreeCollection::SetItem(int index, TWrapperItem* value) {
    TCollection::SetItem(index, value);
}

TWrapperItem* TFreeCollection::FindItemID(int32_t id) const {
    return As<TWrapperItem>(TCollection::FindItemID(id));
}

TWrapperItem* TFreeCollection::FindObjectID(const std::string& id) const {
    for (int i = 0; i < Count(); ++i)
        if (TWrapperItem* item = GetItem(i); item->AObjectID == id) return item;
    return nullptr;
}

void ReadFreeCollection(TReader& reader, TFreeCollection* collection, bool reorder) {
    if (!collection) throw EFitReaderError("Cannot read into a nil collection");
    InUpdate(collection, [&] {
        reader.CheckValue(vaCollection);
        int position = 0;
        TWrapperItem* found = nullptr;
        while (!reader.EndOfList()) {
            TValueType v = reader.NextValue();
            if (v == vaInt8 || v == vaInt16 || v == vaInt32) reader.ReadInteger();
            reader.ReadListBegin();
            // The identifier comes first, so that the entry can be matched before it is read.
            if (reader.ReadStr() != SUpdateObjectPropName)
                CreateException<EFitReaderError>(SPropNotFound, {SUpdateObjectPropName});
            TWrapperItem* item = collection->FindObjectID(reader.ReadString());
            if (item) {
                found = item;
                while (!reader.EndOfList())
                    reader.ReadProperty(item);
            } else {
                while (!reader.EndOfList())
                    reader.SkipProperty();
            }
            // Before any item was found there is nothing to move.
            if (reorder && found && position != found->Index())
                found->SetIndex(ReorderTarget(collection, position));
            ++position;
            reader.ReadListEnd();
        }
        reader.ReadListEnd();
    });
}

// ---------------------------------------------------------------------------------------------
// Writing from DefineProperties handlers

namespace {
// The path in front of property names of any writer.
struct TWriterPath : TWriter {
    static std::string& Of(TWriter* writer) { return writer->*(&TWriterPath::FPropPath); }
};
} // namespace

void WriteCollectionEx(TWriter* writer, TCollection* collection) {
    if (auto* fit = dynamic_cast<TFitWriter*>(writer)) {
        fit->WriteCollectionEx(collection);
        return;
    }
    // The items' properties are named from the item.
    TScopedValue path(TWriterPath::Of(writer), std::string());
    writer->WriteCollection(collection);
}

// ---------------------------------------------------------------------------------------------
// TFitReader

void TFitReader::ReadFixedCollection(TFixedCollection* collection, bool reorder) {
    zelvane::ReadFixedCollection(*this, collection, reorder);
}

void TFitReader::ReadFreeCollection(TFreeCollection* collection, bool reorder) {
    zelvane::ReadFreeCollection(*this, collection, reorder);
}

} // namespace zelvane
