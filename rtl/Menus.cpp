#include "rtl/Menus.h"

#include <cctype>

namespace rtl {

namespace {

// Names of keys that aren't letters, digits or function keys, as the English keyboard layout
// names them.
const char* SpecialKeyName(unsigned key) {
    switch (key) {
    case 0x08: return "BkSp";
    case 0x09: return "Tab";
    case 0x0D: return "Enter";
    case 0x1B: return "Esc";
    case 0x20: return "Space";
    case 0x21: return "PgUp";
    case 0x22: return "PgDn";
    case 0x23: return "End";
    case 0x24: return "Home";
    case 0x25: return "Left";
    case 0x26: return "Up";
    case 0x27: return "Right";
    case 0x28: return "Down";
    case 0x2D: return "Ins";
    case 0x2E: return "Del";
    case 0x6A: return "Num *";
    case 0x6B: return "Num +";
    case 0x6D: return "Num -";
    case 0x6E: return "Num Del";
    case 0x6F: return "Num /";
    case 0xBA: return ";";
    case 0xBB: return "=";
    case 0xBC: return ",";
    case 0xBD: return "-";
    case 0xBE: return ".";
    case 0xBF: return "/";
    case 0xC0: return "`";
    case 0xDB: return "[";
    case 0xDC: return "\\";
    case 0xDD: return "]";
    case 0xDE: return "'";
    default: return nullptr;
    }
}

std::string KeyName(unsigned key) {
    if (key >= 0x30 && key <= 0x39) return std::string(1, char('0' + key - 0x30));
    if (key >= 0x41 && key <= 0x5A) return std::string(1, char('A' + key - 0x41));
    if (key >= 0x60 && key <= 0x69) return std::string(1, char('0' + key - 0x60));
    if (key >= 0x70 && key <= 0x87) return "F" + std::to_string(key - 0x6F);
    const char* name = SpecialKeyName(key);
    return name ? name : "";
}

bool TakeFront(std::string_view& text, std::string_view front) {
    if (text.size() < front.size()) return false;
    for (size_t i = 0; i < front.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(text[i])) !=
            std::tolower(static_cast<unsigned char>(front[i])))
            return false;
    text.remove_prefix(front.size());
    return true;
}

bool SameKeyText(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

} // namespace

std::string ShortCutToText(TShortCut shortCut) {
    std::string name = KeyName(shortCut & 0xFF);
    if (name.empty()) return {};
    std::string result;
    if (shortCut & scShift) result += "Shift+";
    if (shortCut & scCtrl) result += "Ctrl+";
    if (shortCut & scAlt) result += "Alt+";
    return result + name;
}

TShortCut TextToShortCut(std::string_view text) {
    uint16_t shift = 0;
    for (;;) {
        if (TakeFront(text, "Shift+")) shift |= scShift;
        else if (TakeFront(text, "^")) shift |= scCtrl;
        else if (TakeFront(text, "Ctrl+")) shift |= scCtrl;
        else if (TakeFront(text, "Alt+")) shift |= scAlt;
        else break;
    }
    if (text.empty()) return TShortCut{};
    for (unsigned key = 0x08; key <= 0xFF; ++key) {
        std::string name = KeyName(key);
        if (!name.empty() && SameKeyText(text, name)) return ShortCut(uint16_t(key), shift);
    }
    return TShortCut{};
}

void ShortCutToKey(TShortCut shortCut, uint16_t& key, uint16_t& shift) {
    key = shortCut & 0xFF;
    shift = shortCut & (scShift | scCtrl | scAlt);
}

} // namespace rtl
