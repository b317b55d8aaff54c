// Text by number: the package's English, a language module in front of it, and the quirks of
// loading one.
#include "locale/Locale.h"
#include "foundation/ResStrings.h"
#include "locale/LocaleIds.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace {

class LocaleTest : public ::testing::Test {
protected:
    void TearDown() override {
        LoadNewLanguage("");
        frLocale().OnGetString = nullptr;
    }
};

TEST_F(LocaleTest, ThePackageHoldsTheTextsAsTheyStand) {
    const std::pair<int, const char*> texts[] = {
        {SSpecialSettings, "Special settings"},
        {SLabelItemCaption, "menu item\x92s text"},
        {SLabelSafeStringMoving, "Drag selected block##with safe mode"},
        {SNegativeFileSize, "New file size should not be less than zero."},
        {51080, "Processor\x92s registers"},
        {51206, "Enable enhanced darw##for the list items"},
        {51264, "Hotkey for modules sort"},
        {65523, "##"},
    };
    for (const auto& [id, text] : texts) {
        EXPECT_EQ(LocaleStr(id), text) << id;
        EXPECT_EQ(DefaultLocaleStr(id), text) << id;
    }
    EXPECT_EQ(LocaleStr(1), "");
    EXPECT_EQ(DefaultLocaleStr(1), "Not found");
}

TEST_F(LocaleTest, AModuleTranslatesWhatItHoldsThePackageTheRestAndOneThatFailsNothing) {
    LoadNewLanguage(ZELVANE_TEST_LANGUAGE);
    ASSERT_TRUE(frLocale().Loaded);
    EXPECT_EQ(LocaleStr(SExpertsSettings), "Experteneinstellungen");
    EXPECT_EQ(LocaleStr(SExpertsMenu), "Experts menu");
    EXPECT_EQ(DefaultLocaleStr(SExpertsSettings), "Experts settings");
    // The lower layers' texts follow the language too.
    EXPECT_EQ(ResStr(SNegativeFileSize), "Die neue Dateigr\xF6\xDF"
                                         "e darf nicht negativ sein.");
    LoadNewLanguage("");
    EXPECT_FALSE(frLocale().Loaded);
    EXPECT_EQ(LocaleStr(SExpertsSettings), "Experts settings");
    EXPECT_EQ(ResStr(SNegativeFileSize), "New file size should not be less than zero.");
    // A module that fails to load counts as loaded and leaves English.
    LoadNewLanguage("/nonexistent/zelv_rus.dll");
    EXPECT_TRUE(frLocale().Loaded);
    EXPECT_EQ(LocaleStr(SExpertsSettings), "Experts settings");
}

TEST_F(LocaleTest, TheHookIsAskedFirst) {
    LoadNewLanguage(ZELVANE_TEST_LANGUAGE);
    frLocale().OnGetString = [](int id, std::string& text) {
        if (id == SSpecialSettings) text = "hooked";
    };
    EXPECT_EQ(LocaleStr(SSpecialSettings), "hooked");
    EXPECT_EQ(LocaleStr(SExpertsSettings), "Experteneinstellungen");
}

} // namespace
