// Collections: adding, inserting, deleting and moving items, item IDs, name paths, Assign, the
// update bracket and the class of the items.
#include "rtl/Classes.h"
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <utility>

using namespace rtl;
using namespace rtltest;

namespace colls {

class TBookItem : public TCollectionItem {
    RTL_CLASS(TBookItem, TCollectionItem)
public:
    explicit TBookItem(TCollection* collection = nullptr) : TCollectionItem(collection) {}
    ~TBookItem() override { ++destroyed; }
    std::string Title;
    void Assign(TPersistent* source) override {
        if (auto* b = dynamic_cast<TBookItem*>(source)) {
            Title = b->Title;
            return;
        }
        TCollectionItem::Assign(source);
    }
    static inline int destroyed = 0;

protected:
    std::string GetDisplayName() const override {
        return Title.empty() ? TCollectionItem::GetDisplayName() : Title;
    }
};

// An item class of its own, to be refused by a collection of books.
class TMapItem : public TCollectionItem {
    RTL_CLASS(TMapItem, TCollectionItem)
public:
    explicit TMapItem(TCollection* collection = nullptr) : TCollectionItem(collection) {}
};

// Records the calls of Update.
class TBooks : public TOwnedCollection {
    RTL_CLASS(TBooks, TOwnedCollection)
public:
    explicit TBooks(TPersistent* owner) : TOwnedCollection(owner, TBookItem::StaticClass()) {}
    TBookItem* Book(int index) const { return static_cast<TBookItem*>(GetItem(index)); }
    TBookItem* AddBook(std::string title) {
        auto* b = static_cast<TBookItem*>(Add());
        b->Title = std::move(title);
        return b;
    }
    std::vector<TCollectionItem*> updates;

protected:
    void Update(TCollectionItem* item) override { updates.push_back(item); }
};

// A component that publishes its collection.
class TShelf : public TComponent {
    RTL_CLASS(TShelf, TComponent)
public:
    explicit TShelf(TComponent* owner = nullptr) : TComponent(owner), books_(this) {}
    TBooks* Books() const { return const_cast<TBooks*>(&books_); }

private:
    TBooks books_;
};

RTL_BEGIN_CLASS(TBookItem)
Property("Title", &TBookItem::Title);
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TMapItem)
RTL_IMPLEMENT_CLASS(TBooks)
RTL_BEGIN_CLASS(TShelf)
Property("Books", &TShelf::Books, nullptr);
RTL_END_CLASS

} // namespace colls

using namespace colls;

namespace {

// A collection of books that each test fills as it needs.
class Collections : public ::testing::Test {
protected:
    void Fill(std::initializer_list<const char*> titles) {
        for (const char* t : titles)
            books.AddBook(t);
    }
    V Titles() const { return Titles(books); }
    static V Titles(const TBooks& books) {
        V t;
        for (int i = 0; i < books.Count(); ++i)
            t.push_back(books.Book(i)->Title);
        return t;
    }
    static std::vector<int32_t> Ids(const TCollection& c) {
        std::vector<int32_t> ids;
        for (int i = 0; i < c.Count(); ++i)
            ids.push_back(c[i]->ID());
        return ids;
    }
    TBooks books{nullptr};
};

} // namespace

// ---------------------------------------------------------------------------------------------
// Adding and removing

TEST_F(Collections, InsertDeleteAndClear) {
    Fill({"b", "d"});
    static_cast<TBookItem*>(books.Insert(0))->Title = "a";
    static_cast<TBookItem*>(books.Insert(2))->Title = "c";
    EXPECT_EQ(Titles(), (V{"a", "b", "c", "d"}));
    books.Delete(1);
    EXPECT_EQ(books[2]->Index(), 2);
    EXPECT_THROW(books.Delete(3), EListError);
    EXPECT_THROW(books.Delete(-1), EListError);
    EXPECT_THROW(books.GetItem(3), EListError);
    // Freeing an item takes it out.
    delete books.Book(1);
    EXPECT_EQ(Titles(), (V{"a", "d"}));
    int before = TBookItem::destroyed;
    books.Clear();
    EXPECT_EQ(books.Count(), 0);
    EXPECT_EQ(TBookItem::destroyed - before, 2);
}

// ---------------------------------------------------------------------------------------------
// IDs

TEST_F(Collections, FindItemIdFollowsTheItem) {
    Fill({"a", "b", "c"});
    auto* b = books.Book(1);
    TCollectionItem* before = books.FindItemID(1);
    b->SetIndex(0);
    TCollectionItem* moved = books.FindItemID(1);
    books.Delete(0);
    EXPECT_EQ(
        std::vector<TCollectionItem*>({before, moved, books.FindItemID(1), books.FindItemID(99)}),
        std::vector<TCollectionItem*>({b, b, nullptr, nullptr}));
    EXPECT_EQ(books.FindItemID(2)->Index(), 1);
}

