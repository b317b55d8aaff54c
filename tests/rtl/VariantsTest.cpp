// Variants and the Windows-1251 code page: type codes, conversions as the platform performs
// them, Null and Empty, and round trips of wide text through single-byte strings.
#include "rtl/Variants.h"
#include "rtl/CodePage.h"
#include "rtl/SysUtils.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace rtl;

namespace {

// "Привет, мир" in Windows-1251.
const std::string kHelloCp1251 = "\xCF\xF0\xE8\xE2\xE5\xF2, \xEC\xE8\xF0";
const std::u16string kHelloWide = u"Привет, мир";

} // namespace

// ---------------------------------------------------------------------------------------------
// Type codes

TEST(Variants, TypeCodesAreThePlatforms) {
    EXPECT_EQ(Variant().VarType(), 0x0000);
    EXPECT_EQ(Variant::Null().VarType(), 0x0001);
    EXPECT_EQ(Variant(int32_t(1)).VarType(), 0x0003);
    EXPECT_EQ(Variant(1.5).VarType(), 0x0005);
    EXPECT_EQ(Variant(std::u16string(u"x")).VarType(), 0x0008);
    EXPECT_EQ(Variant(true).VarType(), 0x000B);
    EXPECT_EQ(Variant(int64_t(1)).VarType(), 0x0014);
    EXPECT_EQ(Variant("x").VarType(), 0x0100);
    EXPECT_TRUE(Variant().IsEmpty());
    EXPECT_TRUE(Variant::Null().IsNull());
    EXPECT_FALSE(Variant::Null().IsEmpty());
    EXPECT_TRUE(Variant("a").IsString());
    EXPECT_TRUE(Variant(std::u16string(u"a")).IsString());
}

TEST(Variants, ValuesOfAGivenNumericType) {
    Variant small = Variant::OfType(varSmallint, int64_t(-7));
    EXPECT_EQ(small.VarType(), varSmallint);
    EXPECT_TRUE(small.IsIntegral());
    EXPECT_EQ(small.AsInteger(), -7);
    Variant money = Variant::OfType(varCurrency, 12.25L);
    EXPECT_EQ(money.VarType(), varCurrency);
    EXPECT_TRUE(money.IsReal());
    EXPECT_EQ(money.AsReal(), 12.25L);
    Variant date = Variant::OfType(varDate, 36526.0L);
    EXPECT_EQ(date.VarType(), varDate);
    EXPECT_FALSE(date.IsIntegral());
}

TEST(Variants, EqualityNeedsTypeAndValue) {
    EXPECT_EQ(Variant(int32_t(5)), Variant(int32_t(5)));
    EXPECT_FALSE(Variant(int32_t(5)) == Variant(int64_t(5)));
    EXPECT_FALSE(Variant(int32_t(5)) == Variant(int32_t(6)));
    EXPECT_EQ(Variant("a"), Variant(std::string("a")));
    EXPECT_FALSE(Variant() == Variant::Null());
}

// ---------------------------------------------------------------------------------------------
// Conversions

TEST(Variants, IntegersToTextAndBack) {
    EXPECT_EQ(Variant(int32_t(42)).AsString(), "42");
    EXPECT_EQ(Variant(int32_t(-17)).AsString(), "-17");
    EXPECT_EQ(Variant(int64_t(1) << 40).AsString(), "1099511627776");
    EXPECT_EQ(Variant("123").AsInteger(), 123);
    EXPECT_EQ(Variant("-5").AsInt64(), -5);
    EXPECT_EQ(Variant("1099511627776").AsInt64(), int64_t(1) << 40);
    EXPECT_EQ(Variant(std::u16string(u"77")).AsInteger(), 77);
    EXPECT_EQ(Variant(int32_t(3)).AsReal(), 3.0L);
}

TEST(Variants, RealsRoundToEvenWhenMadeIntegers) {
    // The platform's Round: halves go to the even neighbour.
    EXPECT_EQ(Variant(2.5).AsInteger(), 2);
    EXPECT_EQ(Variant(3.5).AsInteger(), 4);
    EXPECT_EQ(Variant(-2.5).AsInteger(), -2);
    EXPECT_EQ(Variant(0.5).AsInteger(), 0);
    EXPECT_EQ(Variant(2.4).AsInteger(), 2);
    EXPECT_EQ(Variant(2.6).AsInteger(), 3);
    EXPECT_EQ(Variant(-2.6).AsInt64(), -3);
    EXPECT_EQ(Variant("4.5").AsInteger(), 4);
}

