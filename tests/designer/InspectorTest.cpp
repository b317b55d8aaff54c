// The object inspector: what it shows of the selection, editing through the seam, values it
// refuses, and saving the edited form in the form it was read in.
#include "tests/designer/InspectorFixture.h"
#include "workbench/model/Files.h"

#include "rtl/CodePage.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabBar>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <algorithm>

using namespace workbench;
using namespace workbench::designer;
using designertest::U;
using ToolsAPI::TDesignComponent;

namespace {

struct TModifiedCount : TNotifierObject {
    void Modified() override { ++count; }
    int count = 0;
};

class InspectorTest : public designertest::InspectorFixture {
protected:
    InspectorTest() : InspectorFixture(testfiles::ExamplesDir(), "Example.dpr") {}
    // The inspector's rows of the names given ("Enabled Cursor"), as "Enabled=True; ...".
    QString Values(const QString& names) {
        QStringList r;
        for (const QString& n : names.split(' '))
            r << n + "=" + inspector.ValueText(n);
        return r.join("; ");
    }
    // Which of the names given the inspector lets the user edit, or lists.
    QString Editable(const QString& names) {
        QStringList r;
        for (const QString& n : names.split(' '))
            if (inspector.IsEditable(n)) r << n;
        return r.join(' ');
    }
    QString Listed(const QString& names) {
        QStringList r, listed = inspector.PropertyNames();
        for (const QString& n : names.split(' '))
            if (listed.contains(n)) r << n;
        return r.join(' ');
    }
};

} // namespace

TEST_F(InspectorTest, AnEditChangesTheModuleMarksItModifiedAndTheDesignerFollows) {
    TFormEditor* editor = Open("Main.pas");
    auto counter = MakeInterfaced<TModifiedCount>();
    editor->AddNotifier(_di_IOTANotifier(counter.get()));
    Select(editor, "OkButton");
    ASSERT_FALSE(module->AnyModified());
    ASSERT_TRUE(inspector.EditValue("Caption", U("Готово")));
    EXPECT_TRUE(inspector.ErrorText().isEmpty());
    EXPECT_TRUE(editor->GetModified());
    EXPECT_TRUE(module->AnyModified());
    EXPECT_EQ(counter->count, 1);
    EXPECT_EQ(rtl::Cp1251ToUtf8(editor->Root()->FindComponent("OkButton")->StrProp("Caption")),
              "Готово");
    // The designer window shows the new caption, and the inspector too.
    EXPECT_EQ(window->findChild<QPushButton*>("OkButton")->text(), U("Готово"));
    EXPECT_EQ(inspector.ValueText("Caption"), U("Готово"));
    // Integers, Booleans and identifiers.
    ASSERT_TRUE(inspector.EditValue("Width", "90"));
    EXPECT_EQ(window->findChild<QPushButton*>("OkButton")->width(), 90);
    ASSERT_TRUE(inspector.EditValue("Default", "false"));
    EXPECT_FALSE(window->findChild<QPushButton*>("OkButton")->isDefault());
    EXPECT_EQ(inspector.ValueText("Default"), "False");
    Select(editor, "NotesMemo");
    ASSERT_TRUE(inspector.EditValue("ScrollBars", "ssNone"));
    EXPECT_EQ(editor->Root()->FindComponent("NotesMemo")->StrProp("ScrollBars"), "ssNone");
    // A colour takes a name or a number ($00BBGGRR).
    editor->Select(editor->Root(), false);
    ASSERT_TRUE(inspector.EditValue("Color", "clWindow")) << inspector.ErrorText().toStdString();
    EXPECT_EQ(window->Surface()->palette().color(QPalette::Window), QColor(Qt::white));
    ASSERT_TRUE(inspector.EditValue("Color", "255"));
    EXPECT_EQ(window->Surface()->palette().color(QPalette::Window), QColor(255, 0, 0));
    EXPECT_EQ(inspector.ValueText("Color"), "255");
}

TEST_F(InspectorTest, EditingTheGridItselfEditsTheProperty) {
    TFormEditor* editor = Open("Main.pas");
    Select(editor, "NameEdit");
    QTreeWidget* grid = inspector.Grid();
    QTreeWidgetItem* left = nullptr;
    for (int i = 0; i < grid->topLevelItemCount(); ++i)
        if (grid->topLevelItem(i)->text(0) == "Left") left = grid->topLevelItem(i);
    ASSERT_NE(left, nullptr);
    left->setText(1, "64");
    QApplication::processEvents();
    EXPECT_EQ(editor->Root()->FindComponent("NameEdit")->IntProp("Left"), 64);
    EXPECT_EQ(window->findChild<QLineEdit*>("NameEdit")->x(), 64);
}

