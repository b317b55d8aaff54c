// Designer windows over the example project: the controls built from each form, selection by
// click through the seam, and the close of a module.
#include "tests/designer/InspectorFixture.h"
#include "workbench/designer/Controls.h"
#include "workbench/designer/FormDesigners.h"
#include "workbench/model/Files.h"

#include "rtl/CodePage.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace workbench;
using namespace workbench::designer;
using designertest::U;
using ToolsAPI::TDesignComponent;

namespace {

void Click(QWidget* w, QPoint pos = {2, 2}, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QPointF local(pos);
    QMouseEvent press(QEvent::MouseButtonPress, local, w->mapToGlobal(local), Qt::LeftButton,
                      Qt::LeftButton, mods);
    QApplication::sendEvent(w, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, local, w->mapToGlobal(local), Qt::LeftButton,
                        Qt::NoButton, mods);
    QApplication::sendEvent(w, &release);
}

class DesignerTest : public designertest::InspectorFixture {
protected:
    DesignerTest() : InspectorFixture(testfiles::ExamplesDir(), "Example.dpr") {}
    TDesignerWindow* Window(const std::string& unit) {
        Open(unit);
        return window;
    }
    template <class W> W* Find(TDesignerWindow* w, const char* name) {
        return w->findChild<W*>(name);
    }
};

} // namespace

// ---------------------------------------------------------------------------------------------
// The controls built from each form of the example project

TEST_F(DesignerTest, TheMainFormShowsItsControlsAndIconsWithTheirPlaceCaptionAndKind) {
    TDesignerWindow* w = Window("Main.pas");
    ASSERT_NE(w, nullptr);
    EXPECT_TRUE(w->isWindow());
    EXPECT_EQ(w->windowTitle(), U("Пример проекта"));
    // The client area: the outer 544 by 375 less the borders, the caption and the menu.
    EXPECT_EQ(w->Surface()->size(), QSize(536, 329));
    ASSERT_NE(w->FormMenu(), nullptr);
    ASSERT_EQ(w->FormMenu()->actions().size(), 1);
    EXPECT_EQ(w->FormMenu()->actions()[0]->text(), U("&Файл"));

    auto* panel = Find<QFrame>(w, "TopPanel");
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->geometry(), QRect(0, 0, 536, 41));
    EXPECT_EQ(panel->parentWidget(), w->Surface());
    auto* edit = Find<QLineEdit>(w, "NameEdit");
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(edit->parentWidget(), panel);
    EXPECT_EQ(edit->geometry(), QRect(48, 10, 217, 21));
    auto* ok = Find<QPushButton>(w, "OkButton");
    ASSERT_NE(ok, nullptr);
    EXPECT_EQ(ok->text(), "OK");
    EXPECT_TRUE(ok->isDefault());
    auto* memo = Find<QPlainTextEdit>(w, "NotesMemo");
    ASSERT_NE(memo, nullptr);
    EXPECT_EQ(memo->toPlainText(), U("Первая строка\nSecond line"));
    EXPECT_EQ(memo->geometry(), QRect(0, 41, 536, 199));
    EXPECT_EQ(memo->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    auto* status = Find<TPaintedControl>(w, "StatusBar");
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->Kind(), TControlKind::StatusBar);
    EXPECT_EQ(status->geometry(), QRect(0, 310, 536, 19));

    // Non-visual components are icons at their place; their items have no widget.
    auto* menu = Find<TPaintedControl>(w, "MainMenu");
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->Kind(), TControlKind::NonVisual);
    EXPECT_EQ(menu->geometry(), QRect(472, 56, 28, 28));
    EXPECT_EQ(menu->toolTip(), "MainMenu: TMainMenu");
    EXPECT_EQ(w->WidgetOf(w->Root()->FindComponent("OpenAction")), nullptr);
    // The form's font: 11 pixels, from Font.Height -11.
    EXPECT_EQ(edit->font().pixelSize(), 11);
}