TEST(Variants, RealsBeyondTheIntegerRangeRaise) {
    EXPECT_THROW(Variant(1e30).AsInt64(), EVariantError);
    EXPECT_THROW(Variant(-1e30).AsInteger(), EVariantError);
    EXPECT_THROW(Variant("1e300").AsInt64(), EVariantError);
    EXPECT_THROW(Variant(std::numeric_limits<double>::quiet_NaN()).AsInt64(), EVariantError);
    EXPECT_THROW(Variant(std::numeric_limits<double>::infinity()).AsInt64(), EVariantError);
    EXPECT_EQ(Variant(-9007199254740992.0).AsInt64(), -9007199254740992);
}

TEST(Variants, RealsToTextAndBack) {
    EXPECT_EQ(Variant(0.5).AsString(), "0.5");
    EXPECT_EQ(Variant(-12.25).AsString(), "-12.25");
    EXPECT_EQ(Variant(3.0).AsString(), "3");
    EXPECT_EQ(Variant("2.5").AsReal(), 2.5L);
    EXPECT_EQ(Variant("-0.125").AsReal(), -0.125L);
    EXPECT_EQ(Variant(0.1).AsString(), "0.1");
    EXPECT_EQ(Variant(0.0001).AsString(), "0.0001");
    EXPECT_EQ(Variant(123456789012345.0).AsString(), "123456789012345");
    // Exponents as the platform's FloatToStr writes them.
    EXPECT_EQ(Variant(1e20).AsString(), "1E20");
    EXPECT_EQ(Variant(1e15).AsString(), "1E15");
    EXPECT_EQ(Variant(0.00001).AsString(), "1E-5");
    EXPECT_EQ(Variant(-2.5e-100).AsString(), "-2.5E-100");
    EXPECT_EQ(Variant("1E20").AsReal(), 1e20L);
}

TEST(Variants, Booleans) {
    EXPECT_EQ(Variant(true).AsInteger(), -1);
    EXPECT_EQ(Variant(false).AsInteger(), 0);
    EXPECT_EQ(Variant(true).AsString(), "True");
    EXPECT_EQ(Variant(false).AsString(), "False");
    EXPECT_EQ(Variant(true).AsReal(), -1.0L);
    EXPECT_TRUE(Variant("true").AsBoolean());
    EXPECT_TRUE(Variant("TRUE").AsBoolean());
    EXPECT_FALSE(Variant("False").AsBoolean());
    EXPECT_TRUE(Variant("1").AsBoolean());
    EXPECT_FALSE(Variant("0").AsBoolean());
    EXPECT_TRUE(Variant(int32_t(5)).AsBoolean());
    EXPECT_FALSE(Variant(int32_t(0)).AsBoolean());
    EXPECT_TRUE(Variant(0.25).AsBoolean());
    EXPECT_THROW(Variant("yes").AsBoolean(), EVariantError);
}

TEST(Variants, TextThatIsNoNumberRaises) {
    for (const char* bad : {"abc", "", "12abc", "1,5", "--1"}) {
        EXPECT_THROW(Variant(bad).AsInteger(), EVariantError) << bad;
        EXPECT_THROW(Variant(bad).AsReal(), EVariantError) << bad;
    }
    try {
        Variant("abc").AsInteger();
    } catch (const EVariantError& e) {
        EXPECT_NE(e.Message().find("Could not convert variant"), std::string::npos);
    }
}

TEST(Variants, EmptyIsZeroAndEmptyText) {
    Variant v;
    EXPECT_EQ(v.AsInteger(), 0);
    EXPECT_EQ(v.AsInt64(), 0);
    EXPECT_EQ(v.AsReal(), 0.0L);
    EXPECT_EQ(v.AsString(), "");
    EXPECT_EQ(v.AsWideString(), u"");
    EXPECT_FALSE(v.AsBoolean());
}

