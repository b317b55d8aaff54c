// Fixed and free collections: the running program decides which items exist, and a stream only
// updates them. Keys are unique at Add; entries with unknown keys or identifiers are dropped;
// items the stream doesn't mention keep their state; nothing is ever created from a stream.
#include "persistence/Storage.h"
#include "persistence/SpcObjects.h"

#include "TestModel.h"

#include <gtest/gtest.h>

#include <memory>

using namespace zelvane;
using namespace rtl;

namespace {

class TKeyedItem : public TSpcItem {
    RTL_CLASS(TKeyedItem, TSpcItem)
public:
    explicit TKeyedItem(TCollection* c = nullptr) : TSpcItem(c) {}
    std::string Key;
    int32_t Value = 0;
    std::string Note;
};

class TKeyed : public TFixedCollection {
    RTL_CLASS(TKeyed, TFixedCollection)
public:
    using TConstructorArg = TPersistent;
    explicit TKeyed(TPersistent* owner = nullptr)
        : TFixedCollection(owner, TKeyedItem::StaticClass()) {}
    std::string GetUpdateName() const override { return "Key"; }
    TKeyedItem* Item(int i) const { return As<TKeyedItem>(GetItem(i)); }
    TKeyedItem* AddItem(const std::string& key, int32_t value) {
        auto* item = As<TKeyedItem>(Add(key));
        item->Value = value;
        return item;
    }
};

// A fixed collection that can't be made without an owner: its entries are read into a plain
// collection of its item class.
class TOwnedKeyed : public TFixedCollection {
    RTL_CLASS(TOwnedKeyed, TFixedCollection)
public:
    explicit TOwnedKeyed(TPersistent* owner) : TFixedCollection(owner, TKeyedItem::StaticClass()) {}
    std::string GetUpdateName() const override { return "Key"; }
};

class TLiveObject : public TNestedObject {
    RTL_CLASS(TLiveObject, TNestedObject)
public:
    int32_t Size = 0;
    std::string Caption;
};

// Holds one collection of each kind and stores them as defined properties, as a settings root
// does; then a last published value, to see where the reader stands afterwards.
class THolder : public TSpcObject {
    RTL_CLASS(THolder, TSpcObject)
public:
    THolder()
        : fixed(std::make_unique<TKeyed>(this)),
          free(std::make_unique<TFreeCollection>(this, TWrapperItem::StaticClass())) {}
    std::unique_ptr<TKeyed> fixed;
    std::unique_ptr<TFreeCollection> free;
    TFixedCollection* fixedTarget = nullptr; // read into this one instead, when set
    bool reorder = false;
    int32_t After = 0;

    void DefineProperties(TFiler* filer) override {
        filer->DefineProperty(
            "Fixed_",
            [this](TReader* r) {
                auto* fit = dynamic_cast<TFitReader*>(r);
                ASSERT_NE(fit, nullptr);
                fit->ReadFixedCollection(fixedTarget ? fixedTarget : fixed.get(), reorder);
            },
            [this](TWriter* w) { static_cast<TFitWriter*>(w)->WriteCollectionEx(fixed.get()); },
            true);
        filer->DefineProperty(
            "Free_",
            [this](TReader* r) {
                static_cast<TFitReader*>(r)->ReadFreeCollection(free.get(), reorder);
            },
            [this](TWriter* w) { static_cast<TFitWriter*>(w)->WriteCollectionEx(free.get()); },
            true);
    }
};

RTL_BEGIN_CLASS(TKeyedItem)
Property("Key", &TKeyedItem::Key);
Property("Value", &TKeyedItem::Value);
Property("Note", &TKeyedItem::Note);
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TKeyed)
RTL_IMPLEMENT_CLASS(TOwnedKeyed)
RTL_BEGIN_CLASS(TLiveObject)
Property("Size", &TLiveObject::Size);
Property("Caption", &TLiveObject::Caption);
RTL_END_CLASS
RTL_BEGIN_CLASS(THolder)
Property("After", &THolder::After);
RTL_END_CLASS

std::string Save(THolder& holder) {
    TStringStream stream;
    TFitWriter writer(&stream);
    writer.WriteAsComponent(&holder, "");
    writer.FlushBuffer();
    return stream.DataString();
}

