// Windows-1251, the single-byte code page of the system's text, and its mapping to UTF-16 and
// UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace rtl {

// The UTF-16 code unit of a Windows-1251 byte. Byte 0x98, unassigned, maps to U+FFFD.
char16_t Cp1251ToWide(unsigned char c);
// The Windows-1251 byte of a UTF-16 code unit, or '?' where the code page has none.
char WideToCp1251(char16_t c);

std::u16string Cp1251ToUtf16(std::string_view s);
std::string Utf16ToCp1251(std::u16string_view s);
std::string Cp1251ToUtf8(std::string_view s);
std::string Utf8ToCp1251(std::string_view s);

} // namespace rtl
