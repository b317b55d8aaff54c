#include "rtl/System.h"

#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <cstdio>

namespace rtl {

namespace {
int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}
} // namespace

TGUID TGUID::FromString(std::string_view text) {
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    auto fail = [&]() -> TGUID {
        throw EConvertError("'" + std::string(text) + "' is not a valid GUID value");
    };
    if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
        text[23] != '-')
        return fail();
    std::string hex;
    for (char c : text)
        if (c != '-') hex += c;
    uint8_t bytes[16];
    for (int i = 0; i < 16; ++i) {
        int hi = HexDigit(hex[2 * i]), lo = HexDigit(hex[2 * i + 1]);
        if (hi < 0 || lo < 0) return fail();
        bytes[i] = static_cast<uint8_t>(hi * 16 + lo);
    }
    TGUID g;
    g.D1 = uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
    g.D2 = static_cast<uint16_t>(bytes[4] << 8 | bytes[5]);
    g.D3 = static_cast<uint16_t>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i) g.D4[i] = bytes[8 + i];
    return g;
}

std::string TGUID::ToString() const {
    char buf[40];
    std::snprintf(buf, sizeof buf, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", D1, D2,
                  D3, D4[0], D4[1], D4[2], D4[3], D4[4], D4[5], D4[6], D4[7]);
    return buf;
}

TClass TObject::StaticClass() {
    static const TClass info = TClassBuilder<TObject>("TObject").Build();
    return info;
}

const std::string& TObject::ClassName() const { return ClassType()->Name; }
TClass TObject::ClassParent() const { return ClassType()->Parent; }
bool TObject::InheritsFrom(TClass cls) const { return ClassType()->InheritsFrom(cls); }
PTypeInfo TObject::ClassInfo() const { return &ClassType()->TypeInfo; }

namespace {
bool SameAscii(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        unsigned char x = a[i], y = b[i];
        if (x >= 'a' && x <= 'z') x -= 32;
        if (y >= 'a' && y <= 'z') y -= 32;
        if (x != y) return false;
    }
    return true;
}
} // namespace

void* TObject::MethodAddress(std::string_view name) const {
    for (TClass c = ClassType(); c; c = c->Parent)
        for (const auto& m : c->Methods)
            if (SameAscii(m.Name, name)) return m.Code;
    return nullptr;
}

std::string TObject::MethodName(void* code) const {
    if (!code) return {};
    for (TClass c = ClassType(); c; c = c->Parent)
        for (const auto& m : c->Methods)
            if (m.Code == code) return m.Name;
    return {};
}

bool TObject::GetInterface(const TGUID& iid, void** obj) {
    for (TClass c = ClassType(); c; c = c->Parent)
        for (const auto& e : c->Interfaces)
            if (e.IID == iid) {
                if (obj) *obj = e.Cast(this);
                return true;
            }
    if (obj) *obj = nullptr;
    return false;
}

void RaiseInvalidCast() { throw EInvalidCast("Invalid class typecast"); }

bool Supports(TObject* obj, const TGUID& iid, void** intf) {
    if (!obj) {
        if (intf) *intf = nullptr;
        return false;
    }
    return obj->GetInterface(iid, intf);
}

} // namespace rtl
