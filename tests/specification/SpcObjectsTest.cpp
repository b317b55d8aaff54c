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

TEST(NodeInterfaces, IdentifiersAreTheFixedOnes) {
    EXPECT_EQ(INodeInfo::IID.ToString(), "{70E42159-AD26-479D-B0FD-A67ED16897A8}");
    EXPECT_EQ(INodeOfItemInfo::IID.ToString(), "{9CA9F8D8-3590-4A68-9852-AE5CC980FD91}");
}

TEST(NodeInterfaces, ObjectAndCollectionAnswerNodeInfoItemsBothUncounted) {
    TSpcObject obj;
    THistory history(nullptr);
    TSpcItem* item = history.Add();
    EXPECT_EQ(static_cast<TSpcObject*>(Query<INodeInfo>(&obj)), &obj);
    ASSERT_NE(Query<INodeOfItemInfo>(item), nullptr);
    EXPECT_TRUE(Query<INodeOfItemInfo>(item)->NeedsIterate());
    ASSERT_NE(Query<INodeInfo>(item), nullptr);
    EXPECT_TRUE(Query<INodeInfo>(item)->NeedsTranslate());
    EXPECT_NE(Query<INodeInfo>(&history), nullptr);
    for (IInterface* i : std::initializer_list<IInterface*>{&obj, &history}) {
        HRESULT hr = S_OK;
        EXPECT_EQ(Query<INodeOfItemInfo>(i, &hr), nullptr);
        EXPECT_EQ(hr, E_NOINTERFACE);
    }
    for (IInterface* i : std::initializer_list<IInterface*>{&obj, item, &history}) {
        EXPECT_EQ(i->_AddRef(), -1);
        EXPECT_EQ(i->_Release(), -1);
        EXPECT_EQ(i->_Release(), -1);
    }
}

TEST(BaseClassIdent, OrdinalsAreFixed) {
    EXPECT_EQ((std::vector<int>{ciUnknown, ciSpcObject, ciObject, ciSpcItem, ciItem, ciCollection,
                                ciComponent}),
              (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(GetEnumName(TypeInfo<TBaseClassIdent>(), 3), "ciSpcItem");
}

TEST(BaseClassIdent, FirstMatchingTestDecidesForClassesAndInstances) {
    // Settings collections have no ident of their own; a nested object of a free collection is
    // a plain persistent object.
    const std::pair<TClass, TBaseClassIdent> classes[] = {
        {TSettings::StaticClass(), ciSpcObject},  {TExpertInfo::StaticClass(), ciSpcItem},
        {TCollectionItem::StaticClass(), ciItem}, {TActiveExperts::StaticClass(), ciCollection},
        {TComponent::StaticClass(), ciComponent}, {TEditorSettings::StaticClass(), ciObject},
        {TObject::StaticClass(), ciUnknown},      {nullptr, ciUnknown}};
    for (const auto& c : classes)
        EXPECT_EQ(ClassBaseClass(c.first), c.second) << &c - classes;
    TProgram program;
    const std::pair<TObject*, TBaseClassIdent> objects[] = {
        {program.settings.Custom()->GetItem(0), ciSpcItem},
        {&program.editor, ciObject},
        {nullptr, ciUnknown}};
    for (const auto& o : objects)
        EXPECT_EQ(ObjectBaseClass(o.first), o.second) << &o - objects;
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

// ---------------------------------------------------------------------------------------------
// Storage procedures

class TStoredCounter : public TObject {
    RTL_CLASS(TStoredCounter, TObject)
public:
    int32_t Value = 0;
    std::string Name = "Counter";
    bool Store = true;
    // Writers only: the test reads nothing back.
    void Define(std::string& name, TReaderProc&, TWriterProc& writeData, bool& hasData) {
        name = Name;
        writeData = [this](TWriter* w) { w->WriteInteger(Value); };
        hasData = Store;
    }
    void DefineOther(std::string&, TReaderProc&, TWriterProc&, bool&) {}
    void DefineBlob(std::string& name, TStreamProc&, TStreamProc& writeData, bool& hasData) {
        name = "Blob";
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

TEST(StorageProcs, DefineValuesInTheOrderAddedAndOnlyWithData) {
    TCustomSettings settings;
    // "TPF0", class name, empty name, the one published record, two list ends.
    std::string head =
        std::string("TPF0") + "\x0F" + "TCustomSettings" + '\0' + "\x05" + "Width" + "\x02\x01";
    EXPECT_EQ(FitSave(&settings), head + std::string(2, '\0')) << "without procedures";
    TStoredCounter counter, other, none;
    counter.Value = 300;
    other.Name = "Second";
    other.Value = 7;
    none.Name = "Nothing";
    none.Store = false;
    counter.Blob = std::string("\x00\x01\x02", 3);
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&counter));
    settings.AddBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&counter));
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&other));
    settings.AddStorageProc(TStorageProc::Of<&TStoredCounter::Define>(&none));
    settings.AddBinStorageProc(TBinStorageProc::Of<&TStoredCounter::DefineBlob>(&none));
    std::string bytes = FitSave(&settings);
    // Every storage procedure comes before every binary one; without data nothing is written.
    std::string expected =
        head + "\x07" + "Counter" + "\x03\x2C\x01" + "\x06" + "Second" + "\x02\x07" + "\x04" +
        "Blob" + std::string("\x0A\x03\x00\x00\x00\x00\x01\x02", 8) + std::string(2, '\0');
    EXPECT_EQ(bytes, expected);
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
