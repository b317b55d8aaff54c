// Fixed and free collections: the running program decides which items exist, and a stream only
// updates them. Keys are unique at Add; entries with unknown keys or identifiers are dropped;
// items the stream doesn't mention keep their state; nothing is ever created from a stream.
#include "persistence/SpcObjects.h"
#include "persistence/Storage.h"

#include "TestModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <sstream>

using namespace zelvane;
using namespace rtl;
using namespace scratch;

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

// The program's items, in order, as "Key=Value Note".
std::string Dump(const TKeyed& keyed) {
    std::string text;
    for (int i = 0; i < keyed.Count(); ++i)
        text += (i ? "," : "") + keyed.Item(i)->Key + "=" + std::to_string(keyed.Item(i)->Value) +
                (keyed.Item(i)->Note.empty() ? "" : " " + keyed.Item(i)->Note);
    return text;
}

// Fills keyed from a list as Dump writes it. Keys are set after Add, so that a file may repeat
// one, as an edited file may.
void Fill(TKeyed& keyed, const std::string& spec) {
    std::stringstream entries(spec);
    for (std::string entry; std::getline(entries, entry, ',');) {
        size_t eq = entry.find('='), blank = entry.find(' ');
        TKeyedItem* item = keyed.AddItem(std::to_string(keyed.Count()) + "#", 0);
        item->Key = entry.substr(0, eq);
        item->Value = std::stoi(entry.substr(eq + 1, blank - eq - 1));
        item->Note = blank == std::string::npos ? "" : entry.substr(blank + 1);
    }
}

// ---------------------------------------------------------------------------------------------
// TFixedCollection

