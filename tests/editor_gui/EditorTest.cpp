// The settings editor on a tree with every kind of property, driven through its widgets on Qt's
// offscreen platform: the tree, the rows and their controls, the editing transaction on the
// clone, files in the four forms, the hooks, collections from the tree, and the layout.
#include "EditorModel.h"

#include "EditorFixture.h"
#include "specification/SpcMng.h"

#include <filesystem>

namespace {

using namespace edmodel;
using namespace edtest;

// Answers the next message box with the button and gives back its text.
std::shared_ptr<std::string> AnswerBox(QMessageBox::StandardButton button) {
    auto text = std::make_shared<std::string>();
    WhenModal([text, button](QWidget* w) {
        auto* box = qobject_cast<QMessageBox*>(w);
        ASSERT_TRUE(box);
        *text = box->text().toStdString();
        box->button(button)->click();
    });
    return text;
}

class EditorTest : public EditorFixture<TSpcEditor> {
protected:
    void SetUp() override {
        EditorFixture::SetUp();
        root = new TEdSettings;
        root->GetRows()->Add("first", 11);
        root->GetRows()->Add("second", 22);
        root->GetRows()->Add("third", 33);
        editor->IniFileName = Path("editor.ini");
    }
    void TearDown() override {
        EditorFixture::TearDown();
        delete root;
    }

