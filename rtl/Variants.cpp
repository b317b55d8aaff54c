#include "rtl/Variants.h"

#include "rtl/CodePage.h"
#include "rtl/SysUtils.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace rtl {

namespace {
[[noreturn]] void CannotConvert(TVarType from, const char* to) {
    throw EVariantError("Could not convert variant of type (" + std::to_string(from) +
                        ") into type (" + to + ")");
}

// The platform's Round: to the nearest integer, a half to the even neighbour.
long double RoundHalfEven(long double d) {
    long double whole = std::floor(d);
    long double fraction = d - whole;
    if (fraction > 0.5L || (fraction == 0.5L && std::fmod(whole, 2.0L) != 0)) whole += 1;
    return whole;
}

// A rounded real as Int64; beyond its range (or NaN) the conversion fails instead of being an
// undefined cast.
int64_t RealToInt64(long double d, TVarType from) {
    long double r = RoundHalfEven(d);
    if (!(r >= -9223372036854775808.0L && r < 9223372036854775808.0L))
        CannotConvert(from, "Int64");
    return static_cast<int64_t>(r);
}

// Parses a whole decimal number with '.' as the separator; false when the text isn't one.
bool ParseNumber(const std::string& s, long double& out) {
    if (s.empty()) return false;
    char* end = nullptr;
    out = std::strtold(s.c_str(), &end);
    while (end && *end == ' ') ++end;
    return end && *end == 0;
}
} // namespace

Variant Variant::Null() {
    Variant v;
    v.type_ = varNull;
    return v;
}

Variant Variant::OfType(TVarType type, int64_t value) {
    Variant v(value);
    v.type_ = type;
    return v;
}

Variant Variant::OfType(TVarType type, long double value) {
    Variant v(value);
    v.type_ = type;
    return v;
}

bool Variant::IsIntegral() const { return std::holds_alternative<int64_t>(value_); }
bool Variant::IsReal() const { return std::holds_alternative<long double>(value_); }

int64_t Variant::AsInt64() const {
    switch (value_.index()) {
    case 0:
        if (type_ == varNull) CannotConvert(type_, "Int64");
        return 0;
    case 1: return std::get<bool>(value_) ? -1 : 0;
    case 2: return std::get<int64_t>(value_);
    case 3: return RealToInt64(std::get<long double>(value_), type_);
    default: {
        long double d;
        if (!ParseNumber(AsString(), d)) CannotConvert(type_, "Int64");
        return RealToInt64(d, type_);
    }
    }
}

long double Variant::AsReal() const {
    switch (value_.index()) {
    case 0:
        if (type_ == varNull) CannotConvert(type_, "Double");
        return 0;
    case 1: return std::get<bool>(value_) ? -1 : 0;
    case 2: return static_cast<long double>(std::get<int64_t>(value_));
    case 3: return std::get<long double>(value_);
    default: {
        long double d;
        if (!ParseNumber(AsString(), d)) CannotConvert(type_, "Double");
        return d;
    }
    }
}

bool Variant::AsBoolean() const {
    if (auto* b = std::get_if<bool>(&value_)) return *b;
    if (IsString()) {
        std::string s = AsString();
        for (auto& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (s == "TRUE") return true;
        if (s == "FALSE") return false;
    }
    return AsReal() != 0;
}

std::string Variant::AsString() const {
    switch (value_.index()) {
    case 0:
        if (type_ == varNull) CannotConvert(type_, "String");
        return {};
    case 1: return std::get<bool>(value_) ? "True" : "False";
    case 2: return std::to_string(std::get<int64_t>(value_));
    case 3: {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.15Lg", std::get<long double>(value_));
        // The platform's FloatToStr writes the exponent as "E20" and "E-5", not "e+20", "e-05".
        std::string text = buf;
        if (size_t e = text.find('e'); e != std::string::npos) {
            std::string digits = text.substr(e + 2);
            digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
            text = text.substr(0, e) + (text[e + 1] == '-' ? "E-" : "E") + digits;
        }
        return text;
    }
    case 4: return std::get<std::string>(value_);
    default: return Utf16ToCp1251(std::get<std::u16string>(value_));
    }
}

std::u16string Variant::AsWideString() const {
    if (auto* w = std::get_if<std::u16string>(&value_)) return *w;
    return Cp1251ToUtf16(AsString());
}

} // namespace rtl
