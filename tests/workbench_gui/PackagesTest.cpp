// Design-time packages in the running workbench: the package list, loading a package whose
// wizard adds a menu beside "Tools" with a working command, unloading it again, and packages
// that fail (raising in Register, lacking the entry, missing) without taking the IDE down.
#include "workbench/Packages.h"
#include "tests/workbench_gui/Fixture.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include <filesystem>

using namespace wbtest;

namespace {

std::string PackageFile(const std::string& name) {
    return std::string(ZELVANE_TEST_PACKAGE_DIR) + "/lib" + name + ".so";
}

bool HasAction(QWidget* list, const QString& name) {
    for (QAction* a : list->actions())
        if (a->objectName() == name) return true;
    return false;
}

using PackagesTest = WorkbenchFixture;

TEST_F(PackagesTest, APackagesWizardAddsAMenuBesideToolsWhoseCommandRuns) {
    TPackageLoader loader;
    ASSERT_TRUE(loader.Load(PackageFile("MenuPackage")))
        << (loader.Reports().empty() ? "" : loader.Reports()[0]);
    ASSERT_EQ(loader.Packages().size(), 1u);
    ASSERT_EQ(loader.Packages()[0].Wizards.size(), 1u);

    QStringList captions = ActionTexts(main->menuBar()->actions());
    int tools = static_cast<int>(captions.indexOf(QStringLiteral("Tools")));
    ASSERT_GE(tools, 0);
    EXPECT_EQ(captions.value(tools + 1), QStringLiteral("Test Pack"));
    QWidget* actionList = IDEService<INTAServices>()->GetActionList();
    ASSERT_TRUE(HasAction(actionList, QStringLiteral("TestPackGreetCommand")));

    // The command runs through the seam into the top view's buffer.
    QAction* greet = main->menuBar()->findChild<QAction*>(QStringLiteral("TestPackGreetCommand"));
    ASSERT_NE(greet, nullptr);
    Application->UpdateActions();
    EXPECT_TRUE(greet->isEnabled());
    greet->trigger();
    EXPECT_NE(Line(1).find("{ greetings from the test pack }"), std::string::npos);
    // Its shortcut is live in the edit window, as the action list's are.
    EXPECT_EQ(greet->shortcutContext(), Qt::ApplicationShortcut);

    // Its update handler follows the IDE: with nothing open it is off.
    model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
    model->CloseAll();
    Application->UpdateActions();
    EXPECT_FALSE(greet->isEnabled());

    loader.UnloadAll();
    EXPECT_TRUE(loader.Packages().empty());
    EXPECT_FALSE(ActionTexts(main->menuBar()->actions()).contains(QStringLiteral("Test Pack")));
    EXPECT_FALSE(HasAction(actionList, QStringLiteral("TestPackGreetCommand")));
    EXPECT_TRUE(loader.Reports().empty());
}

// A package that raises in Register, a library without the entry, and a missing file: each is
// reported, also through the application's hook (here the error box); a library that could not
// be installed is not kept.
TEST_F(PackagesTest, APackageThatFailsIsReportedNotKeptAndTheRestStillLoads) {
    struct {
        const char *file, *report;
        bool dropped;
    } cases[] = {{"FailingPackage", "refuses to register", false},
                 {"NoEntryPackage", "has no entry point Register", true},
                 {"DoesNotExist", "Can't load package", true}};
    for (const auto& c : cases) {
        TPackageLoader loader;
        errors.clear();
        EXPECT_FALSE(loader.Load(PackageFile(c.file)));
        ASSERT_EQ(loader.Reports().size(), 1u) << c.file;
        EXPECT_NE(loader.Reports()[0].find(c.report), std::string::npos) << loader.Reports()[0];
        ASSERT_EQ(errors.size(), 1u) << c.file;
        EXPECT_NE(errors[0].find(c.report), std::string::npos) << errors[0];
        if (c.dropped) {
            EXPECT_TRUE(loader.Packages().empty()) << c.file;
        }
    }
    // A good package still loads after a bad one.
    TPackageLoader loader;
    loader.LoadAll({PackageFile("DoesNotExist"), PackageFile("MenuPackage")});
    ASSERT_EQ(loader.Packages().size(), 1u);
    EXPECT_EQ(loader.Packages()[0].FileName, PackageFile("MenuPackage"));
    loader.UnloadAll();
}

// ---------------------------------------------------------------------------------------------
// The package list

class PackageListTest : public ::testing::Test {
protected:
    testfiles::TTempDir dir;
};

TEST_F(PackageListTest, TheDefaultPackageComesFirstWhenItExistsAndIsNoErrorWhenMissing) {
    TPackageListOptions options;
    options.SettingsFile = dir.File("none.ini");
    EXPECT_TRUE(PackageList(options, dir.Path().string()).empty());
    testfiles::WriteFile(dir.File("libzelvane.so"), "");
    options.Packages = {dir.File("extra.so")};
    EXPECT_EQ(PackageList(options, dir.Path().string()),
              std::vector<std::string>({dir.File("libzelvane.so"), dir.File("extra.so")}));
    options.NoDefault = true;
    EXPECT_EQ(PackageList(options, dir.Path().string()),
              std::vector<std::string>({dir.File("extra.so")}));
}

TEST_F(PackageListTest, TheSettingsFileListsPackagesRelativeToItselfInFileOrder) {
    std::filesystem::create_directories(dir.Path() / "conf");
    testfiles::WriteFile(dir.File("conf/workbench.ini"),
                         "[Other]\r\nA=ignored.so\r\n[Packages]\r\nZeta=libz.so\r\n"
                         "Alpha=" +
                             dir.File("abs/liba.so") + "\r\nDup=libz.so\r\n");
    TPackageListOptions options;
    options.NoDefault = true;
    options.SettingsFile = dir.File("conf/workbench.ini");
    options.Packages = {dir.File("conf/libz.so"), dir.File("cmd.so")};
    EXPECT_EQ(PackageList(options, dir.Path().string()),
              std::vector<std::string>(
                  {dir.File("conf/libz.so"), dir.File("abs/liba.so"), dir.File("cmd.so")}))
        << "each file once, the settings' before the command line's";
}

} // namespace
