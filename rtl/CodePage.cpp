#include "rtl/CodePage.h"

#include <array>

namespace rtl {

namespace {

constexpr char16_t kHigh[128] = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021,
    0x20AC, 0x2030, 0x0409, 0x2039, 0x040A, 0x040C, 0x040B, 0x040F,
    0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0xFFFD, 0x2122, 0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F,
    0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6, 0x00A7,
    0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407,
    0x00B0, 0x00B1, 0x0406, 0x0456, 0x0491, 0x00B5, 0x00B6, 0x00B7,
    0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457,
    0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417,
    0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D, 0x041E, 0x041F,
    0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426, 0x0427,
    0x0428, 0x0429, 0x042A, 0x042B, 0x042C, 0x042D, 0x042E, 0x042F,
    0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437,
    0x0438, 0x0439, 0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F,
    0x0440, 0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447,
    0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F,
};

const std::array<unsigned char, 65536>& ReverseTable() {
    static const auto table = [] {
        std::array<unsigned char, 65536> t{};
        for (unsigned c = 0; c < 128; ++c) t[c] = static_cast<unsigned char>(c);
        for (unsigned c = 0; c < 128; ++c)
            if (kHigh[c] != 0xFFFD) t[kHigh[c]] = static_cast<unsigned char>(c + 128);
        return t;
    }();
    return table;
}

} // namespace

char16_t Cp1251ToWide(unsigned char c) { return c < 128 ? char16_t(c) : kHigh[c - 128]; }

char WideToCp1251(char16_t c) {
    if (c == 0) return 0;
    unsigned char b = ReverseTable()[c];
    return b ? static_cast<char>(b) : '?';
}

std::u16string Cp1251ToUtf16(std::string_view s) {
    std::u16string r;
    r.reserve(s.size());
    for (char c : s) r += Cp1251ToWide(static_cast<unsigned char>(c));
    return r;
}

std::string Utf16ToCp1251(std::u16string_view s) {
    std::string r;
    r.reserve(s.size());
    for (char16_t c : s) r += WideToCp1251(c);
    return r;
}

std::string Cp1251ToUtf8(std::string_view s) {
    std::string r;
    r.reserve(s.size());
    for (char c : s) {
        char16_t w = Cp1251ToWide(static_cast<unsigned char>(c));
        if (w < 0x80) r += static_cast<char>(w);
        else if (w < 0x800) {
            r += static_cast<char>(0xC0 | (w >> 6));
            r += static_cast<char>(0x80 | (w & 0x3F));
        } else {
            r += static_cast<char>(0xE0 | (w >> 12));
            r += static_cast<char>(0x80 | ((w >> 6) & 0x3F));
            r += static_cast<char>(0x80 | (w & 0x3F));
        }
    }
    return r;
}

std::string Utf8ToCp1251(std::string_view s) {
    std::string r;
    r.reserve(s.size());
    for (size_t i = 0; i < s.size();) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        char32_t cp;
        size_t len;
        if (c < 0x80) cp = c, len = 1;
        else if ((c & 0xE0) == 0xC0) cp = c & 0x1F, len = 2;
        else if ((c & 0xF0) == 0xE0) cp = c & 0x0F, len = 3;
        else if ((c & 0xF8) == 0xF0) cp = c & 0x07, len = 4;
        else { r += '?'; ++i; continue; }
        if (i + len > s.size()) { r += '?'; break; }
        bool ok = true;
        for (size_t k = 1; k < len; ++k) {
            unsigned char cc = static_cast<unsigned char>(s[i + k]);
            if ((cc & 0xC0) != 0x80) { ok = false; break; }
            cp = (cp << 6) | (cc & 0x3F);
        }
        if (!ok) { r += '?'; ++i; continue; }
        r += cp > 0xFFFF ? '?' : WideToCp1251(static_cast<char16_t>(cp));
        i += len;
    }
    return r;
}

} // namespace rtl
