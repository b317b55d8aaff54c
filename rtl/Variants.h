// The platform's Variant: a value that carries its own type, as read and written by the filer
// and the property access routines.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace rtl {

// Variant type codes, as the platform numbers them.
enum TVarType : uint16_t {
    varEmpty = 0x0000,
    varNull = 0x0001,
    varSmallint = 0x0002,
    varInteger = 0x0003,
    varSingle = 0x0004,
    varDouble = 0x0005,
    varCurrency = 0x0006,
    varDate = 0x0007,
    varOleStr = 0x0008,
    varBoolean = 0x000B,
    varShortInt = 0x0010,
    varByte = 0x0011,
    varWord = 0x0012,
    varLongWord = 0x0013,
    varInt64 = 0x0014,
    varString = 0x0100,
};

class Variant {
public:
    Variant() = default;
    static Variant Null();
    Variant(bool v) : type_(varBoolean), value_(v) {}
    Variant(int32_t v) : type_(varInteger), value_(int64_t(v)) {}
    Variant(int64_t v) : type_(varInt64), value_(v) {}
    Variant(double v) : type_(varDouble), value_(static_cast<long double>(v)) {}
    Variant(long double v) : type_(varDouble), value_(v) {}
    Variant(std::string v) : type_(varString), value_(std::move(v)) {}
    Variant(const char* v) : Variant(std::string(v)) {}
    Variant(std::u16string v) : type_(varOleStr), value_(std::move(v)) {}

    // A value of a given numeric type code: varSmallint, varShortInt, varByte, varWord,
    // varLongWord, varInteger, varInt64 hold integers; varSingle, varDouble, varCurrency and
    // varDate hold reals.
    static Variant OfType(TVarType type, int64_t value);
    static Variant OfType(TVarType type, long double value);

    TVarType VarType() const { return type_; }
    bool IsEmpty() const { return type_ == varEmpty; }
    bool IsNull() const { return type_ == varNull; }
    bool IsIntegral() const;
    bool IsReal() const;
    bool IsString() const { return type_ == varString || type_ == varOleStr; }

    // Conversions as the platform performs them; a value that doesn't convert raises
    // EVariantError. Empty converts to 0 and to an empty string; Null raises.
    int64_t AsInt64() const;
    int32_t AsInteger() const { return static_cast<int32_t>(AsInt64()); }
    long double AsReal() const;
    bool AsBoolean() const;
    std::string AsString() const;
    std::u16string AsWideString() const;

    friend bool operator==(const Variant& a, const Variant& b) {
        return a.type_ == b.type_ && a.value_ == b.value_;
    }

private:
    TVarType type_ = varEmpty;
    std::variant<std::monostate, bool, int64_t, long double, std::string, std::u16string> value_;
};

} // namespace rtl