    std::string Path(const std::string& name) const {
        return dir.filePath(name.c_str()).toStdString();
    }
    void Show() {
        editor->ShowTree(reinterpret_cast<TPersistent**>(&root));
        WaitShown();
    }
    void ShowDirect(TPersistent* object) {
        editor->ShowTreeEx(object);
        WaitShown();
    }
    TEdSettings* Clone() const { return static_cast<TEdSettings*>(editor->GetUpdatingSpc()); }
    // The node by its captions from the root, "/"-separated.
    QTreeWidgetItem* Node(const QString& path) const {
        QStringList parts = path.split('/');
        QTreeWidgetItem* node = Tree()->topLevelItem(0);
        for (int i = 1; node && i < parts.size(); ++i) {
            QTreeWidgetItem* next = nullptr;
            for (int c = 0; c < node->childCount(); ++c)
                if (node->child(c)->text(0) == parts[i]) next = node->child(c);
            node = next;
        }
        return node;
    }
    void Select(const QString& path) {
        Tree()->setCurrentItem(Node(path));
        QApplication::processEvents();
    }
    void Type(const std::string& prop, const QString& text) {
        auto* edit = Control<QLineEdit>(prop);
        ASSERT_TRUE(edit) << prop;
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    TRowItem* Item(int index) const {
        return static_cast<TRowItem*>(Clone()->GetRows()->GetItem(index));
    }
    QAction* Action(const char* name) const {
        editor->Form()->UpdateActions();
        return editor->Form()->Action(name);
    }

    QTemporaryDir dir;
    TEdSettings* root = nullptr;
};

TEST_F(EditorTest, EditsReachTheCloneOnLeavingTheNodeAndTheCallerOnlyOnSave) {
    Show();
    Type("Count", "42");
    Type("Title", "Renamed");
    Control<QComboBox>("Shade")->setCurrentIndex(2);
    Control<QCheckBox>("Enabled")->click();
    Control<QListWidget>("Shades")->item(1)->setCheckState(Qt::Checked);
    EXPECT_TRUE(editor->Modified());
    EXPECT_EQ(Clone()->Count, 5) << "values stay in the controls until the node is left";
    Select("TEdSettings/Geometry");
    EXPECT_EQ(std::tie(Clone()->Count, Clone()->Title, Clone()->Shade, Clone()->Enabled),
              std::make_tuple(42, std::string("Renamed"), shAuto, false));
    EXPECT_EQ(Clone()->Shades, (TShades{shLight, shDark}));
    EXPECT_EQ(root->Count, 5);
    ASSERT_TRUE(editor->SaveToFile(Path("edited.stx"), osfText));
    EXPECT_EQ(root->Count, 42);
    EXPECT_EQ(root->GetRows()->Count(), 3);
    EXPECT_TRUE(editor->Saved());
    EXPECT_FALSE(editor->Modified());
    EXPECT_EQ(editor->Form()->windowTitle().toStdString(), "Specification " + Path("edited.stx"));
}

TEST_F(EditorTest, ClosingAsksAndOnlyYesSaves) {
    struct Case {
        QMessageBox::StandardButton answer;
        bool formStaysOpen;
        int rootCount;
    };
    for (Case c : {Case{QMessageBox::Cancel, true, 5}, Case{QMessageBox::No, false, 5},
                   Case{QMessageBox::Yes, false, 77}}) {
        editor->SetSpcFileName(Path("close.sbn"));
        Show();
        Type("Count", "77");
        auto text = AnswerBox(c.answer);
        editor->Form()->close();
        RunLoop(1);
        EXPECT_EQ(*text, "Save changes in specification?");
        EXPECT_EQ(editor->Form() != nullptr, c.formStaysOpen) << c.answer;
        EXPECT_EQ(root->Count, c.rootCount) << c.answer;
        EXPECT_EQ(editor->Saved(), c.answer == QMessageBox::Yes);
        if (c.formStaysOpen) {
            EXPECT_EQ(Control<QLineEdit>("Count")->text(), "77") << "the edit stands";
            editor->UndoChanges();
            editor->Form()->close();
            RunLoop(1);
        }
    }
}

TEST_F(EditorTest, ABadValueHoldsTheSelectionOnItsNode) {
    Show();
    Type("Count", "-");
    auto text = AnswerBox(QMessageBox::Ok);
    Select("TEdSettings/Geometry");
    EXPECT_EQ(Tree()->currentItem(), Node("TEdSettings"));
    EXPECT_NE(text->find("is not a valid integer"), std::string::npos) << *text;
    EXPECT_EQ(Clone()->Count, 5);
}

TEST_F(EditorTest, NumericEditsRefuseForeignCharactersTypedOrPasted) {
    Show();
    Type("Count", "1x2");
    EXPECT_EQ(Control<QLineEdit>("Count")->text(), "12");
    Type("Ratio", "2.5e3");
    EXPECT_EQ(Control<QLineEdit>("Ratio")->text(), "2.5e3");
    QApplication::clipboard()->setText("12a");
    auto* count = Control<QLineEdit>("Count");
    count->clear();
    count->paste();
    EXPECT_EQ(count->text(), "");
    Select("TEdSettings/Geometry");
    EXPECT_EQ(Clone()->Count, 0) << "an empty integer edit writes 0";
    EXPECT_EQ(Clone()->Ratio, 2500);
}

TEST_F(EditorTest, CollectionsGrowShrinkAndMoveFromTheTree) {
    Show();
    Select("TEdSettings/Marks");
    EXPECT_TRUE(Action("ActAddNode")->isEnabled());
    EXPECT_FALSE(Action("ActDelNode")->isEnabled()) << "an empty collection";
    Action("ActAddNode")->trigger();
    EXPECT_EQ(Clone()->GetMarks()->Count(), 1);
    EXPECT_EQ(Tree()->currentItem()->text(0), "Marks[1]");
    EXPECT_FALSE(Action("ActMoveUp")->isEnabled()) << "a sole item";
    EXPECT_FALSE(Action("ActMoveDown")->isEnabled());

    Select("TEdSettings/Rows/Rows[1]");
    EXPECT_FALSE(Action("ActMoveUp")->isEnabled());
    Action("ActMoveDown")->trigger();
    EXPECT_EQ(Item(1)->Caption, "first");
    EXPECT_EQ(Node("TEdSettings/Rows")->indexOfChild(Tree()->currentItem()), 1);
    Select("TEdSettings/Rows/Rows[3]");
    EXPECT_FALSE(Action("ActMoveDown")->isEnabled());
    Action("ActMoveUp")->trigger();
    EXPECT_EQ(Item(1)->Caption, "third");

    AnswerBox(QMessageBox::Yes);
    Action("ActDelNode")->trigger();
    EXPECT_EQ(Clone()->GetRows()->Count(), 2);
    EXPECT_EQ(Node("TEdSettings/Rows")->childCount(), 2);
    EXPECT_EQ(Control<QLineEdit>("Caption")->text(), "first") << "the next item is shown";

    auto text = AnswerBox(QMessageBox::Yes);
    Select("TEdSettings/Rows");
    Action("ActDelNode")->trigger();
    EXPECT_EQ(*text, "Delete all elements of the selected node?");
    EXPECT_EQ(Clone()->GetRows()->Count(), 0);
    EXPECT_EQ(Tree()->currentItem(), Node("TEdSettings/Rows"));
    EXPECT_TRUE(editor->Modified());
    EXPECT_EQ(root->GetRows()->Count(), 3) << "the caller's object waits for a save";

    // Deleting the last item leaves the collection selected.
    Select("TEdSettings/Marks/Marks[1]");
    AnswerBox(QMessageBox::Yes);
    Action("ActDelNode")->trigger();
    EXPECT_EQ(Tree()->currentItem(), Node("TEdSettings/Marks"));
    EXPECT_EQ(Rows(), "");
}

TEST_F(EditorTest, HooksMakeReplaceAndAbortTheTransferOfValues) {
    QLineEdit* own = nullptr;
    int setCalls = 0;
    editor->BeforeCreateControl = [&](TPersistent*, PPropInfo prop, QWidget* parent,
                                      const TChangeAction& change, TNewControlData& data,
                                      bool& handled) {
        if (prop->Name == "Letter") handled = true; // no control: no row
        if (prop->Name == "Title") {
            handled = true;
            own = new QLineEdit(parent);
            QObject::connect(own, &QLineEdit::textChanged, own, [own, change] { change(own); });
            data.Control = own;
            data.ControlIdent = "StringControl";
            data.Caption = "Own title";
        }
    };
    editor->BeforeSetControlData = [&](TControlInfo* info, bool& handled) {
        if (info->ETag == -1) {
            ++setCalls;
            own->setText("from hook");
            handled = true;
        }
    };
    bool abort = true;
    editor->BeforeGetControlData = [&](TControlInfo* info, bool& handled, bool& aborted) {
        if (info->ETag == -1) {
            aborted = abort;
            handled = true;
        }
    };
    Show();
    EXPECT_FALSE(Row("Letter"));
    EXPECT_EQ(setCalls, 1);
    EXPECT_EQ(own->text(), "from hook");
    EXPECT_TRUE(std::any_of(editor->Labels().begin(), editor->Labels().end(),
                            [](auto& l) { return l->text() == "Own title"; }));
    own->setText("typed");
    Type("Count", "8");
    Select("TEdSettings/Geometry");
    EXPECT_EQ(Tree()->currentItem(), Node("TEdSettings")) << "an aborted read keeps the node";
    abort = false;
    Select("TEdSettings/Geometry");
    EXPECT_EQ(Tree()->currentItem(), Node("TEdSettings/Geometry"));
    EXPECT_EQ(Clone()->Count, 8);
    EXPECT_EQ(Clone()->Title, "Main") << "no level transfers a hook's control";
}

TEST_F(EditorTest, SavesAndLoadsInEveryFormAndABadFileChangesNothing) {
    Show();
    Type("Title", "Stored");
    Select("TEdSettings/Geometry");
    for (auto [format, name] : {std::pair{osfBin, "a.sbn"}, std::pair{osfResBin, "a.sbr"},
                                std::pair{osfExtBin, "a.sbe"}, std::pair{osfText, "a.stx"}}) {
        ASSERT_TRUE(editor->SaveToFile(Path(name), format)) << name;
        root->Title = "Changed";
        TPersistent* before = root;
        ASSERT_TRUE(editor->LoadFromFile(Path(name), true)) << name;
        EXPECT_NE(root, before);
        EXPECT_EQ(root->Title, "Stored") << name;
        EXPECT_EQ(root->GetRows()->Count(), 3);
        EXPECT_EQ(editor->SpcFormat, format == osfText ? osfText : osfBin);
    }
    std::string foreign = Path("foreign.sbn");
    WriteFileEx("this is no specification", foreign);
    std::string truncated = Path("truncated.sbn");
    std::string whole;
    ReadFileEx(Path("a.sbn"), whole);
    WriteFileEx(whole.substr(0, whole.size() / 2), truncated);
    for (const std::string& bad : {foreign, truncated, Path("missing.sbn")}) {
        TPersistent* before = root;
        auto text = AnswerBox(QMessageBox::Ok);
        EXPECT_FALSE(editor->LoadFromFile(bad, false)) << bad;
        EXPECT_EQ(root, before);
        EXPECT_EQ(text->rfind("Error on load specification file " + bad, 0), 0u) << *text;
    }
    EXPECT_EQ(root->Title, "Stored");
}

TEST_F(EditorTest, DirectModeEditsTheObjectItselfWithoutFiles) {
    TEdSettings live;
    editor->Options.Include(eoSaveSpcOnChange);
    ShowDirect(&live);
    EXPECT_FALSE(Action("ActLoadSpc")->isVisible());
    EXPECT_FALSE(Action("ActSaveAsSpc")->isVisible());
    EXPECT_EQ(editor->Form()->windowTitle(), "Object TEdSettings");
    Type("Count", "31");
    EXPECT_EQ(live.Count, 31) << "each change is read at once";
    EXPECT_FALSE(editor->Modified());
    EXPECT_FALSE(editor->Save());
    EXPECT_FALSE(editor->SaveToFile(Path("direct.sbn"), osfBin));
    EXPECT_FALSE(std::filesystem::exists(Path("direct.sbn")));
}

TEST_F(EditorTest, ControlParametersShapeTheRows) {
    editor->SetColCount(0);
    EXPECT_EQ(editor->ColCount(), 1);
    editor->SetColCount(2);
    editor->SetStrings(skRedefiedParams, "[TEdSettings.Title]\r\nWidth=60\r\nHint=The title\r\n"
                                         "[TEdSettings.Count]\r\nWidth=50%\r\n");
    Show();
    // Seven rows in two columns: four left, three right.
    std::string areas;
    for (const TControlInfo* info : ShownRows())
        areas += std::to_string(info->AreaIndex) + info->PropInfo->Name + " ";
    EXPECT_EQ(areas, "0Count 0Letter 0Ratio 0Title 1Shade 1Enabled 1Shades ");
    EXPECT_FALSE(Row("Title")->IsPercent);
    EXPECT_EQ(Row("Title")->Control->width(), 60);
    EXPECT_EQ(Row("Title")->Control->toolTip(), "The title");
    EXPECT_TRUE(Row("Count")->IsPercent);
    int panel = editor->Frames()[0].ControlPanel->width();
    EXPECT_EQ(Row("Count")->Control->width(), (panel - 2 - 3) * 50 / 100);

    // Dragging the control section of the first column resizes its relative controls.
    QHeaderView* header = editor->Form()->HeaderControl();
    header->resizeSection(1, 300);
    editor->RebuildControls();
    EXPECT_EQ(editor->Frames()[0].ControlPanel->width(), 300 - 2);
    EXPECT_EQ(Row("Count")->Control->width(), (300 - 2 - 2 - 3) * 50 / 100);
    EXPECT_EQ(editor->Frames()[1].LabelPanel->x(), header->sectionPosition(2) + 1);

    // The header slides with the columns when they scroll sideways.
    header->resizeSection(3, 2000);
    editor->RebuildControls();
    QScrollBar* bar = editor->Form()->ScrollBox()->horizontalScrollBar();
    ASSERT_GT(bar->maximum(), 50);
    bar->setValue(50);
    EXPECT_EQ(header->offset(), 50);
    EXPECT_EQ(editor->Frames()[1].ControlPanel->width(), 2000 - 2);

    // The simple mode ignores the per-property parameters; a bad width fails on the node.
    editor->SimpleMode = true;
    editor->RebuildControls();
    EXPECT_TRUE(Row("Title")->IsPercent);
    editor->SetStrings(skControlParams, "[IntegerControl]\r\nWidth=101%\r\n");
    auto text = AnswerBox(QMessageBox::Ok);
    EXPECT_THROW(editor->RebuildControls(), ESpcEditorError);
}

TEST_F(EditorTest, TranslationNamesLabelsNodesAndValues) {
    editor->FormOptions.Include(foMultiLineCaptions);
    editor->SetStrings(skTranslatingTable,
                       "[TEdSettings]\r\nCount=Number of##items\r\nRows=Lines\r\n"
                       "[TShade]\r\nshDark=Dark\r\n[TRows]\r\nLines[2]=Second line\r\n");
    Show();
    EXPECT_EQ(editor->Labels().front()->text(), "Number of\r\nitems :");
    EXPECT_EQ(Control<QComboBox>("Shade")->itemText(1), "Dark");
    EXPECT_EQ(Control<QListWidget>("Shades")->item(1)->text(), "Dark") << "the set's base type";
    EXPECT_TRUE(Node("TEdSettings/Lines/Lines[1]"));
    EXPECT_TRUE(Node("TEdSettings/Lines/Second line[2]")) << "an item's own name keeps its index";
}

TEST_F(EditorTest, DisabledAndInvisibleProperties) {
    editor->SetStrings(skInvisibleProps, "TEdSettings.Ratio\r\nTEdSettings.Geometry");
    editor->SetStrings(skDisabledProps, "TEdSettings.Title");
    Show();
    EXPECT_FALSE(Row("Ratio"));
    EXPECT_FALSE(Node("TEdSettings/Geometry"));
    EXPECT_FALSE(Row("Title")->Control->isEnabled());
    editor->SetStrings(skDisabledProps, "");
    EXPECT_TRUE(Row("Title")->Control->isEnabled()) << "a change applies at once";
}

TEST_F(EditorTest, StartingWithoutAnObjectFails) {
    TPersistent* none = nullptr;
    EXPECT_THROW(editor->ShowTree(&none), ESpcEditorError);
    EXPECT_FALSE(editor->Form());
}

TEST_F(EditorTest, FormSettingsAreKeptAndAHostMayKeepThemItself) {
    editor->FormOptions.Include(foAutoSaveParams);
    Show();
    editor->Form()->LoadDir = "/tmp/load/";
    editor->Form()->close();
    RunLoop(1);
    TIniStrings ini(Path("editor.ini"));
    EXPECT_EQ(ini.ReadString("SpcEditor", "LoadDir", ""), "/tmp/load/");
    EXPECT_FALSE(ini.ReadString("SpcEditor", "WindowPlacement", "").empty());

    std::string kept;
    editor->OnWriteFormSetting = [&](const std::string&, const std::string&,
                                     const std::string& data, bool& allow) {
        kept = data;
        allow = false;
    };
    editor->OnReadFormSetting = [&](const std::string&, const std::string&, std::string& data,
                                    bool& allow) {
        data = "TreeWidth=150\r\n";
        allow = false;
    };
    Show();
    EXPECT_EQ(Tree()->width(), 150);
    editor->Form()->close();
    RunLoop(1);
    EXPECT_NE(kept.find("TreeWidth="), std::string::npos);
}

} // namespace
