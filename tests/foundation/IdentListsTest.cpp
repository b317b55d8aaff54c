// Identifier lists: sorted by identifier, unique without regard to case, found by binary
// search, and counted references for the interface list.
#include "foundation/Classes.h"
#include "tests/rtl/TestSupport.h"

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

template <class TList> std::vector<std::string> Idents(TList& l) {
    std::vector<std::string> r;
    for (int i = 0; i < l.GetCount(); ++i)
        r.push_back(dynamic_cast<TNamed*>(l.GetItem(i))->Ident);
    return r;
}

template <class F> std::string ListError(F f) {
    return rtltest::MessageOf<EIdentListError>(f);
}

} // namespace

// --- both lists ------------------------------------------------------------------------------

// The object list and the interface list keep the same rules.
template <class TList> class IdentLists : public ::testing::Test {};
using ListTypes = ::testing::Types<TIdentList, TIdentIntfList>;
TYPED_TEST_SUITE(IdentLists, ListTypes);

TYPED_TEST(IdentLists, RefuseTwiceUsedInvalidIdentifiersAndObjectsWithoutTheInterface) {
    TNamed first("abc"), ok("_a1");
    TypeParam l;
    l.Add(&first);
    std::vector<std::string> refusals;
    for (const char* bad : {"ABC", "", "1abc", "a b", "\xE0"}) {
        TNamed n(bad);
        refusals.push_back(ListError([&] { l.Add(&n); }));
        EXPECT_EQ(n.Refs, 0) << bad;
    }
    refusals.push_back(ListError([&] { l.Add(nullptr); }));
    EXPECT_EQ(refusals, (std::vector<std::string>{"Identifier value must be unique [ABC]",
                                                  "Unacceptable value for identifier []",
                                                  "Unacceptable value for identifier [1abc]",
                                                  "Unacceptable value for identifier [a b]",
                                                  "Unacceptable value for identifier [\xE0]",
                                                  "Object should support interface IIdentIntf"}));
    EXPECT_NO_THROW(l.Add(&ok));
    EXPECT_EQ(l.GetCount(), 2);
    EXPECT_EQ(IIdentIntf::IID.ToString(), "{53251D11-A916-11D4-B1D7-000000000000}");
}

TYPED_TEST(IdentLists, FindGivesThePlaceOrTheInsertionPointAndIndexOfAndRemoveGoByIdentifier) {
    TNamed b("b"), d("d"), f("f");
    TypeParam l;
    int index = 5;
    EXPECT_FALSE(l.Find("x", index));
    EXPECT_EQ(index, 0);
    for (TNamed* n : {&d, &b, &f})
        l.Add(n);
    std::vector<std::pair<bool, int>> found;
    for (const char* ident : {"D", "a", "c", "z"})
        found.push_back({l.Find(ident, index), index});
    EXPECT_EQ(found,
              (std::vector<std::pair<bool, int>>{{true, 1}, {false, 0}, {false, 1}, {false, 3}}));
    // IndexOf and Remove go by identifier: another object of the same one will do.
    TNamed twin("D"), other("zz");
    EXPECT_EQ(
        (std::vector<int>{l.IndexOf(&twin), l.IndexOf(&other), l.Remove(&other), l.Remove(&twin)}),
        (std::vector<int>{1, -1, -1, 1}));
    EXPECT_EQ(Idents(l), (std::vector<std::string>{"b", "f"}));
}

// --- each list -------------------------------------------------------------------------------

TEST(IdentIntfList, HoldsCountedReferences) {
    TNamed a("a"), b("b"), c("c");
    {
        TIdentIntfList l;
        for (TNamed* n : {&b, &a, &c})
            l.Add(n);
        EXPECT_EQ(a.Refs, 1);
        l.Delete(0);
        EXPECT_EQ(a.Refs, 0);
        EXPECT_EQ(l.Remove(&c), 1);
        EXPECT_EQ(c.Refs, 0);
        EXPECT_EQ(b.Refs, 1);
    }
    EXPECT_EQ(b.Refs, 0); // released with the list
    TIdentIntfList l;
    l.Add(&a);
    l.Clear();
    EXPECT_EQ(a.Refs, 0);
}
