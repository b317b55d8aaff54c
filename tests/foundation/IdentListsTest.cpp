// Identifier lists: sorted by identifier, unique without regard to case, found by binary
// search, and counted references for the interface list.
#include "foundation/Classes.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace identtest {

// An object that names itself, not counted.
class TNamed : public rtl::TObject, public IIdentIntf {
    RTL_CLASS(TNamed, rtl::TObject)
public:
    explicit TNamed(std::string ident = {}) : Ident(std::move(ident)) {}
    std::string GetIdent() override { return Ident; }
    void SetIdent(const std::string& ident) override { Ident = ident; }
    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override {
        return GetInterface(iid, obj) ? rtl::S_OK : rtl::E_NOINTERFACE;
    }
    int32_t _AddRef() override { return ++Refs; }
    int32_t _Release() override { return --Refs; }
    std::string Ident;
    int Refs = 0;
};

} // namespace identtest

using identtest::TNamed;

RTL_BEGIN_CLASS(identtest::TNamed)
Implements<IIdentIntf>();
RTL_END_CLASS

namespace {

std::vector<std::string> Idents(TIdentList& l) {
    std::vector<std::string> r;
    for (int i = 0; i < l.GetCount(); ++i)
        r.push_back(dynamic_cast<TNamed*>(l.GetItem(i))->Ident);
    return r;
}

std::vector<std::string> Idents(TIdentIntfList& l) {
    std::vector<std::string> r;
    for (int i = 0; i < l.GetCount(); ++i)
        r.push_back(l.GetItem(i)->GetIdent());
    return r;
}

template <class F> std::string ListError(F f) {
    try {
        f();
    } catch (const EIdentListError& e) {
        return e.Message();
    }
    return "no EIdentListError";
}

} // namespace

TEST(IIdentIntf, HasItsGuid) {
    EXPECT_EQ(IIdentIntf::IID.ToString(), "{53251D11-A916-11D4-B1D7-000000000000}");
    TNamed n("x");
    EXPECT_TRUE(rtl::Supports(&n, IIdentIntf::IID));
}

// --- TIdentList ------------------------------------------------------------------------------

TEST(IdentList, AddKeepsTheOrderOfCompareText) {
    TIdentList l;
    TNamed c("Charlie"), a("alpha"), b("Bravo"), u("_under");
    EXPECT_EQ(l.Add(&c), 0);
    EXPECT_EQ(l.Add(&a), 0);
    EXPECT_EQ(l.Add(&b), 1);
    EXPECT_EQ(l.Add(&u), 3); // "_" after the letters by CompareText
    EXPECT_EQ(Idents(l), (std::vector<std::string>{"alpha", "Bravo", "Charlie", "_under"}));
}

TEST(IdentList, IdentifiersAreUniqueWithoutRegardToCase) {
    TIdentList l;
    TNamed a("abc"), b("ABC");
    l.Add(&a);
    EXPECT_EQ(ListError([&] { l.Add(&b); }), "Identifier value must be unique [ABC]");
    EXPECT_EQ(l.GetCount(), 1);
}

TEST(IdentList, OnlyValidIdentifiers) {
    TIdentList l;
    for (const char* bad : {"", "1abc", "a b", "a-b", "\xE0"}) {
        TNamed n(bad);
        EXPECT_EQ(ListError([&] { l.Add(&n); }),
                  "Unacceptable value for identifier [" + std::string(bad) + "]");
    }
    TNamed ok("_a1");
    EXPECT_NO_THROW(l.Add(&ok));
}

TEST(IdentList, ObjectsWithoutTheInterfaceFail) {
    TIdentList l;
    rtl::TObject plain;
    const std::string text = "Object should support interface IIdentIntf";
    EXPECT_EQ(ListError([&] { l.Add(&plain); }), text);
    EXPECT_EQ(ListError([&] { l.Add(nullptr); }), text);
    EXPECT_EQ(ListError([&] { l.IndexOf(&plain); }), text);
}

