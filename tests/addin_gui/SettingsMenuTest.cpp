// The settings submenu in the running workbench: the language submenu with the modules built
// beside the add-in, the menu rebuilt in the chosen language without a restart, modules that lack
// numbers or do not load, the dialog that edits the list of modules, "Load default", and two items
// given the same hot key.
#include "tests/addin_gui/AddinFixture.h"

#include "foundation/Dialogs.h"

using namespace addintest;

namespace {

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
    // clang-format off
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
    // clang-format on
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
    EXPECT_EQ(ReadRegistry("ExpLocaleModules"), "Russian=zelv_rus.dll,English=zelv_eng.dll");
}

TEST_F(SettingsMenuTest, LoadDefaultAsksFirstAndThenTheBuiltInSettingsReturn) {
    SetStoredValue("ShortCutText", "'Ctrl+.'", "'Ctrl+Alt+M'");
    const QString right = QStringLiteral("Move block right (1 pos)");
    std::string saved = testfiles::ReadFile(PackageFile("ExpData.spc"));

    answer = zelvane::IDNO;
    Run(SettingsMenu(), QStringLiteral("Load default"));
    RunLoop(100);
    EXPECT_EQ(questions, std::vector<std::string>{"Load default expert\x92s settings?"});
    EXPECT_EQ(CommandShortCut(right), QStringLiteral("Ctrl+Alt+M"));
    EXPECT_EQ(testfiles::ReadFile(PackageFile("ExpData.spc")), saved);

    answer = zelvane::IDYES;
    RunAndRebuild(SettingsMenu(), QStringLiteral("Load default"), right);
    EXPECT_EQ(CommandShortCut(right), QStringLiteral("Ctrl+."));
    EXPECT_FALSE(std::filesystem::exists(PackageFile("ExpData.spc")));
    EXPECT_EQ(MenuCaptions(SettingsMenu()->actions()),
              (QStringList{"Edit...", "Load default", "-", "Language"}));
}

