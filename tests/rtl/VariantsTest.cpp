// Variants and the Windows-1251 code page: type codes, conversions as the platform performs
// them, Null and Empty, and round trips of every byte through UTF-16 and UTF-8.
#include "rtl/Variants.h"
#include "rtl/CodePage.h"
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <algorithm>
#include <limits>

using namespace rtl;

// ---------------------------------------------------------------------------------------------
// Type codes

TEST(Variants, TypeCodesAreThePlatforms) {
    EXPECT_EQ(std::vector<int>({Variant().VarType(), Variant::Null().VarType(),
                                Variant(int32_t(1)).VarType(), Variant(1.5).VarType(),
                                Variant(std::u16string(u"x")).VarType(), Variant(true).VarType(),
                                Variant(int64_t(1)).VarType(), Variant("x").VarType()}),
              std::vector<int>({0x0000, 0x0001, 0x0003, 0x0005, 0x0008, 0x000B, 0x0014, 0x0100}));
}

// ---------------------------------------------------------------------------------------------
// Conversions

TEST(Variants, NumbersAndBooleansToText) {
    // Exponents as the platform's FloatToStr writes them.
    EXPECT_EQ(std::vector<std::string>(
                  {Variant(int32_t(-17)).AsString(), Variant(int64_t(1) << 40).AsString(),
                   Variant(-12.25).AsString(), Variant(0.1).AsString(), Variant(0.0001).AsString(),
                   Variant(123456789012345.0).AsString(), Variant(1e20).AsString(),
                   Variant(0.00001).AsString(), Variant(-2.5e-100).AsString(),
                   Variant(true).AsString(), Variant(false).AsString()}),
              std::vector<std::string>({"-17", "1099511627776", "-12.25", "0.1", "0.0001",
                                        "123456789012345", "1E20", "1E-5", "-2.5E-100", "True",
                                        "False"}));
}

TEST(Variants, TextAndBooleansToNumbers) {
    EXPECT_EQ(std::vector<int64_t>({Variant("123").AsInteger(), Variant("-5").AsInt64(),
                                    Variant("1099511627776").AsInt64(),
                                    Variant(std::u16string(u"77")).AsInteger(),
                                    Variant(true).AsInteger(), Variant(false).AsInteger()}),
              std::vector<int64_t>({123, -5, int64_t(1) << 40, 77, -1, 0}));
    EXPECT_EQ(std::vector<long double>({Variant(int32_t(3)).AsReal(), Variant("2.5").AsReal(),
                                        Variant("-0.125").AsReal(), Variant("1E20").AsReal(),
                                        Variant(true).AsReal()}),
              std::vector<long double>({3.0L, 2.5L, -0.125L, 1e20L, -1.0L}));
}

TEST(Variants, RealsRoundToEvenWhenMadeIntegersAndBeyondTheRangeRaise) {
    // The platform's Round: halves go to the even neighbour.
    EXPECT_EQ(std::vector<int64_t>({Variant(2.5).AsInteger(), Variant(3.5).AsInteger(),
                                    Variant(-2.5).AsInteger(), Variant(0.5).AsInteger(),
                                    Variant(2.4).AsInteger(), Variant(2.6).AsInteger(),
                                    Variant(-2.6).AsInt64(), Variant("4.5").AsInteger(),
                                    Variant(-9007199254740992.0).AsInt64()}),
              std::vector<int64_t>({2, 4, -2, 0, 2, 3, -3, 4, -9007199254740992}));
    EXPECT_THROW(Variant(1e30).AsInt64(), EVariantError);
    EXPECT_THROW(Variant(-1e30).AsInteger(), EVariantError);
    EXPECT_THROW(Variant("1e300").AsInt64(), EVariantError);
    EXPECT_THROW(Variant(std::numeric_limits<double>::quiet_NaN()).AsInt64(), EVariantError);
    EXPECT_THROW(Variant(std::numeric_limits<double>::infinity()).AsInt64(), EVariantError);
}

TEST(Variants, Booleans) {
    std::vector<bool> truth;
    for (const Variant& v : {Variant("true"), Variant("TRUE"), Variant("False"), Variant("1"),
                             Variant("0"), Variant(int32_t(5)), Variant(int32_t(0)), Variant(0.25)})
        truth.push_back(v.AsBoolean());
    EXPECT_EQ(truth, std::vector<bool>({true, true, false, true, false, true, false, true}));
    EXPECT_THROW(Variant("yes").AsBoolean(), EVariantError);
}

TEST(Variants, TextThatIsNoNumberRaises) {
    for (const char* bad : {"abc", "", "12abc", "1,5", "--1"}) {
        EXPECT_THROW(Variant(bad).AsInteger(), EVariantError) << bad;
        EXPECT_THROW(Variant(bad).AsReal(), EVariantError) << bad;
    }
    EXPECT_NE(rtltest::MessageOf<EVariantError>([] {
                  Variant("abc").AsInteger();
              }).find("Could not convert variant"),
              std::string::npos);
}

TEST(Variants, EmptyIsZeroAndEmptyTextNullRaisesOnEveryConversion) {
    Variant v;
    EXPECT_EQ(v.AsInteger(), 0);
    EXPECT_EQ(v.AsInt64(), 0);
    EXPECT_EQ(v.AsReal(), 0.0L);
    EXPECT_EQ(v.AsString(), "");
    EXPECT_EQ(v.AsWideString(), u"");
    EXPECT_FALSE(v.AsBoolean());
    // A variant error is an Exception of the runtime.
    const Variant n = Variant::Null();
    for (const auto& convert : std::initializer_list<std::function<void()>>{
             [&] { n.AsInteger(); }, [&] { n.AsInt64(); }, [&] { n.AsReal(); },
             [&] { n.AsString(); }, [&] { n.AsWideString(); }, [&] { n.AsBoolean(); }})
        EXPECT_THROW(convert(), EVariantError);
    EXPECT_THROW(n.AsString(), Exception);
}

// ---------------------------------------------------------------------------------------------
// Windows-1251

TEST(CodePage, EveryAssignedByteRoundTripsThroughUtf16AndUtf8) {
    std::string all;
    for (int c = 1; c < 256; ++c)
        if (c != 0x98) all += static_cast<char>(c);
    std::u16string wide = Cp1251ToUtf16(all);
    ASSERT_EQ(wide.size(), all.size());
    EXPECT_EQ(Utf16ToCp1251(wide), all);
    EXPECT_EQ(Utf8ToCp1251(Cp1251ToUtf8(all)), all);
    // What the code page lacks becomes '?'.
    EXPECT_EQ(Utf16ToCp1251(u"a\u65E5b"), "a?b");
    // Distinct bytes give distinct characters.
    std::u16string sorted = wide;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
}

TEST(CodePage, MalformedUtf8BecomesQuestionMarks) {
    // A stray continuation byte, cut short at the end, cut short, a continuation missing,
    // beyond the BMP, bytes that begin nothing, and the euro sign.
    std::vector<std::string> out;
    for (const char* in :
         {"a\x80z", "a\xD0", "\xE2\x82", "\xD0z", "\xF0\x9F\x98\x80!", "\xFF\xFE", "\xE2\x82\xAC"})
        out.push_back(Utf8ToCp1251(in));
    EXPECT_EQ(out, std::vector<std::string>({"a?z", "a?", "?", "?z", "?!", "??", "\x88"}));
}
