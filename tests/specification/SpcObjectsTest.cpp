// The base classes of settings objects: the node interfaces they answer, their default
// captions, the class test the editor uses, typed collections, and storage procedures.
#include "SpcModel.h"

#include "persistence/Storage.h"
#include "specification/SpcMng.h"

#include <gtest/gtest.h>

using namespace spcmodel;

namespace {

template <class I> I* Query(IInterface* obj, HRESULT* result = nullptr) {
    void* p = nullptr;
    HRESULT hr = obj->QueryInterface(I::IID, &p);
    if (result) *result = hr;
    return hr == S_OK ? static_cast<I*>(p) : nullptr;
}

const TGUID kOtherInterface = TGUID::FromString("{00000000-0000-0000-C000-000000000046}");

TEST(NodeInterfaces, IdentifiersAreTheFixedOnes) {
    EXPECT_EQ(INodeInfo::IID.ToString(), "{70E42159-AD26-479D-B0FD-A67ED16897A8}");
    EXPECT_EQ(INodeOfItemInfo::IID.ToString(), "{9CA9F8D8-3590-4A68-9852-AE5CC980FD91}");
}

TEST(NodeInterfaces, SettingsObjectAnswersNodeInfoOnly) {
    TSpcObject obj;
    INodeInfo* info = Query<INodeInfo>(&obj);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(static_cast<TSpcObject*>(info), &obj);
    HRESULT hr = S_OK;
    EXPECT_EQ(Query<INodeOfItemInfo>(&obj, &hr), nullptr);
    EXPECT_EQ(hr, E_NOINTERFACE);
    void* p = &obj;
    EXPECT_EQ(obj.QueryInterface(kOtherInterface, &p), static_cast<HRESULT>(0x80004002u));
}

TEST(NodeInterfaces, ItemAnswersBothAndCollectionOnlyNodeInfo) {
    THistory history(nullptr);
    TSpcItem* item = history.Add();
    INodeOfItemInfo* itemInfo = Query<INodeOfItemInfo>(item);
    ASSERT_NE(itemInfo, nullptr);
    EXPECT_TRUE(itemInfo->NeedsIterate());
    INodeInfo* nodeInfo = Query<INodeInfo>(item);
    ASSERT_NE(nodeInfo, nullptr);
    EXPECT_TRUE(nodeInfo->NeedsTranslate());

    EXPECT_NE(Query<INodeInfo>(&history), nullptr);
    HRESULT hr = S_OK;
    EXPECT_EQ(Query<INodeOfItemInfo>(&history, &hr), nullptr);
    EXPECT_EQ(hr, E_NOINTERFACE);
    EXPECT_EQ(history.QueryInterface(kOtherInterface, nullptr), E_NOINTERFACE);
    // Supports goes through the same table.
    EXPECT_TRUE(Supports<INodeInfo>(item));
    EXPECT_FALSE(Supports<INodeOfItemInfo>(&history));
}

TEST(NodeInterfaces, ReferencesAreNotCounted) {
    TSpcObject obj;
    THistory history(nullptr);
    TSpcItem* item = history.Add();
    for (IInterface* i : {static_cast<IInterface*>(&obj), static_cast<IInterface*>(item),
                          static_cast<IInterface*>(&history)}) {
        EXPECT_EQ(i->_AddRef(), -1);
        EXPECT_EQ(i->_Release(), -1);
        EXPECT_EQ(i->_Release(), -1);
    }
}

TEST(NodeInterfaces, BaseCaptionsAreEmptyAndTranslated) {
    TSpcObject obj;
    EXPECT_EQ(obj.GetNodeName(), "");
    EXPECT_EQ(obj.GetNodePropName(), "");
    EXPECT_TRUE(obj.NeedsTranslate());
    THistory history(nullptr);
    EXPECT_EQ(history.GetNodeName(), "");
    EXPECT_EQ(history.GetNodePropName(), "");
    EXPECT_TRUE(history.NeedsTranslate());
    // The base item ignores its node name; a descendant may return it.
    TSpcItem* item = history.Add();
    item->SetNodeName("Recent files");
    EXPECT_EQ(item->GetNodeName(), "");
    EXPECT_EQ(item->GetNodePropName(), "");
    TProgram program;
    TExpertInfo* expert = program.settings.Active()->Expert(0);
    INodeOfItemInfo* info = Query<INodeOfItemInfo>(expert);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->GetNodeName(), "BlockMng expert");
    EXPECT_FALSE(info->NeedsIterate());
    EXPECT_FALSE(info->NeedsTranslate());
}

