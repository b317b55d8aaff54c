// Shortcut texts: TextToShortCut and ShortCutToText as the platform's menus spell them.
#include "rtl/Menus.h"

#include <gtest/gtest.h>

using namespace rtl;

namespace {

constexpr uint16_t VK_OEM_1 = 0xBA;      // ;
constexpr uint16_t VK_OEM_COMMA = 0xBC;  // ,
constexpr uint16_t VK_OEM_PERIOD = 0xBE; // .

} // namespace

TEST(ShortCuts, TheHotKeysOfTheExpertsMenu) {
    EXPECT_EQ(TextToShortCut("Ctrl+,"), ShortCut(VK_OEM_COMMA, scCtrl));
    EXPECT_EQ(TextToShortCut("Ctrl+Shift+,"), ShortCut(VK_OEM_COMMA, scCtrl | scShift));
    EXPECT_EQ(TextToShortCut("Ctrl+."), ShortCut(VK_OEM_PERIOD, scCtrl));
    EXPECT_EQ(TextToShortCut("Ctrl+Shift+."), ShortCut(VK_OEM_PERIOD, scCtrl | scShift));
    EXPECT_EQ(TextToShortCut("Ctrl+;"), ShortCut(VK_OEM_1, scCtrl));
    EXPECT_EQ(TextToShortCut("Ctrl+Shift+Q"), ShortCut('Q', scCtrl | scShift));
    EXPECT_EQ(TextToShortCut("Ctrl+D"), ShortCut('D', scCtrl));
    EXPECT_EQ(TextToShortCut("Ctrl+A"), ShortCut('A', scCtrl));
    EXPECT_EQ(TextToShortCut("Ctrl+W"), ShortCut('W', scCtrl));
    EXPECT_EQ(static_cast<uint16_t>(TextToShortCut("Ctrl+Shift+.")), 0x60BE);
}

TEST(ShortCuts, NamedKeys) {
    EXPECT_EQ(TextToShortCut("Alt+Right"), ShortCut(0x27, scAlt));
    EXPECT_EQ(TextToShortCut("Del"), ShortCut(0x2E, 0));
    EXPECT_EQ(TextToShortCut("F5"), ShortCut(0x74, 0));
    EXPECT_EQ(TextToShortCut("F12"), ShortCut(0x7B, 0));
    EXPECT_EQ(TextToShortCut("F24"), ShortCut(0x87, 0));
    EXPECT_EQ(TextToShortCut("Esc"), ShortCut(0x1B, 0));
    EXPECT_EQ(TextToShortCut("Enter"), ShortCut(0x0D, 0));
    EXPECT_EQ(TextToShortCut("Space"), ShortCut(0x20, 0));
    EXPECT_EQ(TextToShortCut("BkSp"), ShortCut(0x08, 0));
    EXPECT_EQ(TextToShortCut("Tab"), ShortCut(0x09, 0));
    EXPECT_EQ(TextToShortCut("PgUp"), ShortCut(0x21, 0));
    EXPECT_EQ(TextToShortCut("Ins"), ShortCut(0x2D, 0));
    EXPECT_EQ(TextToShortCut("Home"), ShortCut(0x24, 0));
    // A digit is the main keyboard's, not the number pad's.
    EXPECT_EQ(TextToShortCut("Ctrl+5"), ShortCut('5', scCtrl));
}

TEST(ShortCuts, TextIsReadIgnoringCaseAndModifierOrder) {
    const TShortCut expected = ShortCut('Q', scCtrl | scShift);
    EXPECT_EQ(TextToShortCut("ctrl+shift+q"), expected);
    EXPECT_EQ(TextToShortCut("SHIFT+CTRL+Q"), expected);
    EXPECT_EQ(TextToShortCut("Shift+^Q"), expected);
    EXPECT_EQ(TextToShortCut("^D"), ShortCut('D', scCtrl));
    EXPECT_EQ(TextToShortCut("alt+right"), ShortCut(0x27, scAlt));
    EXPECT_EQ(TextToShortCut("esc"), ShortCut(0x1B, 0));
    EXPECT_EQ(TextToShortCut("f5"), ShortCut(0x74, 0));
    EXPECT_EQ(TextToShortCut("Ctrl+Alt+Shift+Del"), ShortCut(0x2E, scCtrl | scAlt | scShift));
}

TEST(ShortCuts, UnknownTextGivesZero) {
    for (const char* text : {"", "Ctrl+", "Ctrl+Shift+", "Foo", "Ctrl+Foo", "F25", "F0", "Ctrl+QQ",
                             "Ctrl + Q", "Q+Ctrl", "Meta+Q", "Ctrl+Num"})
        EXPECT_EQ(static_cast<uint16_t>(TextToShortCut(text)), 0) << text;
}

TEST(ShortCutsText, ModifiersComeShiftCtrlAlt) {
    EXPECT_EQ(ShortCutToText(ShortCut(VK_OEM_PERIOD, scCtrl | scShift)), "Shift+Ctrl+.");
    EXPECT_EQ(ShortCutToText(ShortCut(VK_OEM_COMMA, scCtrl)), "Ctrl+,");
    EXPECT_EQ(ShortCutToText(ShortCut(VK_OEM_1, scCtrl)), "Ctrl+;");
    EXPECT_EQ(ShortCutToText(ShortCut('Q', scShift | scCtrl)), "Shift+Ctrl+Q");
    EXPECT_EQ(ShortCutToText(ShortCut(0x2E, scAlt | scCtrl | scShift)), "Shift+Ctrl+Alt+Del");
    EXPECT_EQ(ShortCutToText(ShortCut(0x27, scAlt)), "Alt+Right");
    EXPECT_EQ(ShortCutToText(ShortCut(0x74, 0)), "F5");
    EXPECT_EQ(ShortCutToText(ShortCut(0x1B, 0)), "Esc");
    EXPECT_EQ(ShortCutToText(ShortCut(0x60, scCtrl)), "Ctrl+0") << "number pad digit";
    EXPECT_EQ(ShortCutToText(ShortCut(0x6A, 0)), "Num *");
}

TEST(ShortCutsText, KeysWithoutANameGiveEmptyText) {
    EXPECT_EQ(ShortCutToText(ShortCut(0, scCtrl)), "");
    EXPECT_EQ(ShortCutToText(ShortCut(0x07, scCtrl)), "");
    EXPECT_EQ(ShortCutToText(ShortCut(0xFF, scAlt)), "");
    EXPECT_EQ(ShortCutToText(TShortCut{}), "");
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

TEST(ShortCutsText, SplittingAShortCut) {
    uint16_t key = 0, shift = 0;
    ShortCutToKey(TextToShortCut("Ctrl+Shift+Q"), key, shift);
    EXPECT_EQ(key, 'Q');
    EXPECT_EQ(shift, scCtrl | scShift);
    ShortCutToKey(TextToShortCut("F5"), key, shift);
    EXPECT_EQ(key, 0x74);
    EXPECT_EQ(shift, 0);
}
