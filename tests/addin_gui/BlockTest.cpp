// The block expert from key to text: a block marked in the workbench's editor, the expert's hot
// key pressed as a key event, and the buffer, the block, the cursor and the beeps read back.
#include "tests/addin_gui/AddinFixture.h"

using namespace addintest;

namespace {

struct TKey {
    Qt::Key Key;
    Qt::KeyboardModifiers Mods;
};
// The keys as an X11 keyboard sends them: with Shift the punctuation keys give their shifted
// symbols.
const TKey kLeftOne{Qt::Key_Comma, Qt::ControlModifier};
const TKey kLeftTwo{Qt::Key_Less, Qt::ControlModifier | Qt::ShiftModifier};
const TKey kRightOne{Qt::Key_Period, Qt::ControlModifier};
const TKey kRightTwo{Qt::Key_Greater, Qt::ControlModifier | Qt::ShiftModifier};
const TKey kSort{Qt::Key_Semicolon, Qt::ControlModifier};

class BlockTest : public AddinFixture {
protected:
    void SetUp() override {
        AddinFixture::SetUp();
        StartAddin();
        view = Open("Utils.pas");
    }
    // The text, with the block marked from `from` to `to` and the cursor at `to`.
    void Mark(const std::string& text, TTextPos from, TTextPos to) {
        view->Buffer().SetText(text);
        addintest::Mark(view, from, to);
    }
    void Press(TKey key) { PressInEditor(key.Key, key.Mods); }
    std::string Text() const { return view->Buffer().Text(); }

    TEditView* view = nullptr;
};

TEST_F(BlockTest, EachHotKeyMovesOrSortsTheMarkedBlockOrRefusesWithABeep) {
    struct TCase {
        const char* Name;
        TStoredChange Setting; // changed before the case and kept for the cases after it
        const char* Text;
        TTextPos From, To; // the block, marked from From to To, where the cursor stands
        TKey Key;
        const char* Expected;
        int Beeps;
        TTextPos BlockStart, BlockEnd; // {0, 0}: the insertion took the block away
        TTextPos Cursor;
    };
    // clang-format off
    const TCase cases[] = {
        {"whole lines right", {}, "a\r\n  b\r\nc", {1, 1}, {3, 1}, kRightOne,
            " a\r\n   b\r\nc", 0, {1, 2}, {3, 1}, {3, 1}},
        {"marked upwards: the cursor stays", {}, "a\r\nb\r\nc", {3, 1}, {1, 1}, kRightOne,
            " a\r\n b\r\nc", 0, {1, 2}, {3, 1}, {1, 2}},
        {"whole lines left by two", {}, "    a\r\n  b\r\nc", {1, 1}, {3, 1}, kLeftTwo,
            "  a\r\nb\r\nc", 0, {1, 1}, {3, 1}, {3, 1}},
        {"one space short refuses", {}, "    a\r\n b\r\nc", {1, 1}, {3, 1}, kLeftTwo,
            "    a\r\n b\r\nc", 1, {1, 1}, {3, 1}, {3, 1}},
        {"a tab is no space", {}, "  a\r\n\tb\r\nc", {1, 1}, {3, 1}, kLeftOne,
            "  a\r\n\tb\r\nc", 1, {1, 1}, {3, 1}, {3, 1}},
        {"blank lines stay", {}, "  a\r\n\r\n \t\r\n  b\r\n", {1, 1}, {5, 1}, kLeftTwo,
            "a\r\n\r\n \t\r\nb\r\n", 0, {1, 1}, {5, 1}, {5, 1}},
        {"blank lines are not indented", {}, "a\r\n\r\nb\r\n", {1, 1}, {4, 1}, kRightTwo,
            "  a\r\n\r\n  b\r\n", 0, {1, 3}, {4, 1}, {4, 1}},
        {"mid-line start", {}, "begin   foo;\r\n    bar;\r\nend", {1, 9}, {3, 1}, kLeftTwo,
            "begin foo;\r\n  bar;\r\nend", 0, {1, 7}, {3, 1}, {3, 1}},
        {"mid-line end moves with the shift", {}, "  a b\r\n  c d", {1, 3}, {2, 4}, kRightOne,
            "   a b\r\n   c d", 0, {1, 4}, {2, 5}, {2, 5}},
        {"sorting by name", {}, "  b: Integer;\r\n  a: Byte;\r\nend", {1, 3}, {3, 1}, kSort,
            "  a: Byte;\r\n  b: Integer;\r\nend", 0, {0, 0}, {0, 0}, {1, 3}},
        {"sorting without an end refuses", {}, "  b\r\n  a\r\nend", {1, 3}, {3, 1}, kSort,
            "  b\r\n  a\r\nend", 1, {1, 3}, {3, 1}, {3, 1}},
        {"cursor sent to the start", {"MoveCursorTopLeft", "False", "True"},
            "a\r\nb\r\nc", {1, 1}, {3, 1}, kRightOne,
            " a\r\n b\r\nc", 0, {1, 2}, {3, 1}, {1, 2}},
        {"without safe mode, as far as spaces go", {"SafeStringMoving", "True", "False"},
            "    a\r\n b\r\n\tc\r\nd", {1, 1}, {4, 1}, kLeftTwo,
            "  a\r\nb\r\n\tc\r\nd", 0, {1, 1}, {4, 1}, {1, 1}},
    };
    // clang-format on
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.Name);
        if (!c.Setting.Name.empty()) {
            SetStoredValue(c.Setting.Name, c.Setting.From, c.Setting.To);
            view = Open("Utils.pas");
        }
        beeps = 0;
        Mark(c.Text, c.From, c.To);
        Press(c.Key);
        EXPECT_EQ(Text(), c.Expected);
        EXPECT_EQ(beeps, c.Beeps);
        bool kept = c.BlockStart.Row != 0;
        EXPECT_EQ(view->Buffer().BlockValid(), kept);
        if (kept) {
            EXPECT_EQ(view->Buffer().BlockStart(), c.BlockStart);
            EXPECT_EQ(view->Buffer().BlockEnd(), c.BlockEnd);
        }
        EXPECT_EQ(TTextPos({view->GetPosition()->GetRow(), view->GetPosition()->GetColumn()}),
                  c.Cursor);
    }
}

