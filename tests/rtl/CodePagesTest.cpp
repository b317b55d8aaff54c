// The code pages beside the host's: font character sets to code pages, text of each code page to
// UTF-16 and back, text a code page can't hold, and UTF-8.
#include "rtl/CodePage.h"

#include <gtest/gtest.h>

using namespace rtl;

TEST(CodePages, EachCharacterSetNamesItsCodePage) {
    struct Case {
        int charset, codePage;
    };
    const Case cases[] = {{0, 1252},          {1, HostCodePage}, {2, HostCodePage}, {128, 932},
                          {129, 949},         {134, 936},        {136, 950},        {161, 1253},
                          {162, 1254},        {163, 1258},       {177, 1255},       {178, 1256},
                          {186, 1257},        {204, 1251},       {222, 874},        {238, 1250},
                          {255, HostCodePage}};
    for (Case c : cases) {
        EXPECT_EQ(CharsetCodePage(c.charset), c.codePage) << c.charset;
        EXPECT_TRUE(IsKnownCodePage(c.codePage)) << c.codePage;
    }
    // The system's code page is what DEFAULT_CHARSET stands for.
    EXPECT_EQ(CharsetCodePage(1, 1252), 1252);
    EXPECT_FALSE(IsKnownCodePage(437));
}

TEST(CodePages, TextOfEachCodePageReadsAndWritesBack) {
    struct Case {
        int codePage;
        const char* bytes;
        const char16_t* text;
    };
    const Case cases[] = {
        {1252, "Configura\xE7\xF5\x65s \x80", u"Configurações €"},
        {1250, "\xF5r \x8A\xE8", u"őr Šč"},
        {1251, "\xCF\xF0\xE8\xEC\xE5\xF0", u"Пример"},
        {1253, "\xC5\xEB\xEB\xDC\xE4\xE1", u"Ελλάδα"},
        {1254, "\xDE\xFD\xF0", u"Şığ"},
        {1255, "\xF9\xEC\xE5\xED", u"שלום"},
        {1256, "\x81\xD1\xE6\xE4\xCF\xE5", u"پرونده"},
        {1257, "\xD0\xE0", u"Šą"},
        {874, "\xA1\xA2", u"กข"},
        {936, "\xC9\xE8\xD6\xC3", u"设置"},
        {950, "\xB3\x5D\xA9\x77", u"設定"},
        {932, "\x90\xDD\x92\xE8", u"設定"},
        {949, "\xBC\xB3\xC1\xA4", u"설정"},
        {CP_UTF8, "\xE2\x89\xA1 \xF0\x9F\x98\x80", u"≡ 😀"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CodePageToUtf16(c.bytes, c.codePage), c.text) << c.codePage;
        std::string back;
        EXPECT_TRUE(Utf16ToCodePage(c.text, c.codePage, back)) << c.codePage;
        EXPECT_EQ(back, c.bytes) << c.codePage;
    }
}

TEST(CodePages, TextACodePageCantHoldIsRefusedWholeNotReplaced) {
    struct Case {
        int codePage;
        const char16_t* text;
    };
    const Case cases[] = {{1252, u"Preço ≡"},      {1251, u"Configurações"}, {1256, u"تنظیمات"},
                          {936, u"Configurações"}, {CP_UTF8, u"a\xD800z"},   {437, u"plain"}};
    for (Case c : cases) {
        std::string out = "left over";
        EXPECT_FALSE(Utf16ToCodePage(c.text, c.codePage, out)) << c.codePage;
        EXPECT_TRUE(out.empty()) << c.codePage;
    }
}

TEST(CodePages, UndefinedBytesReadAsReplacementCharacters) {
    EXPECT_EQ(CodePageToUtf16("a\x81z", 1252), u"a\uFFFDz");
    EXPECT_EQ(CodePageToUtf16("\xC9", 936), u"\uFFFD"); // a lead byte without its trail
    EXPECT_EQ(CodePageToUtf16("a\x80z", CP_UTF8), u"a\uFFFDz");
    // An unknown code page reads as the host's.
    EXPECT_EQ(CodePageToUtf16("\xCC\xE8\xF0", 437), u"Мир");
}

TEST(CodePages, Utf8AndUtf16ConvertIntoEachOther) {
    const char16_t* texts[] = {u"", u"plain", u"Пример", u"设置 ≡ ►", u"😀 beyond the plane"};
    for (const char16_t* t : texts)
        EXPECT_EQ(Utf8ToUtf16(Utf16ToUtf8(t)), t);
    EXPECT_EQ(Utf16ToUtf8(u"\xDC00!"), "\xEF\xBF\xBD!"); // a lone surrogate
}