TEST(FixedCollection, FileUpdatesTheItemsWhoseKeysItNamesAndMakesNone) {
    const struct {
        const char *what, *file, *program;
        bool reorder;
        const char* expected;
    } cases[] = {
        {"matched and unknown keys", "A=10 from file,Gone=99", "B=2 kept,A=1", false,
         "B=2 kept,A=10 from file"},
        {"empty keys, keys of another case", "=10,alpha=20", "=1,Alpha=2", false, "=1,Alpha=2"},
        {"repeated keys: the last wins", "A=10 first,A=20 second", "A=1", false, "A=20 second"},
        {"an empty collection stays empty", "A=10", "", false, ""},
        {"reorder to the file's positions", "C=3,A=1,B=2", "A=0,B=0,C=0", true, "C=3,A=1,B=2"},
        {"else the program's order", "C=3,A=1,B=2", "A=0,B=0,C=0", false, "A=1,B=2,C=3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        THolder file, program;
        Fill(*file.fixed, c.file);
        file.After = 5;
        Fill(*program.fixed, c.program);
        std::vector<TCollectionItem*> items, after;
        for (int i = 0; i < program.fixed->Count(); ++i)
            items.push_back(program.fixed->GetItem(i));
        program.reorder = c.reorder;
        FitLoad(&program, FitSave(&file));
        EXPECT_EQ(Dump(*program.fixed), c.expected);
        // The items are the program's own, moved at most; the reader went on behind them.
        for (int i = 0; i < program.fixed->Count(); ++i)
            after.push_back(program.fixed->GetItem(i));
        std::sort(items.begin(), items.end());
        std::sort(after.begin(), after.end());
        EXPECT_EQ(after, items);
        EXPECT_EQ(program.After, 5);
    }
}

TEST(FixedCollection, CollectionWithoutAnOwnerlessConstructorStillReads) {
    THolder file;
    file.fixed->AddItem("A", 10);
    std::string data = FitSave(&file);
    THolder program;
    TOwnedKeyed owned(&program);
    auto* a = As<TKeyedItem>(owned.Add("A"));
    program.fixedTarget = &owned;
    FitLoad(&program, data);
    EXPECT_EQ(a->Value, 10);
}

TEST(FixedCollection, ValueThatIsNoCollectionFailsTheRead) {
    THolder file;
    std::string data = FitSave(&file);
    size_t at = data.find("Fixed_");
    ASSERT_NE(at, std::string::npos);
    ASSERT_EQ(data[at + 6], '\x0E');
    data[at + 6] = '\x02'; // vaInt8, whose payload is the list end
    THolder program;
    EXPECT_THROW(FitLoad(&program, data), EReadError);
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
    EXPECT_EQ(model::MessageOf<EFreeCollectionError>([&] { free.Add(&b, "Editor"); }),
              "Object ''Editor'' already exists.");
    EXPECT_EQ(free.Count(), 2);
    EXPECT_EQ(free.FindObjectID("editor")->NestedObject, &b);
    EXPECT_EQ(free.FindObjectID("EDITOR"), nullptr);
    EXPECT_EQ(free.FindItemID(item->ID()), item);
    EXPECT_EQ(free[1]->AObjectID, "editor");
}

TEST(FreeCollection, FileUpdatesRegisteredObjectsOnlyAndMakesNone) {
    // Sizes are the index in the file plus one; a program's object starts at 0. The unknown entry
    // at position 0 of the second case moves nothing; "B" stands at 1 already; "A" at 2 lies
    // beyond the last item and goes to the end.
    const struct {
        std::vector<std::string> file, program;
        bool reorder;
        std::string expected;
    } cases[] = {{{"Gone", "A"}, {"B", "A", "gone"}, false, "B=0,A=2,gone=0"},
                 {{"Unknown", "B", "A"}, {"A", "B"}, true, "B=2,A=3"},
                 {{"B", "A"}, {"A", "B"}, true, "B=1,A=2"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        THolder file, program;
        std::deque<TLiveObject> stored(c.file.size()), live(c.program.size());
        for (size_t i = 0; i < c.file.size(); ++i) {
            stored[i].Size = static_cast<int32_t>(i + 1);
            stored[i].Caption = "stored";
            file.free->Add(&stored[i], c.file[i]);
        }
        file.After = 8;
        for (size_t i = 0; i < c.program.size(); ++i)
            program.free->Add(&live[i], c.program[i]);
        program.reorder = c.reorder;
        FitLoad(&program, FitSave(&file));
        std::string dump;
        for (int i = 0; i < program.free->Count(); ++i) {
            TWrapperItem* item = program.free->GetItem(i);
            auto* obj = static_cast<TLiveObject*>(item->NestedObject);
            dump += (i ? "," : "") + item->AObjectID + "=" + std::to_string(obj->Size);
            EXPECT_EQ(obj->Caption, obj->Size ? "stored" : "");
            EXPECT_TRUE(std::any_of(live.begin(), live.end(), [&](auto& o) { return &o == obj; }));
        }
        EXPECT_EQ(dump, c.expected);
        EXPECT_EQ(program.After, 8);
    }
}

TEST(FreeCollection, EntryWithoutTheIdentifierFirstFailsWith50536) {
    THolder file;
    TLiveObject live;
    file.free->Add(&live, "Live");
    std::string data = FitSave(&file);
    size_t at = data.find("AObjectID");
    ASSERT_NE(at, std::string::npos);
    data[at] = 'X';
    THolder program;
    model::DialogRecorder dialogs;
    std::string error = model::MessageOf<EReadError>([&] { FitLoad(&program, data, false); });
    EXPECT_NE(error.find("Property AObjectID not found"), std::string::npos) << error;
    EXPECT_TRUE(dialogs.texts.empty());
}

TEST(FreeCollection, BadValueInsideAnEntryGoesToTheReadersQuestion) {
    THolder file;
    TLiveObject live;
    live.Size = 6;
    live.Caption = "c";
    file.free->Add(&live, "Live");
    std::string data = FitSave(&file);
    size_t at = data.find("NestedObject.Size");
    ASSERT_NE(at, std::string::npos);
    data.replace(at, 17, "NestedObject.Sixe");
    THolder program;
    TLiveObject target;
    program.free->Add(&target, "Live");
    model::DialogRecorder dialogs;
    dialogs.answer = IDYES;
    FitLoad(&program, data, false);
    EXPECT_EQ(dialogs.texts.size(), 1u);
    EXPECT_EQ(target.Size, 0);
    EXPECT_EQ(target.Caption, "c");
}

} // namespace
