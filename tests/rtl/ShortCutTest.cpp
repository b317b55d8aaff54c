// Shortcut texts: TextToShortCut and ShortCutToText as the platform's menus spell them.
#include "rtl/Menus.h"

#include <gtest/gtest.h>

using namespace rtl;

namespace {

constexpr uint16_t VK_OEM_1 = 0xBA;      // ;
constexpr uint16_t VK_OEM_COMMA = 0xBC;  // ,
constexpr uint16_t VK_OEM_PERIOD = 0xBE; // .

} // namespace

TEST(ShortCuts, TextIsReadIgnoringCaseAndModifierOrder) {
    // The hot keys of the experts' menu, then other spellings. Named keys read back as every
    // named key round-trips below. A digit is the main keyboard's, not the number pad's.
    const uint16_t cs = scCtrl | scShift;
    std::vector<TShortCut> read;
    for (const char* text : {"Ctrl+,", "Ctrl+Shift+,", "Ctrl+Shift+.", "Ctrl+;", "Ctrl+Shift+Q",
                             "Ctrl+5", "ctrl+shift+q", "SHIFT+CTRL+Q", "Shift+^Q", "^D",
                             "alt+right", "esc", "f5", "Ctrl+Alt+Shift+Del"})
        read.push_back(TextToShortCut(text));
    EXPECT_EQ(read,
              std::vector<TShortCut>({ShortCut(VK_OEM_COMMA, scCtrl), ShortCut(VK_OEM_COMMA, cs),
                                      ShortCut(VK_OEM_PERIOD, cs), ShortCut(VK_OEM_1, scCtrl),
                                      ShortCut('Q', cs), ShortCut('5', scCtrl), ShortCut('Q', cs),
                                      ShortCut('Q', cs), ShortCut('Q', cs), ShortCut('D', scCtrl),
                                      ShortCut(0x27, scAlt), ShortCut(0x1B, 0), ShortCut(0x74, 0),
                                      ShortCut(0x2E, scCtrl | scAlt | scShift)}));
    EXPECT_EQ(static_cast<uint16_t>(TextToShortCut("Ctrl+Shift+.")), 0x60BE);
}

TEST(ShortCuts, UnknownTextGivesZero) {
    for (const char* text : {"", "Ctrl+", "Ctrl+Shift+", "Foo", "Ctrl+Foo", "F25", "F0", "Ctrl+QQ",
                             "Ctrl + Q", "Q+Ctrl", "Meta+Q", "Ctrl+Num"})
        EXPECT_EQ(static_cast<uint16_t>(TextToShortCut(text)), 0) << text;
}

TEST(ShortCutsText, ModifiersComeShiftCtrlAltAndKeysWithoutANameGiveEmptyText) {
    // 0x60 is the number pad's 0.
    std::vector<std::string> texts;
    for (TShortCut sc :
         {ShortCut(VK_OEM_PERIOD, scCtrl | scShift), ShortCut(VK_OEM_COMMA, scCtrl),
          ShortCut(VK_OEM_1, scCtrl), ShortCut('Q', scShift | scCtrl),
          ShortCut(0x2E, scAlt | scCtrl | scShift), ShortCut(0x27, scAlt), ShortCut(0x74, 0),
          ShortCut(0x1B, 0), ShortCut(0x60, scCtrl), ShortCut(0x6A, 0), ShortCut(0, scCtrl),
          ShortCut(0x07, scCtrl), ShortCut(0xFF, scAlt), TShortCut{}})
        texts.push_back(ShortCutToText(sc));
    EXPECT_EQ(texts, std::vector<std::string>({"Shift+Ctrl+.", "Ctrl+,", "Ctrl+;", "Shift+Ctrl+Q",
                                               "Shift+Ctrl+Alt+Del", "Alt+Right", "F5", "Esc",
                                               "Ctrl+0", "Num *", "", "", "", ""}));
}

TEST(ShortCutsText, EveryNamedKeyRoundTrips) {
    int named = 0;
    for (uint16_t key = 0; key <= 0xFF; ++key) {
        for (uint16_t shift : {uint16_t(0), scShift, scCtrl, scAlt, uint16_t(scShift | scCtrl)}) {
            TShortCut sc = ShortCut(key, shift);
            std::string text = ShortCutToText(sc);
            if (text.empty()) continue;
            ++named;
            TShortCut back = TextToShortCut(text);
            // The number pad digits share their names with the main digits.
            uint16_t expectKey = (key >= 0x60 && key <= 0x69) ? uint16_t(key - 0x30) : key;
            EXPECT_EQ(back, ShortCut(expectKey, shift)) << text;
        }
    }
    EXPECT_GT(named, 5 * 80);
}