TEST_F(BlockTest, AColumnBlockIsRefusedWithoutASound) {
    Mark("  a\r\n  b\r\n", {1, 1}, {2, 3});
    view->GetBlock()->SetStyle(btColumn);
    for (TKey key : {kLeftOne, kRightOne, kSort})
        Press(key);
    EXPECT_EQ(Text(), "  a\r\n  b\r\n");
    EXPECT_EQ(beeps, 0);
}

TEST_F(BlockTest, OneUndoTakesACommandBackWhole) {
    Mark("    a\r\n    b\r\nc", {1, 1}, {3, 1});
    Press(kLeftTwo);
    ASSERT_EQ(Text(), "  a\r\n  b\r\nc");
    QTest::keyClick(Editor(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Text(), "    a\r\n    b\r\nc");
}

TEST_F(BlockTest, TheCommandsAreEnabledOnlyWithAMarkedBlockAndTheMenuRunsThem) {
    QAction* sort = MenuCommand(QStringLiteral("Sorting"));
    ASSERT_NE(sort, nullptr);
    view->Buffer().SetText("b: Integer;\r\na: Byte;\r\n");
    view->GetBlock()->Reset();
    Application->UpdateActions();
    EXPECT_FALSE(sort->isEnabled());
    Mark("b: Integer;\r\na: Byte;\r\n", {1, 1}, {3, 1});
    Application->UpdateActions();
    EXPECT_TRUE(sort->isEnabled());
    sort->trigger();
    EXPECT_EQ(Text(), "a: Byte;\r\nb: Integer;\r\n");
}

} // namespace