TEST(BaseClassIdent, OrdinalsAreFixed) {
    EXPECT_EQ(static_cast<int>(ciUnknown), 0);
    EXPECT_EQ(static_cast<int>(ciSpcObject), 1);
    EXPECT_EQ(static_cast<int>(ciObject), 2);
    EXPECT_EQ(static_cast<int>(ciSpcItem), 3);
    EXPECT_EQ(static_cast<int>(ciItem), 4);
    EXPECT_EQ(static_cast<int>(ciCollection), 5);
    EXPECT_EQ(static_cast<int>(ciComponent), 6);
    EXPECT_EQ(GetEnumName(TypeInfo<TBaseClassIdent>(), 3), "ciSpcItem");
}

TEST(BaseClassIdent, FirstMatchingTestDecides) {
    EXPECT_EQ(ClassBaseClass(TSettings::StaticClass()), ciSpcObject);
    EXPECT_EQ(ClassBaseClass(TSpcObject::StaticClass()), ciSpcObject);
    EXPECT_EQ(ClassBaseClass(TExpertInfo::StaticClass()), ciSpcItem);
    EXPECT_EQ(ClassBaseClass(TWrapperItem::StaticClass()), ciSpcItem);
    EXPECT_EQ(ClassBaseClass(TCollectionItem::StaticClass()), ciItem);
    // Settings collections have no ident of their own.
    EXPECT_EQ(ClassBaseClass(TSpcCollection::StaticClass()), ciCollection);
    EXPECT_EQ(ClassBaseClass(TActiveExperts::StaticClass()), ciCollection);
    EXPECT_EQ(ClassBaseClass(TComponent::StaticClass()), ciComponent);
    // A nested object of a free collection is a plain persistent object.
    EXPECT_EQ(ClassBaseClass(TEditorSettings::StaticClass()), ciObject);
    EXPECT_EQ(ClassBaseClass(TFont::StaticClass()), ciObject);
    EXPECT_EQ(ClassBaseClass(TObject::StaticClass()), ciUnknown);
    EXPECT_EQ(ClassBaseClass(nullptr), ciUnknown);
}

TEST(BaseClassIdent, OfInstances) {
    TProgram program;
    EXPECT_EQ(ObjectBaseClass(&program.settings), ciSpcObject);
    EXPECT_EQ(ObjectBaseClass(program.settings.Active()), ciCollection);
    EXPECT_EQ(ObjectBaseClass(program.settings.Custom()->GetItem(0)), ciSpcItem);
    EXPECT_EQ(ObjectBaseClass(&program.editor), ciObject);
    TComponent component;
    EXPECT_EQ(ObjectBaseClass(&component), ciComponent);
    TObject plain;
    EXPECT_EQ(ObjectBaseClass(&plain), ciUnknown);
    EXPECT_EQ(ObjectBaseClass(nullptr), ciUnknown);
}

TEST(SpcCollection, TypedAccess) {
    THistory history(nullptr);
    TSpcItem* a = history.Add();
    TSpcItem* b = history.Insert(0);
    EXPECT_EQ(history.GetItem(0), b);
    EXPECT_EQ(history[1], a);
    EXPECT_EQ(history.FindItemID(a->ID()), a);
    EXPECT_EQ(history.FindItemID(12345), nullptr);
    As<THistoryItem>(a)->FileName = "a.pas";
    history.SetItem(0, a);
    EXPECT_EQ(As<THistoryItem>(history.GetItem(0))->FileName, "a.pas");
    EXPECT_THROW(history.GetItem(2), EListError);
}

TEST(SpcCollection, ItemOfAnotherClassFailsTheTypedCast) {
    TSpcCollection plain(nullptr, TCollectionItem::StaticClass());
    EXPECT_THROW(plain.Add(), EInvalidCast);
    // The item was made all the same; the collection owns it.
    EXPECT_EQ(plain.Count(), 1);
    EXPECT_THROW(plain.GetItem(0), EInvalidCast);
}

TEST(SpcObject, VirtualConstructorMakesTheClassOfTheReference) {
    std::unique_ptr<TObject> made(CreateInstance(TSettings::StaticClass()));
    auto* settings = dynamic_cast<TSettings*>(made.get());
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->Title, "Settings");
    EXPECT_EQ(settings->GetView()->Depth, 3);
}

// ---------------------------------------------------------------------------------------------
// Storage procedures

