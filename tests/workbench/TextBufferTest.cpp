// The edit buffer's text: lines and line breaks, ranges, virtual space, undo and redo.
#include "workbench/model/TextBuffer.h"

#include <gtest/gtest.h>

using namespace workbench;

TEST(TextBufferLines, KeepTheFilesLineBreakAndLastEmptyLineAndRaiseOutside) {
    TTextBuffer b;
    b.SetText("one\r\ntwo\r\n");
    EXPECT_EQ(b.LineCount(), 3);
    EXPECT_EQ(b.Line(2), "two");
    EXPECT_EQ(b.Line(3), "");
    EXPECT_EQ(b.Text(), "one\r\ntwo\r\n");

    b.SetText("unix\nlines");
    EXPECT_EQ(b.LineBreak(), "\n");
    EXPECT_EQ(b.Text(), "unix\nlines");
    // A row outside the buffer raises.
    EXPECT_THROW(b.Line(0), EEditBufferError);
    EXPECT_THROW(b.Line(3), EEditBufferError);
}

TEST(TextBufferRanges, AreReadWithCRLFBetweenLinesAndCutAtLineEnds) {
    TTextBuffer b;
    b.SetText("alpha\nbeta\ngamma");
    EXPECT_EQ(b.GetRange({1, 2}, {1, 4}), "lp");
    EXPECT_EQ(b.GetRange({1, 4}, {3, 3}), "ha\r\nbeta\r\nga");
    EXPECT_EQ(b.GetRange({2, 1}, {3, 1}), "beta\r\n");
    EXPECT_EQ(b.GetRange({2, 20}, {2, 30}), ""); // all in virtual space
    EXPECT_EQ(b.GetRange({2, 3}, {2, 30}), "ta");
    EXPECT_EQ(b.GetRange({3, 3}, {1, 4}), "ha\r\nbeta\r\nga"); // ends in either order
}

TEST(TextBufferEdits, ReplaceAcrossLinesGivesTheEndOfTheInsertionAndDeleteLeavesALine) {
    TTextBuffer b;
    b.SetText("alpha\nbeta\ngamma");
    TTextPos end = b.Replace({1, 3}, {3, 2}, "X\r\nYY");
    EXPECT_EQ(b.Text(), "alX\nYYamma");
    EXPECT_EQ(end, (TTextPos{2, 3}));
    // Deleting every line leaves one empty line.
    b.SetText("a\nb\nc");
    b.DeleteLines(2, 2);
    EXPECT_EQ(b.Text(), "a\nc");
    b.DeleteLines(1, 9);
    EXPECT_EQ(b.LineCount(), 1);
    EXPECT_EQ(b.Text(), "");
}

TEST(TextBufferEdits, TextInsertedInVirtualSpaceIsPaddedWithSpaces) {
    TTextBuffer b;
    b.SetText("ab");
    b.Replace({1, 5}, {1, 5}, "X");
    EXPECT_EQ(b.Line(1), "ab  X");
    // A line break typed there adds no trailing blanks.
    b.SetText("ab");
    b.Replace({1, 6}, {1, 6}, "\r\nc");
    EXPECT_EQ(b.Text(), "ab\r\nc");
}

TEST(TextBufferUndo, UndoesAGroupAsOneStepAndRedoesItAndAnEmptyGroupIsNoStep) {
    TTextBuffer b;
    b.SetText("one\ntwo");
    b.BeginGroup(7);
    b.Replace({1, 1}, {1, 1}, "A");
    b.Replace({2, 1}, {2, 4}, "");
    b.EndGroup();
    b.Replace({1, 1}, {1, 1}, "B"); // a step of its own
    EXPECT_EQ(b.Text(), "BAone\n");
    EXPECT_EQ(b.Undo(), 0);
    EXPECT_EQ(b.Text(), "Aone\n");
    EXPECT_EQ(b.Undo(), 7);
    EXPECT_EQ(b.Text(), "one\ntwo");
    EXPECT_EQ(b.Undo(), -1);
    EXPECT_EQ(b.Redo(), 7);
    EXPECT_EQ(b.Text(), "Aone\n");
    EXPECT_EQ(b.Redo(), 0);
    EXPECT_EQ(b.Text(), "BAone\n");
    EXPECT_FALSE(b.CanRedo());
    // A group that changes nothing is no step.
    b.SetText("x");
    b.BeginGroup(1);
    b.EndGroup();
    EXPECT_FALSE(b.CanUndo());
    EXPECT_FALSE(b.Modified());
}