TEST(IdentList, FindGivesThePlaceOrTheInsertionPoint) {
    TIdentList l;
    int index = 5;
    EXPECT_FALSE(l.Find("x", index));
    EXPECT_EQ(index, 0);
    TNamed b("b"), d("d"), f("f");
    l.Add(&d);
    l.Add(&b);
    l.Add(&f);
    EXPECT_TRUE(l.Find("D", index));
    EXPECT_EQ(index, 1);
    EXPECT_FALSE(l.Find("a", index));
    EXPECT_EQ(index, 0);
    EXPECT_FALSE(l.Find("c", index));
    EXPECT_EQ(index, 1);
    EXPECT_FALSE(l.Find("z", index));
    EXPECT_EQ(index, 3);
}

TEST(IdentList, IndexOfAndRemoveGoByIdentifier) {
    TIdentList l;
    TNamed a("a"), b("b"), twin("B"), other("zz");
    l.Add(&a);
    l.Add(&b);
    EXPECT_EQ(l.IndexOf(&twin), 1); // another object of the same identifier
    EXPECT_EQ(l.IndexOf(&other), -1);
    EXPECT_EQ(l.Remove(&other), -1);
    EXPECT_EQ(l.Remove(&twin), 1);
    EXPECT_EQ(Idents(l), (std::vector<std::string>{"a"}));
}

TEST(IdentList, DeleteClearAndBounds) {
    TIdentList l;
    TNamed a("a"), b("b");
    l.Add(&a);
    l.Add(&b);
    l.Delete(0);
    EXPECT_EQ(l.GetItem(0), &b);
    EXPECT_THROW(l.Delete(1), rtl::EListError);
    EXPECT_THROW(l.GetItem(-1), rtl::EListError);
    l.Clear();
    EXPECT_EQ(l.GetCount(), 0);
    EXPECT_THROW(l.GetItem(0), rtl::EListError);
}

// --- TIdentIntfList --------------------------------------------------------------------------

TEST(IdentIntfList, HoldsCountedReferences) {
    TNamed a("a"), b("b"), c("c");
    {
        TIdentIntfList l;
        l.Add(&b);
        l.Add(&a);
        l.Add(&c);
        EXPECT_EQ(a.Refs, 1);
        EXPECT_EQ(Idents(l), (std::vector<std::string>{"a", "b", "c"}));
        l.Delete(0);
        EXPECT_EQ(a.Refs, 0);
        EXPECT_EQ(l.Remove(&c), 1);
        EXPECT_EQ(c.Refs, 0);
        EXPECT_EQ(b.Refs, 1);
    }
    EXPECT_EQ(b.Refs, 0); // released with the list
}

TEST(IdentIntfList, SameRulesAsTheObjectList) {
    TIdentIntfList l;
    TNamed a("Name"), dup("NAME"), bad("9x"), empty("");
    l.Add(&a);
    EXPECT_EQ(ListError([&] { l.Add(&dup); }), "Identifier value must be unique [NAME]");
    EXPECT_EQ(ListError([&] { l.Add(&bad); }), "Unacceptable value for identifier [9x]");
    EXPECT_EQ(ListError([&] { l.Add(&empty); }), "Unacceptable value for identifier []");
    EXPECT_EQ(ListError([&] { l.Add(nullptr); }), "Object should support interface IIdentIntf");
    EXPECT_EQ(dup.Refs, 0);
    EXPECT_EQ(l.IndexOf(&dup), 0);
    TNamed missing("other");
    EXPECT_EQ(l.Remove(&missing), -1);
    int index = -1;
    EXPECT_FALSE(l.Find("zzz", index));
    EXPECT_EQ(index, 1);
    l.Clear();
    EXPECT_EQ(a.Refs, 0);
    EXPECT_FALSE(l.Find("x", index));
    EXPECT_EQ(index, 0);
}