class TStoredCounter : public TObject {
    RTL_CLASS(TStoredCounter, TObject)
public:
    int32_t Value = 0;
    std::string Name = "Counter";
    bool Store = true;
    void Define(std::string& name, TReaderProc& readData, TWriterProc& writeData, bool& hasData) {
        name = Name;
        readData = [this](TReader* r) { Value = r->ReadInteger(); };
        writeData = [this](TWriter* w) { w->WriteInteger(Value); };
        hasData = Store;
    }
    void DefineOther(std::string&, TReaderProc&, TWriterProc&, bool&) {}
    void DefineBlob(std::string& name, TStreamProc& readData, TStreamProc& writeData,
                    bool& hasData) {
        name = "Blob";
        readData = [this](TStream* s) {
            Blob.assign(static_cast<size_t>(s->GetSize()), '\0');
            s->ReadBuffer(Blob.data(), s->GetSize());
        };
        writeData = [this](TStream* s) {
            s->WriteBuffer(Blob.data(), static_cast<int64_t>(Blob.size()));
        };
        hasData = !Blob.empty();
    }
    std::string Blob;
};
RTL_IMPLEMENT_CLASS(TStoredCounter)

class TCustomSettings : public TCustomSpcObject {
    RTL_CLASS(TCustomSettings, TCustomSpcObject)
public:
    int32_t Width = 1;
};
RTL_BEGIN_CLASS(TCustomSettings)
Property("Width", &TCustomSettings::Width);
RTL_END_CLASS

std::string Save(TPersistent* obj) {
    TStringStream stream;
    TFitWriter writer(&stream);
    writer.WriteAsComponent(obj, "");
    writer.FlushBuffer();
    return stream.DataString();
}

void Load(TPersistent* obj, const std::string& data) {
    TStringStream stream(data);
    TFitReader reader(&stream);
    std::string name;
    reader.ReadAsComponent(obj, name);
}

TEST(StorageProcs, WithoutProceduresNothingIsDefined) {
    TCustomSettings settings;
    std::string bytes = Save(&settings);
    // "TPF0", class name, empty name, the one published record, two list ends.
    std::string expected = std::string("TPF0") + "\x0F" + "TCustomSettings" + '\0' + "\x05" +
                           "Width" + "\x02\x01" + std::string(2, '\0');
    EXPECT_EQ(bytes, expected);
}

TEST(StorageProcs, DefineValuesInTheOrderAdded) {
    TCustomSettings settings;
    TStoredCounter counter, other;
    counter.Value = 300;
    other.Name = "Second";
    other.Value = 7;
    counter.Blob = std::string("\x00\x01\x02", 3);
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&counter));
    settings.AddBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&counter));
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&other));
    std::string bytes = Save(&settings);
    size_t counterAt = bytes.find("\x07"
                                  "Counter");
    size_t secondAt = bytes.find("\x06"
                                 "Second");
    size_t blobAt = bytes.find("\x04"
                               "Blob");
    ASSERT_NE(counterAt, std::string::npos);
    ASSERT_NE(secondAt, std::string::npos);
    ASSERT_NE(blobAt, std::string::npos);
    // Every storage procedure comes before every binary one.
    EXPECT_LT(counterAt, secondAt);
    EXPECT_LT(secondAt, blobAt);
    EXPECT_EQ(bytes.substr(blobAt + 5, 8), std::string("\x0A\x03\x00\x00\x00\x00\x01\x02", 8));

    counter.Value = 0;
    other.Value = 0;
    counter.Blob.clear();
    Load(&settings, bytes);
    EXPECT_EQ(counter.Value, 300);
    EXPECT_EQ(other.Value, 7);
    EXPECT_EQ(counter.Blob, std::string("\x00\x01\x02", 3));
}

TEST(StorageProcs, NothingWrittenWithoutData) {
    TCustomSettings settings;
    TStoredCounter counter;
    counter.Store = false;
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&counter));
    settings.AddBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&counter));
    EXPECT_EQ(Save(&settings).find("Counter"), std::string::npos);
    EXPECT_EQ(Save(&settings).find("Blob"), std::string::npos);
}

TEST(StorageProcs, HasProcComparesCodeAndObject) {
    TCustomSettings settings;
    TStoredCounter a, b;
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&a));
    settings.AddBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&b));
    EXPECT_TRUE(settings.HasStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&a)));
    EXPECT_FALSE(settings.HasStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&b)));
    EXPECT_FALSE(settings.HasStorageProc(TStorageProc::Of<&TStoredCounter::DefineOther>(&a)));
    EXPECT_TRUE(settings.HasBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&b)));
    EXPECT_FALSE(settings.HasBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&a)));
}

} // namespace
