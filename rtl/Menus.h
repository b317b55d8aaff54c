// Hot keys: TShortCut values and their text, as the platform's menus show them.
#pragma once

#include "rtl/TypInfo.h"

#include <string>
#include <string_view>

namespace rtl {

constexpr uint16_t scShift = 0x2000;
constexpr uint16_t scCtrl = 0x4000;
constexpr uint16_t scAlt = 0x8000;
constexpr uint16_t scNone = 0;

// Shift state bits of a shortcut.
constexpr uint16_t ssShift = scShift;
constexpr uint16_t ssCtrl = scCtrl;
constexpr uint16_t ssAlt = scAlt;

// A shortcut of a virtual key code and shift bits (scShift, scCtrl, scAlt).
constexpr TShortCut ShortCut(uint16_t key, uint16_t shift) {
    return static_cast<TShortCut>((key & 0xFF) | shift);
}

// The shortcut's text: the modifiers "Shift+", "Ctrl+", "Alt+" in that order, then the key name
// ("A", "5", "F5", "Esc", "Del", "Left", ",", ".", ...). Empty for a key without a name.
std::string ShortCutToText(TShortCut shortCut);
// The shortcut of a text such as "Ctrl+Shift+." (modifiers in any order, "^" for Ctrl, case
// ignored); 0 when the text names no key.
TShortCut TextToShortCut(std::string_view text);
// Splits a shortcut into its key and shift bits.
void ShortCutToKey(TShortCut shortCut, uint16_t& key, uint16_t& shift);

} // namespace rtl