TEST_F(DesignerTest, TheCommonControlsOfTheLibraryAndUnknownClassesAreBuilt) {
    std::string dfm =
        "object ExtraForm: TExtraForm\r\n"
        "  Left = 10\r\n  Top = 10\r\n  Width = 420\r\n  Height = 300\r\n"
        "  Caption = 'Extra'\r\n  Color = clBtnFace\r\n"
        "  object Shape1: TShape\r\n    Left = 8\r\n    Top = 8\r\n    Width = 40\r\n"
        "    Height = 40\r\n    Brush.Color = clRed\r\n    Shape = stCircle\r\n  end\r\n"
        "  object Image1: TImage\r\n    Left = 56\r\n    Top = 8\r\n    Width = 40\r\n"
        "    Height = 40\r\n  end\r\n"
        "  object Box: TScrollBox\r\n    Left = 104\r\n    Top = 8\r\n    Width = 120\r\n"
        "    Height = 80\r\n    TabOrder = 0\r\n"
        "    object Check: TCheckBox\r\n      Left = 4\r\n      Top = 4\r\n      Width = 90\r\n"
        "      Height = 17\r\n      Caption = 'Grey'\r\n      State = cbGrayed\r\n"
        "      TabOrder = 0\r\n    end\r\n"
        "    object Radio: TRadioButton\r\n      Left = 4\r\n      Top = 24\r\n      Width = 90\r\n"
        "      Height = 17\r\n      Caption = 'On'\r\n      Checked = True\r\n      TabOrder = "
        "1\r\n"
        "    end\r\n  end\r\n"
        "  object List: TListBox\r\n    Left = 232\r\n    Top = 8\r\n    Width = 80\r\n"
        "    Height = 60\r\n    Items.Strings = (\r\n      'one'\r\n      'two')\r\n"
        "    TabOrder = 1\r\n  end\r\n"
        "  object Combo: TComboBox\r\n    Left = 232\r\n    Top = 72\r\n    Width = 80\r\n"
        "    Height = 21\r\n    Style = csDropDownList\r\n    ItemIndex = 1\r\n"
        "    Items.Strings = (\r\n      'a'\r\n      'b')\r\n    TabOrder = 2\r\n  end\r\n"
        "  object Tools: TToolBar\r\n    Left = 0\r\n    Top = 100\r\n    Width = 412\r\n"
        "    Height = 29\r\n    TabOrder = 3\r\n"
        "    object NewButton: TToolButton\r\n      Left = 0\r\n      Top = 2\r\n"
        "      Caption = 'New'\r\n    end\r\n  end\r\n"
        "  object Splitter1: TSplitter\r\n    Left = 0\r\n    Top = 129\r\n    Width = 412\r\n"
        "    Height = 3\r\n    Cursor = crVSplit\r\n    Align = alTop\r\n  end\r\n"
        "  object Gauge: TFancyGauge\r\n    Left = 8\r\n    Top = 140\r\n    Width = 100\r\n"
        "    Height = 50\r\n  end\r\n"
        "  object Status: TStatusBar\r\n    Left = 0\r\n    Top = 254\r\n    Width = 412\r\n"
        "    Height = 19\r\n    Panels = <\r\n      item\r\n        Text = 'Ready'\r\n"
        "        Width = 80\r\n      end\r\n      item\r\n        Width = 50\r\n      end>\r\n"
        "  end\r\n"
        "end\r\n";
    testfiles::WriteFile(copy.File("Extra.dfm"), dfm);
    testfiles::WriteFile(copy.File("Extra.pas"),
                         "unit Extra;\r\ninterface\r\nuses Forms;\r\ntype\r\n"
                         "  TExtraForm = class(TForm)\r\n  end;\r\n"
                         "  TFancyGauge = class(TGraphicControl)\r\n  end;\r\n"
                         "implementation\r\nend.\r\n");
    TDesignerWindow* w = Window("Extra.pas");
    ASSERT_NE(w, nullptr);
    auto kind = [&](const char* name) {
        auto* p = Find<TPaintedControl>(w, name);
        return p ? std::string(ControlKindName(p->Kind())) : std::string("no painted control");
    };
    // A class the designer does not know is a labelled box with its name and class.
    std::vector<std::string> kinds;
    for (const char* name : {"Shape1", "Image1", "Splitter1", "Status", "Gauge"})
        kinds.push_back(kind(name));
    EXPECT_EQ(kinds,
              (std::vector<std::string>{"Shape", "Image", "Splitter", "StatusBar", "Unknown"}));
    EXPECT_EQ(Find<TPaintedControl>(w, "Gauge")->Text(), "Gauge: TFancyGauge");
    EXPECT_EQ(Find<TPaintedControl>(w, "Gauge")->geometry(), QRect(8, 140, 100, 50));
    auto* box = Find<QFrame>(w, "Box");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(Find<QCheckBox>(w, "Check")->checkState(), Qt::PartiallyChecked);
    EXPECT_EQ(Find<QCheckBox>(w, "Check")->parentWidget(), box);
    EXPECT_TRUE(Find<QRadioButton>(w, "Radio")->isChecked());
    auto* list = Find<QListWidget>(w, "List");
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(list->item(1)->text(), "two");
    EXPECT_EQ(Find<QComboBox>(w, "Combo")->currentText(), "b");
    EXPECT_EQ(Find<QToolButton>(w, "NewButton")->text(), "New");
    EXPECT_EQ(Find<QToolButton>(w, "NewButton")->parentWidget(), Find<QFrame>(w, "Tools"));
}

