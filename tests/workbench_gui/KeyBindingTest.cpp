// Key bindings through the IDE's keyboard services in the edit window: a bound key goes to its
// binding before the IDE's shortcuts and the editor's own keys; a menu item's binding clicks the
// item, and swallows the key while the item is disabled; a removed binding gives the key back.
#include "host/KeyBindingClasses.h"
#include "rtl/Menus.h"
#include "tests/workbench_gui/Fixture.h"

using namespace wbtest;

namespace {

using KeyBindingTest = WorkbenchFixture;

TEST_F(KeyBindingTest, AMenuItemsKeyRunsItInTheEditorBeforeTheIDEsOwnCommand) {
    Open("Utils.pas");
    QAction item(QStringLiteral("Item"));
    item.setObjectName(QStringLiteral("ZelvaneMenuItem3"));
    int runs = 0, saves = 0;
    QObject::connect(&item, &QAction::triggered, [&] { ++runs; });
    QObject::connect(main->Action("FileSaveCommand"), &QAction::triggered, [&] { ++saves; });
    auto press = [this] {
        Application->UpdateActions();
        Editor()->setFocus();
        QTest::keyClick(Editor(), Qt::Key_S, Qt::ControlModifier);
    };
    Editor()->setFocus();
    QTest::keyClicks(Editor(), "x"); // modified, so that saving is enabled
    std::string line = Line(1);
    {
        zelvane::TKeyBind keys;
        keys.AddKey(&item, rtl::TextToShortCut("Ctrl+S"));
        keys.AddKey(&item, rtl::TextToShortCut("Ctrl+T")); // the same name: refused
        keys.AddKey(nullptr, 0);                           // no key
        ASSERT_EQ(keys.Count(), 1);
        EXPECT_EQ(keys.Binding(0)->GetName(), "Zelvane.ServiceDelphiWizards.ZelvaneMenuItem3");
        EXPECT_EQ(keys.Binding(0)->GetDisplayName(), "Item");
        EXPECT_EQ(model->KeyBindingCount(), 1);

        press();
        EXPECT_EQ(runs, 1);
        item.setEnabled(false);
        press();
        EXPECT_EQ(runs, 1);
        EXPECT_EQ(saves, 0);
        EXPECT_EQ(Line(1), line);
    }
    EXPECT_EQ(model->KeyBindingCount(), 0);
    press();
    EXPECT_EQ(saves, 1);
}

} // namespace