void Load(THolder& holder, const std::string& data, bool ignoreErrors = true) {
    TStringStream stream(data);
    TFitReader reader(&stream);
    reader.IgnoreErrors = ignoreErrors;
    std::string name;
    reader.ReadAsComponent(&holder, name);
}

// ---------------------------------------------------------------------------------------------
// TFixedCollection

TEST(FixedCollection, AddRefusesAKeyTwiceCaseSensitively) {
    TKeyed keyed;
    keyed.AddItem("Alpha", 1);
    TSpcItem* other = keyed.Add("alpha");
    EXPECT_EQ(As<TKeyedItem>(other)->Key, "alpha");
    try {
        keyed.Add("Alpha");
        FAIL() << "no exception";
    } catch (const EFixedCollectionError& e) {
        EXPECT_EQ(e.Message(), "Collection\x92s element ''Alpha'' already exists.");
    }
    EXPECT_EQ(keyed.Count(), 2);
}

TEST(FixedCollection, FileUpdatesTheItemsWhoseKeysItNames) {
    THolder file;
    file.fixed->AddItem("A", 10)->Note = "from file";
    file.fixed->AddItem("Gone", 99);
    file.After = 5;
    std::string data = Save(file);

    THolder program;
    TKeyedItem* b = program.fixed->AddItem("B", 2);
    b->Note = "kept";
    TKeyedItem* a = program.fixed->AddItem("A", 1);
    Load(program, data);
    ASSERT_EQ(program.fixed->Count(), 2);
    EXPECT_EQ(program.fixed->Item(0), b);
    EXPECT_EQ(program.fixed->Item(1), a);
    EXPECT_EQ(a->Value, 10);
    EXPECT_EQ(a->Note, "from file");
    EXPECT_EQ(b->Value, 2);
    EXPECT_EQ(b->Note, "kept");
    // The reader went on behind the collection.
    EXPECT_EQ(program.After, 5);
}

TEST(FixedCollection, EmptyKeysAndKeysOfAnotherCaseNeverMatch) {
    THolder file;
    file.fixed->AddItem("", 10);
    file.fixed->AddItem("alpha", 20);
    std::string data = Save(file);
    THolder program;
    TKeyedItem* empty = program.fixed->AddItem("", 1);
    TKeyedItem* alpha = program.fixed->AddItem("Alpha", 2);
    Load(program, data);
    EXPECT_EQ(empty->Value, 1);
    EXPECT_EQ(alpha->Value, 2);
}

TEST(FixedCollection, RepeatedKeysApplyInOrderTheLastWins) {
    // Two entries with one key, as an edited file may hold.
    THolder file;
    file.fixed->AddItem("A", 10)->Note = "first";
    file.fixed->AddItem("B", 20)->Note = "second";
    std::string data = Save(file);
    size_t at = data.find("\x01"
                          "B");
    ASSERT_NE(at, std::string::npos);
    data[at + 1] = 'A';
    THolder program;
    TKeyedItem* a = program.fixed->AddItem("A", 1);
    Load(program, data);
    EXPECT_EQ(a->Value, 20);
    EXPECT_EQ(a->Note, "second");
}

TEST(FixedCollection, EmptyCollectionStaysEmptyAndTheStreamGoesOn) {
    THolder file;
    file.fixed->AddItem("A", 10);
    file.After = 77;
    std::string data = Save(file);
    THolder program;
    Load(program, data);
    EXPECT_EQ(program.fixed->Count(), 0);
    EXPECT_EQ(program.After, 77);
}

TEST(FixedCollection, ReorderMovesMatchedItemsToTheFilesPositions) {
    THolder file;
    file.fixed->AddItem("C", 3);
    file.fixed->AddItem("A", 1);
    file.fixed->AddItem("B", 2);
    std::string data = Save(file);
    THolder program;
    program.reorder = true;
    TKeyedItem* a = program.fixed->AddItem("A", 0);
    TKeyedItem* b = program.fixed->AddItem("B", 0);
    TKeyedItem* c = program.fixed->AddItem("C", 0);
    Load(program, data);
    EXPECT_EQ(program.fixed->Item(0), c);
    EXPECT_EQ(program.fixed->Item(1), a);
    EXPECT_EQ(program.fixed->Item(2), b);
    EXPECT_EQ(b->Value, 2);

    // Without the flag the order is the program's.
    THolder still;
    TKeyedItem* a2 = still.fixed->AddItem("A", 0);
    still.fixed->AddItem("B", 0);
    still.fixed->AddItem("C", 0);
    Load(still, data);
    EXPECT_EQ(still.fixed->Item(0), a2);
    EXPECT_EQ(a2->Value, 1);
}