TEST_F(DesignerTest, ResizingTheWindowMovesTheControlsAsTheirAlignAndAnchorsTell) {
    TDesignerWindow* w = Window("Main.pas");
    QWidget* memo = Find<QPlainTextEdit>(w, "NotesMemo");
    QWidget* panel = Find<QFrame>(w, "TopPanel");
    QWidget* status = Find<TPaintedControl>(w, "StatusBar");
    QWidget* ok = Find<QPushButton>(w, "OkButton");
    QRect memoBefore = memo->geometry(), okBefore = ok->geometry();
    w->show();
    w->resize(w->width() + 100, w->height() + 40);
    EXPECT_EQ(panel->geometry(), QRect(0, 0, 636, 41));                           // alTop
    EXPECT_EQ(memo->geometry(), memoBefore.adjusted(0, 0, 100, 40));              // alClient
    EXPECT_EQ(status->geometry(), QRect(0, 350, 636, 19));                        // alBottom
    EXPECT_EQ(ok->geometry(), okBefore);                                          // left and top
    EXPECT_EQ(Find<QFrame>(w, "InfoFrame1")->geometry(), QRect(0, 280, 636, 70)); // alBottom
    // The form itself keeps its size in the file: the designer's window is only a view.
    EXPECT_EQ(w->Root()->IntProp("Width"), 544);
}

// ---------------------------------------------------------------------------------------------
// Selection, renames, activation

TEST_F(DesignerTest, AClickSelectsTheComponentThatTheSeamThenGives) {
    TFormEditor* editor = Open("Main.pas");
    TDesignerWindow* w = designers->Open(editor);
    w->show();
    _di_IOTAFormEditor seam(editor);
    Click(Find<QLineEdit>(w, "NameEdit"));
    ASSERT_EQ(seam->GetSelCount(), 1);
    _di_IOTAComponent selected = seam->GetSelComponent(0);
    std::string name;
    ASSERT_TRUE(selected->GetPropValueByName("Name", name));
    EXPECT_EQ(name, "NameEdit");
    EXPECT_EQ(selected->GetComponentType(), "TEdit");
    EXPECT_EQ(selected->GetParent()->GetComponentType(), "TPanel");
    // The grab handles stand around the control, in window coordinates.
    ASSERT_EQ(w->SelectionRects().size(), 1);
    QWidget* edit = Find<QLineEdit>(w, "NameEdit");
    EXPECT_EQ(w->SelectionRects()[0], QRect(edit->mapTo(w, QPoint(0, 0)), edit->size()));

    // Shift adds to the selection; a plain click replaces it.
    Click(Find<QPushButton>(w, "OkButton"), {3, 3}, Qt::ShiftModifier);
    EXPECT_EQ(seam->GetSelCount(), 2);
    EXPECT_EQ(w->SelectionRects().size(), 2);
    Click(Find<QPlainTextEdit>(w, "NotesMemo")->viewport(), {10, 10});
    ASSERT_EQ(seam->GetSelCount(), 1);
    EXPECT_EQ(seam->GetSelComponent(0)->GetComponentType(), "TMemo");
    // The form's own area (under the controls here) selects the form, which has no handles.
    Click(w->Surface(), {520, 150});
    ASSERT_EQ(seam->GetSelCount(), 1);
    EXPECT_EQ(seam->GetSelComponent(0)->GetComponentType(), "TMainForm");
    EXPECT_TRUE(w->SelectionRects().isEmpty());
}

TEST_F(DesignerTest, ASelectionThroughTheSeamIsDrawnInTheWindow) {
    TFormEditor* editor = Open("Settings.pas");
    TDesignerWindow* w = designers->Open(editor);
    _di_IOTAFormEditor seam(editor);
    ASSERT_TRUE(seam->FindComponent("CancelButton")->Select(false));
    ASSERT_EQ(w->SelectionRects().size(), 1);
    QWidget* cancel = Find<QPushButton>(w, "CancelButton");
    EXPECT_EQ(w->SelectionRects()[0].size(), cancel->size());
    EXPECT_EQ(w->ComponentAt(w->SelectionRects()[0].center()),
              editor->Root()->FindComponent("CancelButton"));
}

// ---------------------------------------------------------------------------------------------
// Borrowing

// ---------------------------------------------------------------------------------------------
// The close of a module

TEST_F(DesignerTest, ClosingTheModuleClosesItsWindowAndClearsTheWidgetsOfTheTree) {
    auto module = model->OpenModuleFile(copy.File("Main.pas"), TOpenMode::Show);
    TFormEditor* editor = module->FormEditor();
    DelphiInterface<TFormEditor> keep(editor);
    QPointer<TDesignerWindow> w = designers->Open(editor);
    TObjectInspector inspector;
    inspector.SetFormEditor(editor);
    ASSERT_TRUE(model->CloseModule(module.get(), false));
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(w.isNull());
    EXPECT_EQ(designers->Windows().size(), 0u);
    EXPECT_EQ(keep->Root()->Widget, nullptr);
    EXPECT_EQ(keep->Root()->FindComponent("NameEdit")->Widget, nullptr);
    EXPECT_EQ(inspector.FormEditor(), nullptr);
}
