// The settings submenu in the running workbench: the language submenu with the modules built
// beside the add-in, the menu rebuilt in the chosen language without a restart, modules that lack
// numbers or do not load, the dialog that edits the list of modules, "Load default", and two items
// given the same hot key.
#include "tests/addin_gui/AddinFixture.h"

#include "foundation/Dialogs.h"
#include "rtl/Menus.h"
#include "rtl/Registry.h"
#include "toolsapi/QtBridge.h"

#include <QTableWidget>

using namespace addintest;

namespace {

QString ShortCutText(QAction* action) {
    return ToolsAPI::FromBytes(
        rtl::ShortCutToText(ToolsAPI::KeySequenceToShortCut(action->shortcut())));
}

QAction* Entry(QMenu* menu, const QString& caption) {
    if (menu)
        for (QAction* a : menu->actions())
            if (a->text() == caption) return a;
    return nullptr;
}

class SettingsMenuTest : public AddinFixture {
protected:
    void SetUp() override {
        AddinFixture::SetUp();
        for (const char* module : {"zelv_eng.dll", "zelv_rus.dll", "zelv_ger.dll"})
            std::filesystem::copy_file(std::string(ZELVANE_LANGUAGE_DIR) + "/" + module,
                                       PackageFile(module));
        zelvane::TWindowSystem ws = zelvane::WindowSystem();
        ws.MessageBox = [this](zelvane::HWND, const std::string& text, const std::string&,
                               uint32_t) {
            questions.push_back(text);
            return answer;
        };
        zelvane::SetWindowSystem(ws);
    }

    QMenu* SettingsMenu() const {
        QAction* settings = Entry(ExpertsMenu(), QStringLiteral("Settings"));
        return settings ? settings->menu() : nullptr;
    }
    QMenu* LanguageMenu() const {
        QAction* language = Entry(SettingsMenu(), QStringLiteral("Language"));
        return language ? language->menu() : nullptr;
    }
    QStringList LanguageEntries() const { return MenuCaptions(LanguageMenu()->actions()); }
    QString CheckedLanguage() const {
        for (QAction* a : LanguageMenu()->actions())
            if (a->isChecked()) return a->text();
        return {};
    }
    // Runs an entry of a submenu as a click does.
    void Run(QMenu* menu, const QString& caption) {
        QAction* entry = Entry(menu, caption);
        ASSERT_NE(entry, nullptr) << caption.toStdString() << " in "
                                  << MenuCaptions(menu->actions()).join(',').toStdString();
        Application->UpdateActions();
        entry->trigger();
    }
    // Runs an entry of a submenu, and waits for the menu rebuilt with the item that shows what it
    // did.
    void RunAndRebuild(QMenu* menu, const QString& caption, const QString& shownItem) {
        QPointer<QMenu> old = ExpertsMenu();
        Run(menu, caption);
        ASSERT_TRUE(WaitFor([&] { return !old && MenuCommand(shownItem); }))
            << shownItem.toStdString();
    }
    void Choose(const QString& language, const QString& shownItem) {
        RunAndRebuild(LanguageMenu(), language, shownItem);
    }
    void WriteRegistry(const char* name, const std::string& value) {
        rtl::TRegistry reg;
        ASSERT_TRUE(reg.OpenKey("\\Software\\Zelvane", true));
        reg.WriteString(name, value);
    }

    int answer = zelvane::IDYES;
    std::vector<std::string> questions;
};

TEST_F(SettingsMenuTest, AChosenLanguageRebuildsTheMenuInItAtOnceAndStaysChosen) {
    StartAddin();
    EXPECT_EQ(MenuCaptions(SettingsMenu()->actions()),
              (QStringList{"Edit...", "Load default", "-", "Language"}));
    EXPECT_EQ(LanguageEntries(), (QStringList{"Default (English)", "-", "English", "German",
                                              "Russian", "-", "Modules..."}));
    EXPECT_EQ(CheckedLanguage(), QStringLiteral("Default (English)"));

    struct TCase {
        QString Choice, ViewForms, UnitManager, Checked;
        QStringList Entries;
    };
    const TCase cases[] = {
        {"Russian", "Просмотр форм...", "Менеджер модулей", "Русский",
         {"Default (Английский)", "-", "Английский", "Немецкий", "Русский", "-", "Modules..."}},
        {"Немецкий", "Formulare anzeigen...", "Unit-Verwaltung", "Deutsch",
         {"Default (Englisch)", "-", "Deutsch", "Englisch", "Russisch", "-", "Modules..."}},
        {"Englisch", "View Forms...", "Unit manager", "English",
         {"Default (English)", "-", "English", "German", "Russian", "-", "Modules..."}},
        {"Default (English)", "View Forms...", "Unit manager", "Default (English)",
         {"Default (English)", "-", "English", "German", "Russian", "-", "Modules..."}},
        {"Russian", "Просмотр форм...", "Менеджер модулей", "Русский",
         {"Default (Английский)", "-", "Английский", "Немецкий", "Русский", "-", "Modules..."}},
    };
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.Choice.toStdString());
        Choose(c.Choice, c.ViewForms);
        EXPECT_NE(MenuCommand(c.UnitManager), nullptr);
        EXPECT_EQ(CheckedLanguage(), c.Checked);
        EXPECT_EQ(LanguageEntries(), c.Entries);
    }
    // The language chosen already is chosen again without a rebuild.
    QMenu* menu = ExpertsMenu();
    Run(LanguageMenu(), QStringLiteral("Русский"));
    RunLoop(100);
    EXPECT_EQ(ExpertsMenu(), menu);
    EXPECT_EQ(CheckedLanguage(), QStringLiteral("Русский"));
    // The next start comes up in it.
    RestartAddin();
    EXPECT_NE(MenuCommand(QStringLiteral("Просмотр форм...")), nullptr);
}