TEST_F(SettingsMenuTest, AKeyGivenToTwoItemsRunsTheFirstAndTheSecondShowsNone) {
    SetStoredValue("ShortCutText", "'Ctrl+.'", "'Ctrl+,'");
    EXPECT_EQ(CommandShortCut(QStringLiteral("Move block left (1 pos)")), QStringLiteral("Ctrl+,"));
    EXPECT_EQ(CommandShortCut(QStringLiteral("Move block right (1 pos)")), QString());
    TEditView* view = Open("Utils.pas");
    view->Buffer().SetText("  a\r\nb");
    Mark(view, {1, 1}, {2, 1});
    PressInEditor(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(view->Buffer().Text(), " a\r\nb");
    // The stored keys stay, for the user to change one.
    StopAddin();
    std::string text = SettingsText();
    size_t first = text.find("ShortCutText = 'Ctrl+,'");
    EXPECT_NE(text.find("ShortCutText = 'Ctrl+,'", first + 1), std::string::npos);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The settings dialog

// The dialog is reached as a user reaches it: by its widgets' names, from the outside.
class SettingsDialogTest : public SettingsMenuTest {
protected:
    using Form = QDialog;
    // Opens "Edit..." and runs the check inside the dialog once its first node is shown; the
    // check closes the dialog, saving or not.
    void EditSettings(std::function<void(Form*)> check) {
        bool ran = false;
        WhenModal([&](QWidget* w) {
            auto* form = qobject_cast<Form*>(w);
            ASSERT_TRUE(form && form->objectName() == "SpcForm");
            ASSERT_TRUE(WaitFor([&] { return Tree(form)->currentItem() != nullptr; }));
            check(form);
            ran = true;
        });
        Run(SettingsMenu(), QStringLiteral("Edit..."));
        EXPECT_TRUE(ran);
    }
    static QTreeWidget* Tree(Form* form) { return form->findChild<QTreeWidget*>("TreeView"); }
    static QTreeWidgetItem* Node(Form* form, const QStringList& path) {
        QTreeWidgetItem* node = Tree(form)->topLevelItem(0);
        for (const QString& text : path) {
            QTreeWidgetItem* next = nullptr;
            for (int i = 0; node && i < node->childCount(); ++i)
                if (node->child(i)->text(0) == text) next = node->child(i);
            node = next;
        }
        return node;
    }
    static void Select(Form* form, QTreeWidgetItem* node) {
        ASSERT_TRUE(node);
        Tree(form)->setCurrentItem(node);
        QApplication::processEvents();
    }
    // A row's control is named after its property.
    template <class W> static W* Control(Form* form, const char* prop) {
        return form->findChild<W*>(prop);
    }
    static QStringList Labels(Form* form) {
        QStringList labels;
        for (QLabel* label : form->findChild<QWidget*>("ScrollContent")->findChildren<QLabel*>())
            labels << label->text();
        return labels;
    }
    // Closes the dialog; "Save changes in specification?" is answered as save says.
    void Close(Form* form, bool save) {
        answer = save ? zelvane::IDYES : zelvane::IDNO;
        form->close();
    }
};

TEST_F(SettingsDialogTest, ShowsEveryExpertsSettingsWithTheirLabels) {
    StartAddin();
    EditSettings([this](Form* form) {
        EXPECT_EQ(Tree(form)->topLevelItem(0)->text(0), "Experts settings");
        QTreeWidgetItem* special = Node(form, {"Special settings"});
        ASSERT_TRUE(special);
        EXPECT_GE(special->childCount(), 5) << "the manager's and every expert's own settings";
        for (int i = 0; i < special->childCount(); ++i) {
            SCOPED_TRACE(special->child(i)->text(0).toStdString());
            Select(form, special->child(i));
            EXPECT_FALSE(Labels(form).isEmpty());
        }
        Select(form, Node(form, {"Experts menu", "View Forms..."}));
        EXPECT_TRUE(Labels(form).contains("Hotkeys \r\nfor menu item call :"))
            << Labels(form).join('|').toStdString();
        EXPECT_TRUE(Control<QKeySequenceEdit>(form, "ShortCutText"));
        EXPECT_FALSE(Control<QWidget>(form, "ItemID")) << "hidden by the dialog";
        EXPECT_FALSE(form->findChild<QAction*>("ActAddNode")->isVisible());
        Close(form, false);
    });
}

TEST_F(SettingsDialogTest, ASavedHotKeyAndAnExpertTurnedOffTakeEffectAtOnce) {
    StartAddin();
    ASSERT_TRUE(MenuCommand("View CPU data"));
    QPointer<QMenu> old = ExpertsMenu();
    EditSettings([this](Form* form) {
        Select(form, Node(form, {"Experts menu", "View Forms..."}));
        auto* key = Control<QKeySequenceEdit>(form, "ShortCutText");
        ASSERT_TRUE(key);
        key->setKeySequence(QKeySequence("Ctrl+Shift+F5"));
        QTreeWidgetItem* installed = Node(form, {"Installed experts"});
        for (int i = 0; i < installed->childCount(); ++i)
            if (installed->child(i)->text(0).contains("CPU")) {
                Select(form, installed->child(i));
                Control<QCheckBox>(form, "Active")->setChecked(false);
            }
        Close(form, true);
    });
    ASSERT_TRUE(WaitFor([&] { return !old && ExpertsMenu(); }));
    QAction* viewForms = MenuCommand("View Forms...");
    ASSERT_TRUE(viewForms);
    EXPECT_EQ(viewForms->shortcut(), QKeySequence("Ctrl+Shift+F5"));
    EXPECT_FALSE(MenuCommand("View CPU data")) << "the expert is gone with its item";
    bool viewerShown = false;
    WhenModal([&](QWidget* w) {
        viewerShown = w->objectName() == QStringLiteral("ViewForm");
        w->close();
    });
    EditWindow()->activateWindow();
    ASSERT_TRUE(WaitFor([this] { return EditWindow()->isActiveWindow(); }));
    PressInEditor(Qt::Key_F5, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(WaitFor([&] { return viewerShown; }));
}

TEST_F(SettingsDialogTest, ClosedWithoutSavingChangesNothing) {
    StartAddin();
    std::string before = testfiles::ReadFile(PackageFile("ExpData.spc"));
    QPointer<QMenu> old = ExpertsMenu();
    EditSettings([this](Form* form) {
        Select(form, Node(form, {"Experts menu", "View Forms..."}));
        Control<QKeySequenceEdit>(form, "ShortCutText")
            ->setKeySequence(QKeySequence("Ctrl+Shift+F6"));
        Close(form, false);
    });
    RunLoop(50);
    EXPECT_TRUE(old) << "no rebuild";
    EXPECT_EQ(CommandShortCut("View Forms..."), "Ctrl+D");
    EXPECT_EQ(testfiles::ReadFile(PackageFile("ExpData.spc")), before);
}

TEST_F(SettingsDialogTest, TheDialogSpeaksTheChosenLanguage) {
    StartAddin();
    Choose("Russian", "Просмотр форм...");
    EditSettings([this](Form* form) {
        EXPECT_EQ(Tree(form)->topLevelItem(0)->text(0), "Настройки экспертов");
        QTreeWidgetItem* installed = Tree(form)->topLevelItem(0)->child(0);
        Select(form, installed->child(0));
        EXPECT_EQ(Labels(form), QStringList{"Активен :"});
        Close(form, false);
    });
}