TEST_F(InspectorTest, ValuesOfAnotherKindAreRefusedAndChangeNothing) {
    TFormEditor* editor = Open("Main.pas");
    Select(editor, "OkButton");
    // A colour's name for a width, a taken name, and for the published properties the form
    // file does not store, their type decides.
    for (const char* c :
         {"Width=wide", "Width='75'", "Width=clRed", "Default=Maybe", "Left=1 2", "Name=1Button",
          "Name=NameEdit", "Lines.Strings=x", "NoSuchProperty=1", "Enabled=Maybe",
          "Cursor=crNowhere", "Tag=many", "Font=Arial", "Anchors=[akLeft]"}) {
        QStringList nameValue = QString(c).split('=');
        EXPECT_FALSE(inspector.EditValue(nameValue[0], nameValue[1])) << c;
        EXPECT_FALSE(inspector.ErrorText().isEmpty()) << c;
    }
    EXPECT_FALSE(editor->GetModified());
    TDesignComponent* ok = editor->Root()->FindComponent("OkButton");
    EXPECT_EQ(ok->IntProp("Width"), 75);
    EXPECT_EQ(ok->FindProperty("Enabled"), nullptr);
    EXPECT_EQ(ok->FindProperty("Cursor"), nullptr);
    EXPECT_EQ(Values("Width Enabled"), "Width=75; Enabled=True");
    // A good value clears the report.
    ASSERT_TRUE(inspector.EditValue("Width", "80"));
    EXPECT_TRUE(inspector.ErrorText().isEmpty());
    ASSERT_TRUE(inspector.EditValue("Cursor", "crHandPoint"));
    EXPECT_EQ(ok->StrProp("Cursor"), "crHandPoint");
}

TEST_F(InspectorTest, ARenameInTheInspectorFiresTheNotifierAndKeepsTheComponentShown) {
    TFormEditor* editor = Open("Main.pas");
    Select(editor, "NameEdit");
    struct TRenames : TNotifierObject, virtual IOTAFormNotifier {
        HRESULT QueryInterface(const TGUID& iid, void** obj) override {
            return QueryInterfaces<IOTAFormNotifier>(this, iid, obj);
        }
        void FormActivated() override {}
        void FormSaving() override {}
        void ComponentRenamed(TOTAHandle, const std::string& o, const std::string& n) override {
            seen.push_back(o + "->" + n);
        }
        std::vector<std::string> seen;
    };
    auto renames = MakeInterfaced<TRenames>();
    editor->AddNotifier(_di_IOTANotifier(renames.get()));
    ASSERT_TRUE(inspector.EditValue("Name", "UserEdit"));
    ASSERT_EQ(renames->seen.size(), 1u);
    EXPECT_EQ(renames->seen[0], "NameEdit->UserEdit");
    EXPECT_EQ(inspector.ValueText("Name"), "UserEdit");
    EXPECT_EQ(inspector.ComponentList()->currentText(), "UserEdit: TEdit");
    EXPECT_NE(window->findChild<QLineEdit*>("UserEdit"), nullptr);
    EXPECT_EQ(window->findChild<QLineEdit*>("NameEdit"), nullptr);
}

TEST_F(InspectorTest, SavingWritesTheTextFormBackWithOnlyTheEditedLinesChanged) {
    TFormEditor* editor = Open("Main.pas");
    Select(editor, "OkButton");
    ASSERT_TRUE(inspector.EditValue("Caption", U("Готово")));
    ASSERT_TRUE(inspector.EditValue("Left", "300"));
    ASSERT_TRUE(module->Save(false, false));
    EXPECT_FALSE(editor->GetModified());
    std::string bytes = testfiles::ReadFile(copy.File("Main.dfm"));
    // Only the two edited lines differ from the original file.
    std::string expected = testfiles::ReadFile(testfiles::ExamplesDir() / "Main.dfm");
    auto replace = [&](const std::string& from, const std::string& to) {
        size_t at = expected.find(from);
        ASSERT_NE(at, std::string::npos);
        expected.replace(at, from.size(), to);
    };
    replace("      Left = 280\r\n", "      Left = 300\r\n");
    replace("      Caption = 'OK'\r\n      Default",
            "      Caption = '" + rtl::Utf8ToCp1251("Готово") + "'\r\n      Default");
    EXPECT_EQ(bytes, expected);
}