TEST(FixedCollection, CollectionWithoutAnOwnerlessConstructorStillReads) {
    THolder file;
    file.fixed->AddItem("A", 10);
    std::string data = Save(file);
    THolder program;
    TOwnedKeyed owned(&program);
    auto* a = As<TKeyedItem>(owned.Add("A"));
    program.fixedTarget = &owned;
    Load(program, data);
    EXPECT_EQ(a->Value, 10);
}

TEST(FixedCollection, ValueThatIsNoCollectionFailsTheRead) {
    THolder file;
    std::string data = Save(file);
    size_t at = data.find("Fixed_");
    ASSERT_NE(at, std::string::npos);
    ASSERT_EQ(data[at + 6], '\x0E');
    data[at + 6] = '\x02'; // vaInt8, whose payload is the list end
    THolder program;
    EXPECT_THROW(Load(program, data), EReadError);
}

// ---------------------------------------------------------------------------------------------
// TFreeCollection

TEST(FreeCollection, ItemClassMustWrapObjects) {
    EXPECT_THROW(TFreeCollection(nullptr, TKeyedItem::StaticClass()), EFreeCollectionError);
    EXPECT_THROW(TFreeCollection(nullptr, nullptr), EFreeCollectionError);
    TFreeCollection ok(nullptr, TWrapperItem::StaticClass());
    EXPECT_EQ(ok.GetItemClass(), TWrapperItem::StaticClass());
}

TEST(FreeCollection, AddRefusesAnIdentifierTwiceCaseSensitively) {
    TLiveObject a, b;
    TFreeCollection free(nullptr, TWrapperItem::StaticClass());
    TWrapperItem* item = free.Add(&a, "Editor");
    EXPECT_EQ(item->NestedObject, &a);
    EXPECT_EQ(item->AObjectID, "Editor");
    EXPECT_NE(free.Add(&b, "editor"), nullptr);
    try {
        free.Add(&b, "Editor");
        FAIL() << "no exception";
    } catch (const EFreeCollectionError& e) {
        EXPECT_EQ(e.Message(), "Object ''Editor'' already exists.");
    }
    EXPECT_EQ(free.Count(), 2);
    EXPECT_EQ(free.FindObjectID("editor")->NestedObject, &b);
    EXPECT_EQ(free.FindObjectID("EDITOR"), nullptr);
    EXPECT_EQ(free.FindItemID(item->ID()), item);
    EXPECT_EQ(free[1]->AObjectID, "editor");
}

TEST(FreeCollection, ItemsDontOwnTheirObjects) {
    auto obj = std::make_unique<TLiveObject>();
    {
        TFreeCollection free(nullptr, TWrapperItem::StaticClass());
        free.Add(obj.get(), "Live");
    }
    obj->Size = 3; // still alive: the sanitizer sees a use after free otherwise
    EXPECT_EQ(obj->Size, 3);
}

TEST(FreeCollection, AssignSharesTheObjectsAndCopiesNodeNames) {
    TLiveObject a, b;
    TFreeCollection source(nullptr, TWrapperItem::StaticClass());
    source.Add(&a, "A")->SetNodeName("Object A");
    source.Add(&b, "B");
    TFreeCollection copy(nullptr, TWrapperItem::StaticClass());
    TLiveObject old;
    copy.Add(&old, "Old");
    copy.Assign(&source);
    ASSERT_EQ(copy.Count(), 2);
    EXPECT_EQ(copy.GetItem(0)->NestedObject, &a);
    EXPECT_EQ(copy.GetItem(0)->NodeName(), "Object A");
    EXPECT_EQ(copy.GetItem(1)->AObjectID, "B");
    EXPECT_EQ(copy.FindObjectID("Old"), nullptr);
}

