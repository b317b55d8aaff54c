// The unit manager as a user meets it: the window opened on its hot key beside the workbench's
// editor, units filtered, sorted, moved, dragged, activated and closed through the window's keys
// and mouse, and the editor's tab row read back after each change.
#include "tests/addin_gui/AddinFixture.h"

using namespace addintest;

namespace {

class UnitsTest : public AddinFixture {
protected:
    void SetUp() override {
        AddinFixture::SetUp();
        StartAddin();
        for (const char* unit : {"Utils.pas", "Settings.pas", "DataMod.pas", "Frame1.pas"})
            Open(unit);
    }

    // Opens the window with its hot key, pressed in the editor.
    QWidget* ShowWindow() {
        PressInEditor(Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier);
        return Shown();
    }
    QWidget* Shown() {
        EXPECT_TRUE(WaitFor([] { return Window() && Window()->isActiveWindow(); }));
        return Window();
    }
    // Esc, and the window gone with the editor active again.
    bool Escape() {
        Key(Qt::Key_Escape);
        return WaitFor([this] { return !Window() && EditWindow()->isActiveWindow(); });
    }
    static QWidget* Window() { return TopWindow("UnitForm"); }
    QListWidget* List() const { return Window()->findChild<QListWidget*>("UnitList"); }
    QComboBox* Combo() const { return Window()->findChild<QComboBox*>("FilterCombo"); }
    QAction* Command(const char* name) const { return Window()->findChild<QAction*>(name); }