TEST_F(InspectorTest, SavingTheBinaryFormWritesItBinaryAgain) {
    TFormEditor* editor = Open("Settings.pas");
    Select(editor, "RecentEdit");
    ASSERT_TRUE(inspector.EditValue("Text", "12"));
    ASSERT_TRUE(module->Save(false, false));
    std::string bytes = testfiles::ReadFile(copy.File("Settings.dfm"));
    ASSERT_EQ(bytes.substr(0, 4), "TPF0");
    TFormFile again = LoadFormFile(copy.File("Settings.dfm"));
    EXPECT_EQ(again.Format, TFormFileFormat::Binary);
    EXPECT_EQ(again.Root->FindComponent("RecentEdit")->StrProp("Text"), "12");
    // Only the value changed: the original with '8' in its place is what was written.
    std::string original = testfiles::ReadFile(testfiles::ExamplesDir() / "Settings.dfm");
    std::string oldValue = std::string("Text\x06\x01", 6) + "8";
    size_t at = original.find(oldValue);
    ASSERT_NE(at, std::string::npos);
    original.replace(at, oldValue.size(), std::string("Text\x06\x02", 6) + "12");
    EXPECT_EQ(bytes, original);
}

// ---------------------------------------------------------------------------------------------
// The published properties a form file does not store

TEST_F(InspectorTest, AnUnstoredPublishedPropertyShowsItsDefault) {
    TFormEditor* editor = Open("Main.pas");
    Select(editor, "OkButton");
    TDesignComponent* ok = editor->Root()->FindComponent("OkButton");
    ASSERT_EQ(ok->FindProperty("Enabled"), nullptr);
    EXPECT_EQ(Values("Enabled Visible Cancel Cursor ModalResult TabStop Anchors Hint Font "
                     "Constraints"),
              "Enabled=True; Visible=True; Cancel=False; Cursor=crDefault; ModalResult=0; "
              "TabStop=True; Anchors=[akLeft, akTop]; Hint=; Font=(TFont); "
              "Constraints=(TSizeConstraints)");
    // The simple kinds are edited as the stored ones are; sets and objects are not.
    EXPECT_EQ(Editable("Enabled Cursor Hint Anchors Font"), "Enabled Cursor Hint");
    // An identifier's drop-down offers the values its type has.
    auto choices = [&](const char* name) {
        for (int i = 0; i < inspector.Grid()->topLevelItemCount(); ++i)
            if (inspector.Grid()->topLevelItem(i)->text(0) == name)
                return inspector.Grid()->topLevelItem(i)->data(1, Qt::UserRole + 2).toStringList();
        return QStringList();
    };
    EXPECT_TRUE(choices("Cursor").contains("crHandPoint"));
    EXPECT_EQ(choices("Enabled"), (QStringList{"False", "True"}));
    // Showing them changes nothing.
    EXPECT_FALSE(editor->GetModified());
    EXPECT_EQ(ok->Properties.size(), 8u);
    // Each class has its own: a label takes no focus, a form is not shown until asked.
    Select(editor, "CaptionLabel");
    EXPECT_FALSE(inspector.PropertyNames().contains("TabOrder"));
    EXPECT_EQ(inspector.ValueText("AutoSize"), "True");
    editor->Select(editor->Root(), false);
    EXPECT_EQ(Values("Visible WindowState Position"), // the position is stored
              "Visible=False; WindowState=wsNormal; Position=poScreenCenter");
    // An object with stored nested properties is one row, named by its class.
    Select(editor, "NotesMemo");
    EXPECT_EQ(Values("Lines Lines.Strings WordWrap"),
              "Lines=(TStrings); Lines.Strings=(TStrings); WordWrap=True");
    int linesRows = 0;
    for (int i = 0; i < inspector.Grid()->topLevelItemCount(); ++i)
        linesRows += inspector.Grid()->topLevelItem(i)->text(0) == "Lines";
    EXPECT_EQ(linesRows, 1);
}