TEST_F(SettingsMenuTest, MissingNumbersShowInEnglishAndAModuleThatDoesNotLoadLeavesEnglish) {
    std::filesystem::copy_file(ZELVANE_TEST_LANGUAGE, PackageFile("zelv_test.dll"));
    testfiles::WriteFile(PackageFile("zelv_empty.dll"), "");
    WriteRegistry("ExpLocaleModules", "Test=zelv_test.dll,Empty=zelv_empty.dll,Gone=zelv_gone.dll");
    StartAddin();
    // A module whose file is not there has no entry.
    EXPECT_EQ(LanguageEntries(),
              (QStringList{"Default (English)", "-", "Empty", "Test", "-", "Modules..."}));
    Choose(QStringLiteral("Test"), QStringLiteral("Formulare anzeigen..."));
    EXPECT_NE(MenuCommand(QStringLiteral("View Units...")), nullptr);
    Choose(QStringLiteral("Empty"), QStringLiteral("View Forms..."));
    EXPECT_EQ(CheckedLanguage(), QStringLiteral("Empty"));
    EXPECT_EQ(beeps, 0);
    EXPECT_TRUE(errors.empty());
}

TEST_F(SettingsMenuTest, TheModulesDialogKeepsTheRowsWithANameAndAFile) {
    StartAddin();
    WhenModal([this](QWidget* dialog) {
        auto* grid = dialog->findChild<QTableWidget*>(QStringLiteral("LocaleGrid"));
        EXPECT_EQ(grid->rowCount(), 3);
        EXPECT_EQ(grid->item(2, 1)->text(), QStringLiteral("zelv_ger.dll"));
        // German goes, after the question; a new row with a name only is dropped at the end.
        grid->setCurrentCell(2, 0);
        dialog->findChild<QAction*>(QStringLiteral("acDelete"))->trigger();
        dialog->findChild<QAction*>(QStringLiteral("acAdd"))->trigger();
        grid->setItem(grid->currentRow(), 0, new QTableWidgetItem(QStringLiteral("Klingon")));
        dialog->close();
    });
    Run(LanguageMenu(), QStringLiteral("Modules..."));
    EXPECT_EQ(questions, std::vector<std::string>{"Delete German?"});
    EXPECT_EQ(LanguageEntries(),
              (QStringList{"Default (English)", "-", "English", "Russian", "-", "Modules..."}));
    StopAddin();
    rtl::TRegistry reg;
    ASSERT_TRUE(reg.OpenKey("\\Software\\Zelvane", false));
    EXPECT_EQ(reg.ReadString("ExpLocaleModules"), "Russian=zelv_rus.dll,English=zelv_eng.dll");
}

TEST_F(SettingsMenuTest, LoadDefaultAsksFirstAndThenTheBuiltInSettingsReturn) {
    StartAddin();
    StopAddin();
    SetStoredValue("ShortCutText", "'Ctrl+.'", "'Ctrl+Alt+M'");
    const QString right = QStringLiteral("Move block right (1 pos)");
    std::string saved = testfiles::ReadFile(PackageFile("ExpData.spc"));

    answer = zelvane::IDNO;
    Run(SettingsMenu(), QStringLiteral("Load default"));
    RunLoop(100);
    EXPECT_EQ(questions, std::vector<std::string>{"Load default expert\x92s settings?"});
    EXPECT_EQ(ShortCutText(MenuCommand(right)), QStringLiteral("Ctrl+Alt+M"));
    EXPECT_EQ(testfiles::ReadFile(PackageFile("ExpData.spc")), saved);

    answer = zelvane::IDYES;
    RunAndRebuild(SettingsMenu(), QStringLiteral("Load default"), right);
    EXPECT_EQ(ShortCutText(MenuCommand(right)), QStringLiteral("Ctrl+."));
    EXPECT_FALSE(std::filesystem::exists(PackageFile("ExpData.spc")));
    EXPECT_EQ(MenuCaptions(SettingsMenu()->actions()),
              (QStringList{"Edit...", "Load default", "-", "Language"}));
}

TEST_F(SettingsMenuTest, AKeyGivenToTwoItemsRunsTheFirstAndTheSecondShowsNone) {
    StartAddin();
    StopAddin();
    SetStoredValue("ShortCutText", "'Ctrl+.'", "'Ctrl+,'");
    EXPECT_EQ(ShortCutText(MenuCommand(QStringLiteral("Move block left (1 pos)"))),
              QStringLiteral("Ctrl+,"));
    EXPECT_EQ(ShortCutText(MenuCommand(QStringLiteral("Move block right (1 pos)"))), QString());
    TEditView* view = Open("Utils.pas");
    view->Buffer().SetText("  a\r\nb");
    view->GetPosition()->Move(1, 1);
    view->GetBlock()->Extend(2, 1);
    PressInEditor(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(view->Buffer().Text(), " a\r\nb");
    // The stored keys stay, for the user to change one.
    StopAddin();
    std::string text = SettingsText();
    size_t first = text.find("ShortCutText = 'Ctrl+,'");
    EXPECT_NE(text.find("ShortCutText = 'Ctrl+,'", first + 1), std::string::npos);
}

} // namespace
