// The extended editor: each richer value type gets its own control, values travel both ways, and
// the string lists' menu edits them.
#include "EditorModel.h"

#include "EditorFixture.h"
#include "editor/SpcEdControls.h"
#include "editor/SpcEdPro.h"

namespace {

using namespace edmodel;
using namespace edtest;

class EditorProTest : public EditorFixture<TSpcEditorPro> {
protected:
    void Show() {
        editor->ShowTreeEx(&live);
        WaitShown();
    }
    void ShowView() {
        Show();
        Tree()->setCurrentItem(Tree()->topLevelItem(0)->child(0));
        QApplication::processEvents();
    }
    spcmodel::TViewSettings* View() { return live.GetView(); }

    TProSettings live;
};

TEST_F(EditorProTest, EachRicherTypeGetsItsControlWithItsValue) {
    Show();
    EXPECT_TRUE(Control<QSpinBox>("Depth") && Control<TColorEdit>("Back") &&
                Control<THotKeyEx>("Key") && Control<THotKeyEx>("KeyText") &&
                Control<QDateTimeEdit>("Since") && Control<QDateTimeEdit>("At"));
    EXPECT_TRUE(Control<QLineEdit>("Plain")) << "a plain integer stays a filtered edit";
    EXPECT_EQ(Rows(), "Depth=3 Plain=4 Back=Red Key=Ctrl+S KeyText=Ctrl+F2 "
                      "Since=2000-01-01T00:00:00 At=1899-12-30T12:00:00");
    ShowView();
    EXPECT_EQ(Tree()->currentItem()->childCount(), 0)
        << "string lists, fonts and pictures are rows, not nodes";
    EXPECT_EQ(Rows(), "Depth=3 Layout=loTree Columns=[Name+ Size Date+] Sort=Descending "
                      "Notes=one\ntwo Font=" +
                          View()->GetFont()->Name + " Picture=");
    EXPECT_EQ(Control<TFontEdit>("Font")->SelFont().Name, View()->GetFont()->Name);
    EXPECT_FALSE(Control<TSpcImage>("Picture")->HasGraphic());
}

TEST_F(EditorProTest, ValuesGoBackIntoTheObjects) {
    editor->Options.Include(eoSaveSpcOnChange);
    Show();
    Control<QSpinBox>("Depth")->setValue(9);
    Control<TColorEdit>("Back")->SetColorValue(clBlue);
    Control<THotKeyEx>("KeyText")->setKeySequence(QKeySequence("Alt+X"));
    Control<QDateTimeEdit>("Since")->setDate(QDate(2001, 1, 1));
    EXPECT_EQ(
        std::make_tuple(int(live.Depth), live.Back, std::string(live.KeyText), double(live.Since)),
        std::make_tuple(9, clBlue, std::string("Alt+X"), 36892.0));
    Tree()->setCurrentItem(Tree()->topLevelItem(0)->child(0));
    QApplication::processEvents();
    Control<QListWidget>("Columns")->item(1)->setCheckState(Qt::Checked);
    Control<QListWidget>("Columns")->item(0)->setCheckState(Qt::Unchecked);
    Control<QComboBox>("Sort")->setCurrentIndex(0);
    Control<QPlainTextEdit>("Notes")->setPlainText("three");
    EXPECT_EQ(std::make_tuple(View()->GetColumns()->CheckedInds, View()->GetSort()->ItemIndex,
                              View()->GetNotes()->Text()),
              std::make_tuple(std::string("1,2"), 0, std::string("three\r\n")));
}

TEST_F(EditorProTest, TheStringsMenuAddsAndEditsKeepingTheMarksByLine) {
    editor->Options.Include(eoSaveSpcOnChange);
    ShowView();
    auto* columns = Control<QListWidget>("Columns");
    QMenu* menu = editor->StringsMenu();
    auto trigger = [&](const char* caption, std::function<void(QWidget*)> answer) {
        if (answer) WhenModal(answer);
        QTimer::singleShot(0, [menu, caption] {
            for (QAction* a : menu->actions())
                if (a->text() == caption) a->trigger();
            menu->close();
        });
        emit columns->customContextMenuRequested(QPoint(2, 2));
        QApplication::processEvents();
    };
    trigger("Add line", [](QWidget* w) {
        w->findChild<QLineEdit*>()->setText("Owner");
        static_cast<QDialog*>(w)->accept();
    });
    EXPECT_EQ(View()->GetColumns()->Text(), "Name\r\nSize\r\nDate\r\nOwner\r\n");
    trigger("Edit text", [](QWidget* w) {
        w->findChild<QPlainTextEdit*>()->setPlainText("A\nB\nC\nD");
        static_cast<QDialog*>(w)->accept();
    });
    EXPECT_EQ(View()->GetColumns()->Strings(0), "A");
    EXPECT_EQ(View()->GetColumns()->CheckedInds, "0,2") << "marks stay on their line numbers";
}

TEST_F(EditorProTest, SpinOveruseMakesEveryIntegerASpinEdit) {
    editor->SpinOveruse = true;
    Show();
    EXPECT_TRUE(Control<QSpinBox>("Plain"));
    EXPECT_TRUE(Control<TColorEdit>("Back")) << "colours keep their own edit";
}

} // namespace

namespace {

TEST(ColorEdit, TakesNamesAndNumbersAndKeepsItsValueOnAnythingElse) {
    zelvane::TColorEdit edit;
    edit.SetColorValue(rtl::clRed);
    const std::pair<const char*, uint32_t> cases[] = {
        {"blue", 0xFF0000}, {"$1FFFFFFF", 0x1FFFFFFF}, {"nonsense", 0x1FFFFFFF}, {"255", 0x0000FF}};
    for (auto [typed, expected] : cases) {
        edit.lineEdit()->setText(typed);
        emit edit.lineEdit()->editingFinished();
        EXPECT_EQ(uint32_t(edit.ColorValue()), expected) << typed;
    }
    EXPECT_EQ(edit.currentText(), "Red") << "a number of the list shows its name";
}

} // namespace
