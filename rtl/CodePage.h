// The single-byte code pages of the platform's narrow text, and their mapping to UTF-16 and
// UTF-8.
//
// Windows-1251 is the host's code page: the system's text and file names are in it. Form files
// keep their narrow strings in the code page of the character set their fonts name (Greek,
// Central European, Chinese, ...), so the other Windows code pages convert too: the single-byte
// ones by tables of this unit, the double-byte ones (932, 936, 949, 950) through the C
// library's converter. UTF-8 (65001) converts as any other.
#pragma once

#include <string>
#include <string_view>

namespace rtl {

// The code page of the host's narrow text.
inline constexpr int HostCodePage = 1251;
inline constexpr int CP_UTF8 = 65001;

// The UTF-16 code unit of a Windows-1251 byte. Byte 0x98, unassigned, maps to U+FFFD.
char16_t Cp1251ToWide(unsigned char c);
// The Windows-1251 byte of a UTF-16 code unit, or '?' where the code page has none.
char WideToCp1251(char16_t c);

std::u16string Cp1251ToUtf16(std::string_view s);
std::string Utf16ToCp1251(std::u16string_view s);
std::string Cp1251ToUtf8(std::string_view s);
std::string Utf8ToCp1251(std::string_view s);

// UTF-8 and UTF-16 into each other. A malformed UTF-8 sequence, and a lone surrogate of UTF-16,
// become U+FFFD.
std::u16string Utf8ToUtf16(std::string_view s);
std::string Utf16ToUtf8(std::u16string_view s);

// The Windows code page of a font's character set (RUSSIAN_CHARSET 204 gives 1251, GREEK_CHARSET
// 161 gives 1253, GB2312_CHARSET 134 gives 936). DEFAULT_CHARSET stands for the system's code
// page, and the sets that have no code page of their own (SYMBOL, OEM, MAC) are read in it too:
// these give systemCodePage.
int CharsetCodePage(int charset, int systemCodePage = HostCodePage);
// Whether the conversions below know the code page.
bool IsKnownCodePage(int codePage);
// Text in a code page as UTF-16. A byte or sequence the code page does not define becomes
// U+FFFD; a code page that is not known is read as the host's.
std::u16string CodePageToUtf16(std::string_view s, int codePage);
// UTF-16 text in a code page. False, with out left empty, when a character has no byte in it
// or the code page is not known: nothing is replaced by a question mark.
bool Utf16ToCodePage(std::u16string_view s, int codePage, std::string& out);

} // namespace rtl