TEST_F(InspectorTest, EditingAnUnstoredPropertyStoresItAndSavingWritesIt) {
    TFormEditor* editor = Open("Main.pas");
    auto counter = MakeInterfaced<TModifiedCount>();
    editor->AddNotifier(_di_IOTANotifier(counter.get()));
    Select(editor, "OkButton");
    ASSERT_TRUE(inspector.EditValue("Enabled", "false")) << inspector.ErrorText().toStdString();
    EXPECT_TRUE(inspector.ErrorText().isEmpty());
    const ToolsAPI::TDesignProperty* enabled =
        editor->Root()->FindComponent("OkButton")->FindProperty("Enabled");
    ASSERT_NE(enabled, nullptr);
    EXPECT_EQ(enabled->Kind, ToolsAPI::TDesignValueKind::Boolean);
    EXPECT_EQ(enabled->Int, 0);
    EXPECT_TRUE(editor->GetModified());
    EXPECT_TRUE(module->AnyModified());
    EXPECT_EQ(counter->count, 1);
    EXPECT_EQ(inspector.ValueText("Enabled"), "False");
    EXPECT_FALSE(window->findChild<QPushButton*>("OkButton")->isEnabled());
    // A string is typed without its quotes, as a stored one is.
    ASSERT_TRUE(inspector.EditValue("Hint", "Accept it"));
    EXPECT_EQ(editor->Root()->FindComponent("OkButton")->StrProp("Hint"), "Accept it");
    ASSERT_TRUE(module->Save(false, false));
    EXPECT_FALSE(editor->GetModified());
    // The file is the original with the two lines where the platform writes them: the hint
    // with what TControl publishes, after the size; Enabled among the button's own.
    std::string bytes = testfiles::ReadFile(copy.File("Main.dfm"));
    std::string expected = testfiles::ReadFile(testfiles::ExamplesDir() / "Main.dfm");
    std::string from = "      Height = 25\r\n      Caption = 'OK'\r\n      Default = True\r\n"
                       "      TabOrder = 1\r\n";
    size_t at = expected.find(from);
    ASSERT_NE(at, std::string::npos);
    expected.replace(at, from.size(),
                     "      Height = 25\r\n      Hint = 'Accept it'\r\n      Caption = 'OK'\r\n"
                     "      Default = True\r\n      Enabled = False\r\n      TabOrder = 1\r\n");
    EXPECT_EQ(bytes, expected);
}

TEST_F(InspectorTest, AnUnstoredPropertyEditedInTheBinaryFormIsWrittenBinary) {
    TFormEditor* editor = Open("Settings.pas");
    Select(editor, "RecentEdit");
    ASSERT_TRUE(inspector.EditValue("ReadOnly", "True")) << inspector.ErrorText().toStdString();
    ASSERT_TRUE(inspector.EditValue("MaxLength", "3"));
    ASSERT_TRUE(module->Save(false, false));
    TFormFile again = LoadFormFile(copy.File("Settings.dfm"));
    EXPECT_EQ(again.Format, TFormFileFormat::Binary);
    TDesignComponent* edit = again.Root->FindComponent("RecentEdit");
    EXPECT_EQ(edit->IntProp("ReadOnly", 0), 1);
    EXPECT_EQ(edit->IntProp("MaxLength", 0), 3);
}

TEST_F(InspectorTest, TheEventsPageListsTheEventsOfTheClass) {
    TFormEditor* editor = Open("Settings.pas");
    Select(editor, "OkButton"); // a button without a handler
    inspector.Pages()->setCurrentIndex(1);
    QStringList events = inspector.PropertyNames();
    EXPECT_EQ(Listed("OnClick OnEnter OnKeyDown Enabled Name"), "OnClick OnEnter OnKeyDown");
    EXPECT_EQ(inspector.ValueText("OnClick"), "");
    // A label takes no focus: no OnEnter.
    Select(editor, "RecentLabel");
    EXPECT_EQ(Listed("OnClick OnEnter"), "OnClick");
    // The form's own events, with the stored handler.
    editor->Select(editor->Root(), false);
    EXPECT_EQ(Values("OnShow OnCreate"), "OnShow=FormShow; OnCreate=");
    EXPECT_EQ(Listed("OnCreate"), "OnCreate");
    // Naming a handler stores it.
    Select(editor, "OkButton");
    ASSERT_TRUE(inspector.EditValue("OnClick", "OkButtonClick"));
    EXPECT_EQ(editor->Root()->FindComponent("OkButton")->StrProp("OnClick"), "OkButtonClick");
    EXPECT_EQ(inspector.ValueText("OnClick"), "OkButtonClick");
}
