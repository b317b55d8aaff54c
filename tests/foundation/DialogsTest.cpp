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

} // namespace

TEST(Dialogs, StylesOwnerCaptionTextsAndYesOnlyForIdYes) {
    // Records each box and answers with the button asked for.
    std::vector<Call> calls;
    int answer = IDYES;
    TWindowSystem ws;
    ws.MessageBox = [&](HWND owner, const std::string& text, const std::string& caption,
                        uint32_t style) {
        calls.push_back({owner, text, caption, style});
        return answer;
    };
    TWindowSystem old = SetWindowSystem(ws);
    HWND oldOwner = OwnerWnd;
    std::string oldCaption = DialogCaption;
    OwnerWnd = reinterpret_cast<HWND>(0x77);
    DialogCaption = "Zelvane";
    ShowError("%s failed (%d)", {"Save", 5});
    ShowInfo("%d files", {3});
    ShowWarning("%s", {"warn"});
    EXPECT_TRUE(QueryDialog("Delete %s?", {"x"}));
    EXPECT_EQ(QueryDialogEx("Save %s?", {"y"}), IDYES);
    EXPECT_TRUE(WarningDialog("%d?", {1}));
    EXPECT_EQ(WarningDialogEx("%d!", {2}), IDYES);
    std::vector<std::string> seen;
    for (const Call& c : calls)
        seen.push_back(c.Text + " " + std::to_string(c.Style) + " " + c.Caption +
                       (c.Owner == reinterpret_cast<HWND>(0x77) ? " owned" : " ?"));
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "Save failed (5) 16 Zelvane owned", "3 files 64 Zelvane owned",
                        "warn 48 Zelvane owned", "Delete x? 36 Zelvane owned",
                        "Save y? 35 Zelvane owned", "1? 52 Zelvane owned", "2! 35 Zelvane owned"}));
    // Changes of caption and owner reach the next box.
    DialogCaption = "Other";
    OwnerWnd = nullptr;
    ShowInfo("x");
    EXPECT_EQ(calls.back().Caption, "Other");
    EXPECT_EQ(calls.back().Owner, nullptr);
    // Yes only for IDYES; the extended ones give the button.
    for (int button : {IDNO, IDCANCEL, IDYES}) {
        answer = button;
        EXPECT_EQ(QueryDialog("q"), button == IDYES) << button;
        EXPECT_EQ(WarningDialog("w"), button == IDYES) << button;
        EXPECT_EQ(QueryDialogEx("q"), button);
        EXPECT_EQ(WarningDialogEx("w"), button);
    }
    SetWindowSystem(old);
    OwnerWnd = oldOwner;
    DialogCaption = oldCaption;
}