// ---------------------------------------------------------------------------------------------
// The class of the items

TEST_F(Collections, ItemsOfAWrongClassAreRefused) {
    Fill({"a"});
    auto* map = new TMapItem(nullptr);
    auto* plain = new TCollectionItem(nullptr); // the base item class is no book either
    EXPECT_THROW(map->SetCollection(&books), Exception);
    EXPECT_THROW(plain->SetCollection(&books), Exception);
    EXPECT_EQ(map->Collection(), nullptr);
    EXPECT_EQ(std::pair(books.Count(), books.NextID()), std::pair(1, 1));
    delete map;
    delete plain;
    // A collection of base items takes any item.
    TCollection any(TCollectionItem::StaticClass());
    auto* book = new TBookItem(&any);
    EXPECT_EQ(book->Collection(), &any);
    EXPECT_EQ(any.Count(), 1);
}

// ---------------------------------------------------------------------------------------------
// Name paths

TEST_F(Collections, NamePathsGoThroughTheOwnersProperty) {
    TShelf shelf;
    shelf.SetName("Shelf1");
    TBooks* books = shelf.Books();
    for (const char* t : {"a", "b", "c"})
        books->AddBook(t);
    EXPECT_EQ(books->PropName(), "Books");
    const V before = {books->GetNamePath(), books->Book(2)->GetNamePath(),
                      books->Book(0)->GetNamePath()};
    // The index in the path follows moves.
    books->Book(2)->SetIndex(0);
    EXPECT_EQ(books->Book(0)->Title, "c");
    // Without a named owner, the class names stand in.
    TShelf unnamed;
    unnamed.Books()->AddBook("a");
    TCollection loose(TBookItem::StaticClass());
    loose.Add();
    TBookItem alone;
    EXPECT_EQ(V({books->Book(0)->GetNamePath(), unnamed.Books()->GetNamePath(),
                 unnamed.Books()->Book(0)->GetNamePath(), loose.GetNamePath(),
                 loose[0]->GetNamePath(), alone.GetNamePath(), alone.DisplayName()}),
              V({"Shelf1.Books[0]", "TBooks", "TBooks[0]", "TCollection", "TCollection[0]",
                 "TBookItem", "TBookItem"}));
    EXPECT_EQ(before, V({"Shelf1.Books", "Shelf1.Books[2]", "Shelf1.Books[0]"}));
    alone.Title = "Dune";
    EXPECT_EQ(alone.DisplayName(), "Dune");
}

// ---------------------------------------------------------------------------------------------
// Assign

TEST_F(Collections, AssignCopiesTheItems) {
    TBooks source(nullptr), dest(nullptr);
    for (const char* t : {"a", "b", "c"})
        source.AddBook(t);
    dest.AddBook("old");
    dest.updates.clear();
    dest.Assign(&source);
    EXPECT_EQ(Titles(dest), (V{"a", "b", "c"}));
    EXPECT_EQ(Titles(source), (V{"a", "b", "c"}));
    // The copies are the destination's own items, with its IDs.
    EXPECT_NE(dest[0], source[0]);
    EXPECT_EQ(Ids(dest), (std::vector<int32_t>{1, 2, 3}));
    // One update for the whole assignment.
    ASSERT_EQ(dest.updates.size(), 1u);
    EXPECT_EQ(dest.updates[0], nullptr);
}

TEST_F(Collections, AssignFromAnotherKindOfObjectRaises) {
    TComponent c;
    EXPECT_EQ(MessageOf<EConvertError>([&] { books.Assign(&c); }),
              "Cannot assign a TComponent to a TBooks");
    // Items without an Assign of their own can't be copied.
    TCollection plainSource(TCollectionItem::StaticClass());
    TCollection plainDest(TCollectionItem::StaticClass());
    plainSource.Add();
    EXPECT_THROW(plainDest.Assign(&plainSource), EConvertError);
    EXPECT_EQ(plainDest.UpdateCount(), 0) << "the update bracket is closed after a failure";
}

// ---------------------------------------------------------------------------------------------
// Updates and notifications

TEST_F(Collections, EachChangeUpdatesOnce) {
    books.AddBook("a");
    EXPECT_EQ(books.updates, std::vector<TCollectionItem*>{nullptr});
    books.updates.clear();
    books.AddBook("b");
    books.Delete(0);
    EXPECT_EQ(books.updates.size(), 2u);
    // A change of one item updates that item.
    books.updates.clear();
    books.Book(0)->SetDisplayName("z");
    EXPECT_EQ(books.updates, std::vector<TCollectionItem*>{books.Book(0)});
}
