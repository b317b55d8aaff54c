// Message boxes: style, owner, caption and result, through a recording window system.
#include "foundation/Dialogs.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace {

struct Call {
    HWND Owner;
    std::string Text, Caption;
    uint32_t Style;
};

// Records each box and answers with a fixed button.
class DialogsTest : public ::testing::Test {
protected:
    void SetUp() override {
        TWindowSystem ws;
        ws.MessageBox = [this](HWND owner, const std::string& text, const std::string& caption,
                               uint32_t style) {
            calls.push_back({owner, text, caption, style});
            return answer;
        };
        old = SetWindowSystem(ws);
        oldOwner = OwnerWnd;
        oldCaption = DialogCaption;
        OwnerWnd = reinterpret_cast<HWND>(0x77);
        DialogCaption = "Zelvane";
    }
    void TearDown() override {
        SetWindowSystem(old);
        OwnerWnd = oldOwner;
        DialogCaption = oldCaption;
    }
    std::vector<Call> calls;
    int answer = IDOK;
    TWindowSystem old;
    HWND oldOwner = nullptr;
    std::string oldCaption;
};

} // namespace

TEST_F(DialogsTest, StylesOfTheBoxes) {
    ShowError("e");
    ShowInfo("i");
    ShowWarning("w");
    QueryDialog("q");
    QueryDialogEx("qx");
    WarningDialog("wd");
    WarningDialogEx("wdx");
    ASSERT_EQ(calls.size(), 7u);
    std::vector<uint32_t> styles;
    for (const Call& c : calls)
        styles.push_back(c.Style);
    EXPECT_EQ(styles, (std::vector<uint32_t>{16, 64, 48, 36, 35, 52, 35}));
    for (const Call& c : calls) {
        EXPECT_EQ(c.Owner, reinterpret_cast<HWND>(0x77));
        EXPECT_EQ(c.Caption, "Zelvane");
    }
    EXPECT_EQ(calls[4].Text, "qx");
}

TEST_F(DialogsTest, FormattedOverloads) {
    ShowError("%s failed (%d)", {"Save", 5});
    ShowInfo("%d files", {3});
    ShowWarning("%s", {"warn"});
    EXPECT_EQ(calls[0].Text, "Save failed (5)");
    EXPECT_EQ(calls[1].Text, "3 files");
    EXPECT_EQ(calls[2].Text, "warn");
    answer = IDYES;
    EXPECT_TRUE(QueryDialog("Delete %s?", {"x"}));
    EXPECT_EQ(calls.back().Text, "Delete x?");
    EXPECT_EQ(QueryDialogEx("Save %s?", {"y"}), IDYES);
    EXPECT_TRUE(WarningDialog("%d?", {1}));
    EXPECT_EQ(WarningDialogEx("%d!", {2}), IDYES);
    EXPECT_EQ(calls.back().Text, "2!");
    EXPECT_EQ(calls.back().Style, 35u);
}

TEST_F(DialogsTest, YesOnlyForIdYes) {
    answer = IDNO;
    EXPECT_FALSE(QueryDialog("q"));
    EXPECT_FALSE(WarningDialog("w"));
    EXPECT_EQ(QueryDialogEx("q"), IDNO);
    answer = IDCANCEL;
    EXPECT_FALSE(QueryDialog("q"));
    EXPECT_EQ(WarningDialogEx("w"), IDCANCEL);
    answer = IDYES;
    EXPECT_TRUE(QueryDialog("q"));
    EXPECT_TRUE(WarningDialog("w"));
}

TEST_F(DialogsTest, CaptionAndOwnerChangesReachTheBox) {
    DialogCaption = "Other";
    OwnerWnd = nullptr;
    ShowInfo("x");
    EXPECT_EQ(calls.back().Caption, "Other");
    EXPECT_EQ(calls.back().Owner, nullptr);
}

TEST(DialogsWithoutWindowSystem, ShowNothingAndAnswerZero) {
    TWindowSystem old = SetWindowSystem({});
    EXPECT_NO_THROW(ShowError("e"));
    EXPECT_FALSE(QueryDialog("q"));
    EXPECT_EQ(QueryDialogEx("q"), 0);
    EXPECT_FALSE(WarningDialog("w"));
    EXPECT_EQ(WarningDialogEx("w"), 0);
    SetWindowSystem(old);
}
