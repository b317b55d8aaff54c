// Qt text and keys: Windows-1251 text both ways, and the platform's shortcuts as Qt key
// sequences, with the symbols a keyboard sends for Shift on punctuation keys.
#include "toolsapi/QtBridge.h"

#include "rtl/Menus.h"

#include <gtest/gtest.h>

using namespace ToolsAPI;

namespace {

TEST(QtBridge, Cp1251TextAndEveryNamedKeyRoundTrip) {
    const std::string bytes = "Expert\x92s \xCF\xF0\xE8\xE2\xE5\xF2";
    QString text = FromBytes(bytes);
    EXPECT_EQ(text, QString::fromUtf8("Expert\u2019s Привет"));
    EXPECT_EQ(ToBytes(text), bytes);
    const char* texts[] = {"Ctrl+.",   "Ctrl+,", "Shift+Ctrl+,", "Ctrl+;",    "Ctrl+A",
                           "Alt+F4",   "F11",    "Esc",          "Ctrl+S",    "Shift+Del",
                           "Ctrl+`",   "Ctrl+[", "Ctrl+]",       "Ctrl+\\",   "Ctrl+'",
                           "Ctrl+-",   "Ctrl+=", "Ctrl+/",       "Ctrl+Home", "PgDn",
                           "Ctrl+Ins", "Ctrl+5", "Ctrl+Alt+M",   "Enter",     "Space"};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        rtl::TShortCut sc = rtl::TextToShortCut(text);
        ASSERT_NE(sc, 0);
        QKeySequence seq = ShortCutToKeySequence(sc);
        ASSERT_FALSE(seq.isEmpty());
        EXPECT_EQ(KeySequenceToShortCut(seq), sc);
    }
    EXPECT_TRUE(ShortCutToKeySequence(rtl::TShortCut(0)).isEmpty());
    EXPECT_EQ(KeySequenceToShortCut(QKeySequence()), 0);
}

TEST(ShortCutKeys, ShiftedPunctuationAlsoFiresFromTheKeyboardsSymbol) {
    struct TCase {
        const char* Text;
        Qt::Key Symbol;
    };
    const TCase cases[] = {{"Shift+Ctrl+,", Qt::Key_Less},      {"Shift+Ctrl+.", Qt::Key_Greater},
                           {"Shift+Ctrl+;", Qt::Key_Colon},     {"Shift+Ctrl+/", Qt::Key_Question},
                           {"Shift+Ctrl+[", Qt::Key_BraceLeft}, {"Shift+Ctrl+1", Qt::Key_Exclam},
                           {"Shift+Ctrl+=", Qt::Key_Plus},      {"Shift+Ctrl+8", Qt::Key_Asterisk}};
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.Text);
        rtl::TShortCut sc = rtl::TextToShortCut(c.Text);
        QList<QKeySequence> list = ShortCutToKeySequences(sc);
        QKeySequence symbol(QKeyCombination(Qt::ControlModifier | Qt::ShiftModifier, c.Symbol));
        ASSERT_EQ(list.size(), 2);
        EXPECT_EQ(list[0], ShortCutToKeySequence(sc));
        EXPECT_EQ(list[1], symbol);
        EXPECT_EQ(KeySequenceToShortCut(symbol), sc);
    }
    // Without Shift there is nothing to add.
    EXPECT_EQ(ShortCutToKeySequences(rtl::TextToShortCut("Ctrl+,")).size(), 1);
}

} // namespace