    TNames Items() const { return Texts(List()); }
    std::vector<int> Selected() const {
        std::vector<int> r;
        for (int i = 0; i < List()->count(); ++i)
            if (List()->item(i)->isSelected()) r.push_back(i);
        return r;
    }
    // A key to the window, where the focus is in it.
    void Key(Qt::Key key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QWidget* target = QApplication::focusWidget();
        if (!target || target->window() != Window()) target = List();
        QTest::keyClick(target, key, mods);
    }
    void Mouse(QEvent::Type type, QPoint pos, Qt::MouseButtons buttons) {
        QMouseEvent e(type, pos, List()->viewport()->mapToGlobal(pos),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::NoModifier);
        QApplication::sendEvent(List()->viewport(), &e);
    }
    // Presses on a row, drags to a point and lets go there.
    void Drag(int from, QPoint to) {
        Mouse(QEvent::MouseButtonPress, At(List(), from), Qt::LeftButton);
        Mouse(QEvent::MouseMove, At(List(), from) + QPoint(0, 6), Qt::LeftButton);
        Mouse(QEvent::MouseMove, to, Qt::LeftButton);
        Mouse(QEvent::MouseButtonRelease, to, Qt::NoButton);
    }
    void Filter(const QString& text) {
        Combo()->lineEdit()->setFocus();
        Combo()->lineEdit()->selectAll();
        QTest::keyClick(Combo()->lineEdit(), Qt::Key_Backspace);
        QTest::keyClicks(Combo()->lineEdit(), text);
        QTest::keyClick(Combo()->lineEdit(), Qt::Key_Return);
    }
    bool IdeEnabled() const { return main->isEnabled() && EditWindow()->isEnabled(); }
};

TEST_F(UnitsTest, TheHotKeyAndTheMenuItemOpenTheListOfTabsOverADisabledIdeAndEscClosesIt) {
    QAction* item = MenuCommand(QStringLiteral("Unit manager"));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+Q")));
    EXPECT_EQ(Tabs()->GetTabIndex(), 4);
    QWidget* window = ShowWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Unit manager"));
    EXPECT_TRUE(window->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_EQ(Items(), TabTexts());
    EXPECT_EQ(Selected(), std::vector<int>{4});
    EXPECT_FALSE(main->isEnabled() || EditWindow()->isEnabled());

    ASSERT_TRUE(Escape());
    EXPECT_TRUE(IdeEnabled());

    // The menu item opens it too, while a unit is open.
    Application->UpdateActions();
    EXPECT_TRUE(item->isEnabled());
    item->trigger();
    ASSERT_NE(Shown(), nullptr);
    ASSERT_TRUE(Escape());
    model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
    model->CloseAll();
    QApplication::processEvents();
    Application->UpdateActions();
    EXPECT_FALSE(item->isEnabled());
}

TEST_F(UnitsTest, SortAndMovesRewriteTheEditorsTabRow) {
    ShowWindow();
    Click(List(), 1); // Utils, after Main
    struct TStep {
        const char* Name;
        Qt::Key Key; // with Alt
        TNames Expected;
        std::vector<int> Selected;
    };
    const TStep steps[] = {
        {"right", Qt::Key_Right, {"Main", "Settings", "Utils", "DataMod", "Frame1"}, {2}},
        {"left", Qt::Key_Left, {"Main", "Utils", "Settings", "DataMod", "Frame1"}, {1}},
        {"left again", Qt::Key_Left, {"Utils", "Main", "Settings", "DataMod", "Frame1"}, {0}},
        {"left at the edge", Qt::Key_Left, {"Utils", "Main", "Settings", "DataMod", "Frame1"}, {0}},
        {"sort ascending", Qt::Key_R, {"DataMod", "Frame1", "Main", "Settings", "Utils"}, {1}},
        {"sort descending", Qt::Key_R, {"Utils", "Settings", "Main", "Frame1", "DataMod"}, {3}},
    };
    for (const TStep& s : steps) {
        SCOPED_TRACE(s.Name);
        Key(s.Key, Qt::AltModifier);
        EXPECT_EQ(Items(), s.Expected);
        EXPECT_EQ(TabTexts(), s.Expected);
        EXPECT_EQ(Selected(), s.Selected);
    }
    // The active page moved with its tab.
    EXPECT_EQ(Tabs()->GetTabText(Tabs()->GetTabIndex()), "Frame1");

    // A selection of two moves together and stops together at the end.
    Click(List(), 0);
    Click(List(), 2, Qt::ControlModifier); // Utils and Main
    for (int i = 0; i < 3; ++i)
        Key(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(TabTexts(), TNames({"Settings", "Frame1", "Utils", "DataMod", "Main"}));
    EXPECT_EQ(Selected(), std::vector<int>({2, 4}));
}

TEST_F(UnitsTest, DraggingMovesTheSelectedBlockOnlyWhenAllowed) {
    ShowWindow();
    Click(List(), 0);
    Drag(0, At(List(), 2));
    EXPECT_EQ(TabTexts(), TNames({"Main", "Utils", "Settings", "DataMod", "Frame1"}));

    // The settings menu allows it.
    QMenu* menu = Window()->findChild<QMenu*>("pmSettings");
    menu->actions().at(0)->trigger();
    Click(List(), 0);
    Click(List(), 1, Qt::ShiftModifier);
    Drag(0, At(List(), 3));
    EXPECT_EQ(TabTexts(), TNames({"Settings", "DataMod", "Main", "Utils", "Frame1"}));
    EXPECT_EQ(Selected(), std::vector<int>({2, 3}));
    // Dropped on itself, or below the last item, a contiguous block stays.
    Drag(2, At(List(), 3));
    Drag(2, QPoint(At(List(), 4).x(), List()->viewport()->height() - 2));
    EXPECT_EQ(TabTexts(), TNames({"Settings", "DataMod", "Main", "Utils", "Frame1"}));
    Drag(3, At(List(), 0));
    EXPECT_EQ(TabTexts(), TNames({"Main", "Utils", "Settings", "DataMod", "Frame1"}));
}

TEST_F(UnitsTest, FilteringNarrowsTheListAndKeepsACappedHistoryNewestFirst) {
    SetStoredValue("HistoryStoredCount", "10", "2");
    ShowWindow();
    Key(Qt::Key_F, Qt::AltModifier);
    ASSERT_TRUE(Window()->findChild<QWidget*>("FilterPanel")->isVisible());
    struct TCase {
        QString Filter;
        TNames Expected;
    };
    const TCase cases[] = {{"T", {"Utils", "Settings", "DataMod"}},
                           {" mAi ", {"Main"}},
                           {"xyz", {}},
                           {"a", {"Main", "DataMod", "Frame1"}}};
    for (const TCase& c : cases) {
        Filter(c.Filter);
        EXPECT_EQ(Items(), c.Expected) << c.Filter.toStdString();
    }
    EXPECT_EQ(TabTexts(), TNames({"Main", "Utils", "Settings", "DataMod", "Frame1"}));
    EXPECT_EQ(Texts(Combo()), QStringList({"a", "xyz"}));
    // Filtered, the order can't change.
    EXPECT_FALSE(Command("acSort")->isEnabled());
    EXPECT_FALSE(Command("acMoveUp")->isEnabled());
    Key(Qt::Key_R, Qt::AltModifier);
    EXPECT_EQ(Items(), TNames({"Main", "DataMod", "Frame1"}));
    // An empty filter shows every unit again.
    Filter(QString());
    EXPECT_EQ(Items(), TabTexts());
    EXPECT_TRUE(Command("acSort")->isEnabled());

    // Esc takes the panel away first, and the window on the next press; the history stays.
    Key(Qt::Key_Escape);
    EXPECT_TRUE(Window()->findChild<QWidget*>("FilterPanel")->isHidden());
    ASSERT_TRUE(Escape());
    RestartAddin();
    ShowWindow();
    EXPECT_EQ(Texts(Combo()), QStringList({"a", "xyz"}));
}

TEST_F(UnitsTest, ShowActivatesTheSelectedUnitAndClosesTheWindowWhenSoSet) {
    ShowWindow();
    Click(List(), 1);
    Key(Qt::Key_Return);
    EXPECT_EQ(Tabs()->GetTabText(Tabs()->GetTabIndex()), "Utils");
    EXPECT_EQ(View()->Buffer().GetFileName(), File("Utils.pas"));
    ASSERT_NE(Window(), nullptr);
    EXPECT_FALSE(EditWindow()->isEnabled());

    ASSERT_TRUE(Escape());
    ShowWindow();
    Window()->findChild<QMenu*>("pmSettings")->actions().at(1)->trigger();
    Click(List(), 0);
    Key(Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(WaitFor([] { return Window() == nullptr; }));
    EXPECT_EQ(View()->Buffer().GetFileName(), File("Main.pas"));
    EXPECT_TRUE(IdeEnabled());
}

TEST_F(UnitsTest, ClosingAsksForAModifiedUnitAndCancelKeepsIt) {
    Open("Utils.pas");
    QTest::keyClicks(Editor(), "kept");
    ShowWindow();
    Click(List(), 1);
    Click(List(), 3, Qt::ControlModifier); // Utils, modified, and DataMod
    QString caption;
    WhenModal([&](QWidget* box) {
        caption = box->windowTitle();
        qobject_cast<QMessageBox*>(box)->button(QMessageBox::Cancel)->click();
    });
    Key(Qt::Key_Delete);
    EXPECT_EQ(caption, QStringLiteral("Confirm"));
    EXPECT_EQ(TabTexts(), TNames({"Main", "Utils", "Settings", "Frame1"}));
    EXPECT_EQ(Items(), TabTexts());
    EXPECT_NE(model->FindOpenModule(File("Utils.pas")), nullptr);
    EXPECT_EQ(model->FindOpenModule(File("DataMod.pas")), nullptr);
}

TEST_F(UnitsTest, TheProjectSourceAndTwinNamesCloseByPageAfterEachPrompt) {
    // A second Utils.pas from another directory.
    testfiles::TTempDir other;
    testfiles::WriteFile(other.File("Utils.pas"),
                         "unit Utils;\r\ninterface\r\nimplementation\r\nend.\r\n");
    model->OpenModuleFile(other.File("Utils.pas"), TOpenMode::Show);
    Open("Example.dpr");
    Open("Utils.pas");
    QTest::keyClicks(Editor(), "kept");
    const TNames before = TabTexts();
    ASSERT_EQ(before,
              TNames({"Main", "Utils", "Settings", "DataMod", "Frame1", "Utils", "Example"}));
    ShowWindow();
    Click(List(), 1);
    Click(List(), 5, Qt::ControlModifier);
    Click(List(), 6, Qt::ControlModifier);
    int prompts = 0;
    std::function<void(QWidget*)> answer = [&](QWidget* box) {
        ++prompts;
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Confirm"));
        qobject_cast<QMessageBox*>(box)->button(QMessageBox::No)->click();
    };
    WhenModal(answer);
    Key(Qt::Key_Delete);
    EXPECT_TRUE(WaitFor([this] { return Items().size() == 4; }));
    EXPECT_EQ(prompts, 1);
    EXPECT_EQ(TabTexts(), TNames({"Main", "Settings", "DataMod", "Frame1"}));
    EXPECT_EQ(Items(), TabTexts());
    EXPECT_NE(model->FindOpenModule(File("Example.dpr")), nullptr) << "the project stays open";
    EXPECT_TRUE(Command("acClose")->isEnabled());
}

TEST_F(UnitsTest, ThePlacementIsKeptAcrossRestartsOfTheWorkbench) {
    QWidget* window = ShowWindow();
    window->setGeometry(120, 140, 230, 330);
    Key(Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(Escape());
    RestartAddin();
    window = ShowWindow();
    EXPECT_EQ(window->geometry(), QRect(120, 140, 230, 330));
}

TEST_F(UnitsTest, AListOutOfStepWithTheIdeIsRefilledAndNeverWrittenBack) {
    ShowWindow();
    Click(List(), 1);
    // A unit closed and the edit window gone behind the window's back.
    model->FindOpenModule(File("Frame1.pas"))->CloseModule(true);
    QApplication::processEvents();
    Key(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(TabTexts(), TNames({"Main", "Utils", "Settings", "DataMod"}));
    EXPECT_EQ(Items(), TabTexts());

    model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
    model->CloseAll();
    QApplication::processEvents();
    Key(Qt::Key_F5);
    EXPECT_TRUE(Items().empty());
    for (const char* name : {"acShow", "acClose", "acSort", "acMoveDown"})
        EXPECT_FALSE(Command(name)->isEnabled()) << name;
    // With no edit window left the focus goes back to the main form.
    Key(Qt::Key_Escape);
    EXPECT_TRUE(WaitFor([this] { return !Window() && main->isActiveWindow(); }));
    EXPECT_TRUE(main->isEnabled());
}

TEST_F(UnitsTest, UnloadingTheAddinWithTheWindowOpenGivesTheIdeBack) {
    ShowWindow();
    StopAddin();
    EXPECT_EQ(Window(), nullptr);
    EXPECT_TRUE(IdeEnabled());
}

} // namespace