TEST(Variants, NullRaisesOnEveryConversion) {
    Variant v = Variant::Null();
    EXPECT_THROW(v.AsInteger(), EVariantError);
    EXPECT_THROW(v.AsInt64(), EVariantError);
    EXPECT_THROW(v.AsReal(), EVariantError);
    EXPECT_THROW(v.AsString(), EVariantError);
    EXPECT_THROW(v.AsWideString(), EVariantError);
    EXPECT_THROW(v.AsBoolean(), EVariantError);
    // A variant error is an Exception of the runtime.
    EXPECT_THROW(v.AsString(), Exception);
}

// ---------------------------------------------------------------------------------------------
// Windows-1251

TEST(Variants, WideTextRoundTripsThroughWindows1251) {
    Variant wide(kHelloWide);
    EXPECT_EQ(wide.AsString(), kHelloCp1251);
    EXPECT_EQ(Variant(wide.AsString()).AsWideString(), kHelloWide);
    EXPECT_EQ(Variant(kHelloCp1251).AsWideString(), kHelloWide);
    // Letters outside the basic alphabet, and signs of the upper half.
    EXPECT_EQ(Variant(std::u16string(u"Ёё№€Ґґ")).AsString(), "\xA8\xB8\xB9\x88\xA5\xB4");
    EXPECT_EQ(Variant(std::string("\xA8\xB8\xB9\x88\xA5\xB4")).AsWideString(), u"Ёё№€Ґґ");
    // What the code page lacks becomes '?'.
    EXPECT_EQ(Variant(std::u16string(u"a日b")).AsString(), "a?b");
}

TEST(CodePage, EveryAssignedByteRoundTripsThroughUtf16AndUtf8) {
    std::string all;
    for (int c = 1; c < 256; ++c)
        if (c != 0x98) all += static_cast<char>(c);
    std::u16string wide = Cp1251ToUtf16(all);
    ASSERT_EQ(wide.size(), all.size());
    EXPECT_EQ(Utf16ToCp1251(wide), all);
    EXPECT_EQ(Utf8ToCp1251(Cp1251ToUtf8(all)), all);
    // Distinct bytes give distinct characters.
    std::u16string sorted = wide;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
}

TEST(CodePage, KnownLetters) {
    EXPECT_EQ(Cp1251ToWide(0xC0), u'А');
    EXPECT_EQ(Cp1251ToWide(0xFF), u'я');
    EXPECT_EQ(Cp1251ToWide(0xA8), u'Ё');
    EXPECT_EQ(Cp1251ToWide(0x41), u'A');
    EXPECT_EQ(Cp1251ToWide(0x98), u'\xFFFD');
    EXPECT_EQ(WideToCp1251(u'я'), '\xFF');
    EXPECT_EQ(WideToCp1251(u'\xFFFD'), '?');
    EXPECT_EQ(WideToCp1251(u'ä'), '?');
    EXPECT_EQ(WideToCp1251(0), '\0');
    EXPECT_EQ(Cp1251ToUtf8("\xCF\xF0\xE8"), "При");
    EXPECT_EQ(Utf8ToCp1251("Мир"), "\xCC\xE8\xF0");
    // Embedded NUL survives.
    EXPECT_EQ(Utf16ToCp1251(std::u16string(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(CodePage, MalformedUtf8BecomesQuestionMarks) {
    EXPECT_EQ(Utf8ToCp1251("a\x80z"), "a?z");           // stray continuation byte
    EXPECT_EQ(Utf8ToCp1251("a\xD0"), "a?");             // cut short at the end
    EXPECT_EQ(Utf8ToCp1251("\xE2\x82"), "?");           // cut short
    EXPECT_EQ(Utf8ToCp1251("\xD0z"), "?z");             // continuation missing
    EXPECT_EQ(Utf8ToCp1251("\xF0\x9F\x98\x80!"), "?!"); // beyond the BMP
    EXPECT_EQ(Utf8ToCp1251("\xFF\xFE"), "??");
    EXPECT_EQ(Utf8ToCp1251("\xE2\x82\xAC"), "\x88"); // the euro sign
}