TEST(FreeCollection, StoredAsIdentifierThenTheObjectsProperties) {
    THolder holder;
    TLiveObject live;
    live.Size = 4;
    holder.free->Add(&live, "Live");
    std::string data = Save(holder);
    std::string entry = std::string("\x01") + "\x09" + "AObjectID" + "\x06\x04" + "Live" + "\x11" +
                        "NestedObject.Size" + "\x02\x04";
    EXPECT_NE(data.find(entry), std::string::npos) << model::HexBytes(data);
}

TEST(FreeCollection, FileUpdatesRegisteredObjectsOnly) {
    THolder file;
    TLiveObject fa, fgone;
    fa.Size = 10;
    fa.Caption = "stored";
    fgone.Size = 99;
    file.free->Add(&fgone, "Gone");
    file.free->Add(&fa, "A");
    file.After = 8;
    std::string data = Save(file);

    THolder program;
    TLiveObject a, b, sameButCase;
    b.Size = 2;
    program.free->Add(&b, "B");
    program.free->Add(&a, "A");
    program.free->Add(&sameButCase, "gone");
    Load(program, data);
    EXPECT_EQ(a.Size, 10);
    EXPECT_EQ(a.Caption, "stored");
    EXPECT_EQ(b.Size, 2);
    EXPECT_EQ(sameButCase.Size, 0);
    EXPECT_EQ(program.free->Count(), 3);
    EXPECT_EQ(program.free->GetItem(0)->NestedObject, &b);
    EXPECT_EQ(program.After, 8);
}

TEST(FreeCollection, EntryWithoutTheIdentifierFirstFailsWith50536) {
    THolder file;
    TLiveObject live;
    file.free->Add(&live, "Live");
    std::string data = Save(file);
    size_t at = data.find("AObjectID");
    ASSERT_NE(at, std::string::npos);
    data[at] = 'X';
    THolder program;
    model::DialogRecorder dialogs;
    try {
        Load(program, data, false);
        FAIL() << "no exception";
    } catch (const EReadError& e) {
        EXPECT_NE(e.Message().find("Property AObjectID not found"), std::string::npos)
            << e.Message();
    }
    EXPECT_TRUE(dialogs.texts.empty());
}

TEST(FreeCollection, BadValueInsideAnEntryGoesToTheReadersQuestion) {
    THolder file;
    TLiveObject live;
    live.Size = 6;
    live.Caption = "c";
    file.free->Add(&live, "Live");
    std::string data = Save(file);
    size_t at = data.find("NestedObject.Size");
    ASSERT_NE(at, std::string::npos);
    data.replace(at, 17, "NestedObject.Sixe");
    THolder program;
    TLiveObject target;
    program.free->Add(&target, "Live");
    model::DialogRecorder dialogs;
    dialogs.answer = IDYES;
    Load(program, data, false);
    EXPECT_EQ(dialogs.texts.size(), 1u);
    EXPECT_EQ(target.Size, 0);
    EXPECT_EQ(target.Caption, "c");
}

TEST(FreeCollection, ReorderMovesFoundItemsAndLeavesOrderBeforeAnyFound) {
    THolder file;
    TLiveObject x, a, b;
    file.free->Add(&x, "Unknown");
    file.free->Add(&b, "B");
    file.free->Add(&a, "A");
    std::string data = Save(file);
    THolder program;
    program.reorder = true;
    TLiveObject pa, pb;
    TWrapperItem* ia = program.free->Add(&pa, "A");
    TWrapperItem* ib = program.free->Add(&pb, "B");
    Load(program, data);
    // The unknown entry at position 0 moves nothing; "B" stands at 1 already; "A" at 2 lies
    // beyond the last item and goes to the end.
    EXPECT_EQ(program.free->GetItem(0), ib);
    EXPECT_EQ(program.free->GetItem(1), ia);

    THolder swapped;
    swapped.reorder = true;
    TWrapperItem* sa = swapped.free->Add(&pa, "A");
    TWrapperItem* sb = swapped.free->Add(&pb, "B");
    THolder file2;
    file2.free->Add(&b, "B");
    file2.free->Add(&a, "A");
    Load(swapped, Save(file2));
    EXPECT_EQ(swapped.free->GetItem(0), sb);
    EXPECT_EQ(swapped.free->GetItem(1), sa);
}

} // namespace
