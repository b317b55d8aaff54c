// The expert manager in the running workbench: the wizard it registers, the menu it builds on the
// first turn of the event loop, its settings file across restarts, damaged settings files, and
// the error log.
#include "tests/addin_gui/AddinFixture.h"

#include <dlfcn.h>

using namespace addintest;

namespace {

class ManagerTest : public AddinFixture {};

TEST_F(ManagerTest, TheMenuIsBuiltOnTheFirstTurnOfTheEventLoopBeforeTools) {
    TPackageLoader loader;
    ASSERT_TRUE(loader.Load(Package()));
    ASSERT_EQ(loader.Packages().at(0).Wizards.size(), 1u);
    const _di_IOTAWizard& wizard = loader.Packages()[0].Wizards[0];
    EXPECT_EQ(wizard->GetIDString(), "Zelvane.ServiceDelphiWizards");
    EXPECT_EQ(wizard->GetName(), "Zelvane Wizard Pack");
    EXPECT_EQ(wizard->GetState(), WizardState(wsEnabled));
    // Register leaves the IDE's menu alone: the menu waits for the posted message.
    EXPECT_EQ(ExpertsMenu(), nullptr);
    ASSERT_TRUE(WaitFor([this] { return ExpertsMenu() != nullptr; }));

    QStringList bar = MenuCaptions(main->menuBar()->actions());
    int at = int(bar.indexOf(QStringLiteral("Z&elvane")));
    ASSERT_GE(at, 0) << bar.join(',').toStdString();
    EXPECT_EQ(bar.value(at + 1), QStringLiteral("&Tools"));

    struct TItem {
        QString Caption, Keys;
    };
    // clang-format off
    const TItem expected[] = {
        {"View Forms...", "Ctrl+D"}, {"View Units...", "Ctrl+A"}, {"-", ""},
        {"View CPU data", "Ctrl+W"}, {"-", ""},
        {"Move block left (1 pos)", "Ctrl+,"}, {"Move block left (2 pos)", "Shift+Ctrl+,"},
        {"Move block right (1 pos)", "Ctrl+."}, {"Move block right (2 pos)", "Shift+Ctrl+."},
        {"Sorting", "Ctrl+;"}, {"-", ""}, {"Unit manager", "Shift+Ctrl+Q"}, {"-", ""},
        {"Settings", ""}, {"About...", ""}};
    // clang-format on
    QList<QAction*> items = ExpertsMenu()->actions();
    ASSERT_EQ(items.size(), int(std::size(expected)))
        << MenuCaptions(items).join(',').toStdString();
    QWidget* actionList = IDEService<INTAServices>()->GetActionList();
    for (int i = 0; i < items.size(); ++i) {
        SCOPED_TRACE(expected[i].Caption.toStdString());
        EXPECT_EQ(MenuCaptions({items[i]}).front(), expected[i].Caption);
        if (items[i]->isSeparator()) continue;
        EXPECT_EQ(ShortCutText(items[i]), expected[i].Keys);
        EXPECT_TRUE(actionList->actions().contains(items[i]));
        EXPECT_TRUE(items[i]->objectName().startsWith(QStringLiteral("ZelvaneMenuItem")));
    }
    // "About..." shows the IDE's picture 50.
    EXPECT_FALSE(items.back()->icon().isNull());

    // An item keeps the first hot key it had, whatever changes it later; one without a key takes
    // the first it is given.
    items[5]->setShortcut(QKeySequence(QStringLiteral("Ctrl+K")));
    EXPECT_EQ(ShortCutText(items[5]), QStringLiteral("Ctrl+,"));
    items.back()->setShortcut(QKeySequence(QStringLiteral("Ctrl+K")));
    items.back()->setShortcut(QKeySequence(QStringLiteral("Ctrl+J")));
    EXPECT_EQ(ShortCutText(items.back()), QStringLiteral("Ctrl+K"));

    // The wizard goes at unload, and its menu and actions with it; the package's code goes too,
    // so that loading it again starts it afresh.
    loader.UnloadAll();
    EXPECT_EQ(ExpertsMenu(), nullptr);
    void* stillLoaded = dlopen(Package().c_str(), RTLD_NOW | RTLD_NOLOAD);
    EXPECT_EQ(stillLoaded, nullptr);
    if (stillLoaded) dlclose(stillLoaded);
    for (QAction* a : actionList->actions())
        EXPECT_FALSE(a->objectName().startsWith(QStringLiteral("ZelvaneMenuItem")));
}

TEST_F(ManagerTest, AUsersHotKeySurvivesARestartOfTheWorkbench) {
    StartAddin();
    StopAddin();
    ASSERT_TRUE(std::filesystem::exists(PackageFile("ExpData.spc")));
    SetStoredValue("ShortCutText", "'Ctrl+.'", "'Ctrl+Alt+M'");
    // Saved at stop in binary form, and read again at the next start.
    RestartAddin();
    EXPECT_EQ(testfiles::ReadFile(PackageFile("ExpData.spc")).substr(0, 4), "TPF0");
    EXPECT_EQ(CommandShortCut(QStringLiteral("Move block right (1 pos)")),
              QStringLiteral("Ctrl+Alt+M"));
}

TEST_F(ManagerTest, AnExpertMadeInactiveHasNoItemsButCanBeTurnedOnAgain) {
    StartAddin();
    StopAddin();
    const TStoredChange off{"Active", "True", "False"}, on{"Active", "False", "True"};
    std::string text = SettingsText();
    size_t experts = 0;
    for (size_t at = text.find("Active = True"); at != std::string::npos;
         at = text.find("Active = True", at + 1))
        ++experts;
    SetStoredValues(std::vector<TStoredChange>(experts, off));
    EXPECT_EQ(
        MenuCaptions(ExpertsMenu()->actions()),
        (QStringList{QStringLiteral("-"), QStringLiteral("Settings"), QStringLiteral("About...")}));
    StopAddin();
    EXPECT_NE(SettingsText().find("ExpertName = 'EditorManager'"), std::string::npos);
    SetStoredValues(std::vector<TStoredChange>(experts, on));
    for (const char* item : {"View Forms...", "View CPU data", "Sorting", "Unit manager"})
        EXPECT_NE(MenuCommand(item), nullptr) << item;
}

TEST_F(ManagerTest, ADamagedSettingsFileGivesDefaultsAndTheWorkbenchStaysUp) {
    StartAddin();
    StopAddin();
    std::string good = testfiles::ReadFile(PackageFile("ExpData.spc"));
    const std::pair<const char*, std::string> files[] = {
        {"empty", ""},
        {"truncated", good.substr(0, good.size() / 2)},
        {"garbage", std::string("\x01\xFF garbage \x00\x7F", 14)},
        {"foreign", "object Form1: TForm1\r\n  Caption = 'x'\r\nend\r\n"},
        {"text cut short", "object ExpertData: TExpData\r\n  MenuData_ = <\r\n    item\r\n"},
    };
    for (const auto& [name, bytes] : files) {
        SCOPED_TRACE(name);
        testfiles::WriteFile(PackageFile("ExpData.spc"), bytes);
        StartAddin();
        EXPECT_EQ(CommandShortCut(QStringLiteral("Move block right (1 pos)")),
                  QStringLiteral("Ctrl+."));
        StopAddin();
        // The stop writes a whole file again. A file the loader takes for settings (the foreign
        // one) counts as loaded, so the viewer does not switch its tool bar buttons on by itself.
        std::string saved = testfiles::ReadFile(PackageFile("ExpData.spc"));
        const std::string off = "ToolBarUpdated\x08", on = "ToolBarUpdated\x09";
        if (size_t at = saved.find(off); at != std::string::npos) saved.replace(at, off.size(), on);
        EXPECT_EQ(saved, good);
    }
}

// A damaged file is read as far as it goes: a hot key changed before the break holds, and
// auto-save, turned off before the break too, keeps the stop from writing over the file.
TEST_F(ManagerTest, AFileBrokenOffAfterAutoSaveWasTurnedOffIsReadSoFarAndLeftAsItIs) {
    StartAddin();
    StopAddin();
    std::string text = SettingsText();
    ChangeStoredValues(text, {{"ShortCutText", "'Ctrl+.'", "'Ctrl+Alt+M'"},
                              {"AutoSaveSettings", "True", "False"}});
    ASSERT_FALSE(HasFatalFailure());
    rtl::TStringStream in(text), out;
    rtl::ObjectTextToBinary(&in, &out);
    std::string bytes = out.DataString();
    const std::string off = "AutoSaveSettings\x08";
    size_t at = bytes.find(off);
    ASSERT_NE(at, std::string::npos);
    bytes.resize(at + off.size());
    testfiles::WriteFile(PackageFile("ExpData.spc"), bytes);
    StartAddin();
    EXPECT_EQ(CommandShortCut(QStringLiteral("Move block right (1 pos)")),
              QStringLiteral("Ctrl+Alt+M"));
    StopAddin();
    EXPECT_EQ(testfiles::ReadFile(PackageFile("ExpData.spc")), bytes);
}

TEST_F(ManagerTest, AnExceptionInACommandIsLoggedWithTheStartTraceOnce) {
    StartAddin();
    TEditView* view = Open("Utils.pas");
    Mark(view, {1, 1}, {2, 1});
    view->Buffer().SetIsReadOnly(true);
    errors.clear();
    PressInEditor(Qt::Key_Period, Qt::ControlModifier);
    // The workbench goes on: the error was shown as the IDE shows one.
    ASSERT_EQ(errors.size(), 1u);
    std::string log = Log();
    EXPECT_NE(log.find(errors[0]), std::string::npos) << log;
    EXPECT_NE(log.find("Source object: TExpAction"), std::string::npos) << log;
    EXPECT_NE(log.find("< Start constructor >\r\n0 1 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\r\n"
                       "FormUnitView\r\nInspectorFormView\r\nCPUView\r\nEditorManager\r\n"
                       "UnitManager\r\n< Finish constructor >"),
              std::string::npos)
        << log;

    // The next record holds no trace.
    Mark(view, {1, 1}, {2, 1});
    PressInEditor(Qt::Key_Period, Qt::ControlModifier);
    std::string second = Log().substr(log.size());
    EXPECT_NE(second.find("Source object: "), std::string::npos);
    EXPECT_EQ(second.find("< Start constructor >"), std::string::npos);
}

TEST_F(ManagerTest, AboutShowsTheProductsBoxOverTheIDE) {
    StartAddin();
    QString shown, product;
    WhenModal([&](QWidget* w) {
        shown = w->objectName();
        if (auto* label = w->findChild<QLabel*>(QStringLiteral("ProductLabel")))
            product = label->text();
        if (auto* box = qobject_cast<QDialog*>(w)) box->accept();
    });
    QAction* about = MenuCommand(QStringLiteral("About..."));
    ASSERT_NE(about, nullptr);
    about->trigger();
    EXPECT_EQ(shown, QStringLiteral("AboutForm"));
    EXPECT_EQ(product, QStringLiteral("Zelvane Wizard Pack"));
}

TEST_F(ManagerTest, TheRegistryKeyHoldsTheVersionAndALanguageThatExists) {
    WriteRegistry("ExpCurrentLocale", PackageFile("zelv_gone.dll"));
    StartAddin();
    StopAddin();
    EXPECT_EQ(ReadRegistry("ExpVersion"), "1.0");
    EXPECT_EQ(ReadRegistry("ExpLocaleModules"),
              "Russian=zelv_rus.dll,English=zelv_eng.dll,German=zelv_ger.dll");
    // A language file that is gone is no choice any more.
    EXPECT_EQ(ReadRegistry("ExpCurrentLocale"), "");
}

TEST_F(ManagerTest, TheMenuGoesWhereItsSettingsPlaceIt) {
    struct TCase {
        const char* Search;
        const char* Before;
        QStringList Expected; // the experts' menu and its neighbours in the menu that holds it
    };
    const TCase cases[] = {
        {"'Tools'", "True", {"-", "Z&elvane", "-", "&Tools"}},
        {"'Tools'", "False", {"&Tools", "-", "Z&elvane", "-", "&Help"}},
        // Not found: before the last item, and no separators whatever the settings say.
        {"'Nothing'", "True", {"&Tools", "Z&elvane", "&Help"}},
        // An item of a submenu: into that submenu.
        {"'Search Again'", "True", {"&Find...", "-", "Z&elvane", "-", "&Search Again"}},
    };
    StartAddin();
    std::string current = "'Tools'", before = "True", lines = "False";
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.Search);
        SetStoredValues({{"MainMenuSearchItem", current, c.Search},
                         {"InsertMenuBeforeItem", before, c.Before},
                         {"MenuHaveLineBefore", lines, "True"},
                         {"MenuHaveLineAfter", lines, "True"}});
        current = c.Search;
        before = c.Before;
        lines = "True";
        QAction* entry = ExpertsMenu()->menuAction();
        QWidget* holder = entry->associatedObjects().isEmpty()
                              ? nullptr
                              : qobject_cast<QWidget*>(entry->associatedObjects().front());
        ASSERT_NE(holder, nullptr);
        QStringList all = MenuCaptions(holder->actions());
        QString first = c.Expected.front();
        qsizetype at = all.indexOf(first, std::max<qsizetype>(0, all.indexOf("Z&elvane") - 3));
        EXPECT_EQ(all.mid(at, c.Expected.size()), c.Expected) << all.join(',').toStdString();
    }
}

} // namespace
