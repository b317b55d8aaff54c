// The headless model: the example project through the IDE's interfaces.
#include "workbench/model/Model.h"
#include "tests/workbench/TestFiles.h"
#include "workbench/model/Files.h"

#include "rtl/CodePage.h"

#include <gtest/gtest.h>

using namespace workbench;

namespace {

class ModelTest : public ::testing::Test {
protected:
    void SetUp() override {
        model = TIDEModel::Create();
        model->SetQuestion([this](const std::string& caption, const std::string& text) {
            questions.push_back(caption + ": " + text);
            return answer;
        });
    }
    void TearDown() override { model = nullptr; }

    std::string File(const std::string& name) const { return copy.File(name); }
    _di_IOTAProject OpenExample() {
        return Query<IOTAProject>(model->OpenProjectFile(File("Example.dpr")));
    }
    // A unit opened in front, and its first view.
    _di_IOTAEditView OpenUnit(const std::string& name) {
        auto module = model->OpenModuleFile(File(name), TOpenMode::Show);
        _di_IOTASourceEditor source = Query<IOTASourceEditor>(module->GetModuleFileEditor(0));
        return source->GetEditView(0);
    }

    testfiles::TExampleCopy copy;
    DelphiInterface<TIDEModel> model;
    std::vector<std::string> questions;
    int answer = mrCancel;
};

struct TRecordingNotifier : TNotifierObject, virtual IOTAFormNotifier {
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAFormNotifier>(this, iid, obj);
    }
    void FormActivated() override { events.push_back("activated"); }
    void FormSaving() override { events.push_back("saving"); }
    void ComponentRenamed(TOTAHandle handle, const std::string& oldName,
                          const std::string& newName) override {
        renamedHandle = handle;
        events.push_back("renamed " + oldName + " " + newName);
    }
    std::vector<std::string> events;
    TOTAHandle renamedHandle = nullptr;
};

} // namespace

// ---------------------------------------------------------------------------------------------
// The example project

TEST_F(ModelTest, TheExampleProjectListsItsModulesWithTheirFourNames) {
    _di_IOTAProject project = OpenExample();
    ASSERT_TRUE(project);
    ASSERT_EQ(project->GetModuleCount(), 6);
    struct Expected {
        const char *file, *unit, *form, *designClass;
        TOTAModuleType type;
    } expected[] = {
        {"Main.pas", "Main", "MainForm", "TForm", omtForm},
        {"Settings.pas", "Settings", "SettingsForm", "TForm", omtForm},
        {"DataMod.pas", "DataMod", "DataModuleMain", "TDataModule", omtDataModule},
        {"Frame1.pas", "Frame1", "InfoFrame", "TFrame", omtForm},
        {"Utils.pas", "Utils", "", "", omtUnit},
        {"Example.res", "Example", "", "", omtRes},
    };
    for (int i = 0; i < 6; ++i) {
        _di_IOTAModuleInfo info = project->GetModule(i);
        EXPECT_EQ(info->GetFileName(), File(expected[i].file));
        EXPECT_EQ(info->GetName(), expected[i].unit);
        EXPECT_EQ(info->GetFormName(), expected[i].form);
        EXPECT_EQ(info->GetDesignClass(), expected[i].designClass) << expected[i].file;
        EXPECT_EQ(info->GetModuleType(), expected[i].type) << expected[i].file;
    }
    EXPECT_FALSE(project->GetModule(6));
    EXPECT_TRUE(project->FindModuleInfo(File("utils.PAS")));
}

TEST_F(ModelTest, TheProjectModuleHasItsSourceAndItsResource) {
    _di_IOTAProject project = OpenExample();
    ASSERT_EQ(project->GetModuleFileCount(), 2);
    _di_IOTASourceEditor source = Query<IOTASourceEditor>(project->GetModuleFileEditor(0));
    ASSERT_TRUE(source);
    EXPECT_EQ(source->GetFileName(), File("Example.dpr"));
    _di_IOTAProjectResource res = Query<IOTAProjectResource>(project->GetModuleFileEditor(1));
    ASSERT_TRUE(res);
    EXPECT_FALSE(Query<IOTASourceEditor>(project->GetModuleFileEditor(1)));
    ASSERT_EQ(res->GetEntryCount(), 2);
    EXPECT_EQ(res->GetEntryName(0), "#3/#1");
    EXPECT_EQ(res->GetEntryName(1), "#14/MAINICON");
    // Opening the resource's module info gives the project.
    EXPECT_TRUE(project->GetModule(5)->OpenModule() == project);
}

TEST_F(ModelTest, AGroupOpensItsProjectsAndMakesTheFirstActive) {
    _di_IOTAProjectGroup group =
        Query<IOTAProjectGroup>(model->OpenProjectFile(File("Example.bpg")));
    ASSERT_TRUE(group);
    ASSERT_EQ(group->GetProjectCount(), 1);
    EXPECT_TRUE(group->GetActiveProject() == group->GetProject(0));
    EXPECT_TRUE(group->GetProject(0)->GetProjectGroup() == group);
    EXPECT_EQ(model->GetModuleCount(), 2);
    // A directory with a group opens the group.
    auto again = model->OpenProjectFile(copy.Path().string());
    EXPECT_TRUE(again == group);
}

TEST_F(ModelTest, ADirectoryOfUnitsBecomesAProject) {
    testfiles::TTempDir dir;
    testfiles::WriteFile(dir.File("B.pas"), "unit B; end.");
    testfiles::WriteFile(dir.File("A.pas"), "unit A; end.");
    _di_IOTAProject project = Query<IOTAProject>(model->OpenProjectFile(dir.Path().string()));
    ASSERT_TRUE(project);
    ASSERT_EQ(project->GetModuleCount(), 2);
    EXPECT_EQ(project->GetModule(0)->GetName(), "A");
}

TEST_F(ModelTest, AnOpenModuleKnowsTheProjectsThatHoldIt) {
    _di_IOTAProject project = OpenExample();
    _di_IOTAModule unit = project->GetModule(0)->OpenModule();
    ASSERT_TRUE(unit);
    ASSERT_EQ(unit->GetOwnerCount(), 1);
    EXPECT_TRUE(unit->GetOwner(0) == project);
    testfiles::WriteFile(File("Loose.pas"), "unit Loose;\r\nend.\r\n");
    _di_IOTAModule loose(model->OpenModuleFile(File("Loose.pas"), TOpenMode::Hidden).get());
    EXPECT_EQ(loose->GetOwnerCount(), 0);
}

// ---------------------------------------------------------------------------------------------
// Blocks, insertion and undo

TEST_F(ModelTest, EveryBlockStyleIsReplacedByInsertTextAndUndoneInOneStep) {
    OpenExample();
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    _di_IOTAEditBuffer buffer = view->GetBuffer();
    _di_IOTAEditPosition pos = view->GetPosition();
    _di_IOTAEditBlock block = view->GetBlock();
    ASSERT_EQ(buffer->GetLinesInBuffer() > 20, true);
    const std::string original = model->FindOpenModule(File("Utils.pas"))->SourceEditor()->Text();
    // Rows 11 and 12: "  DefaultCaption = ..." and "  MaxRecentFiles = 8;".
    auto line = [&](int row) {
        return model->FindOpenModule(File("Utils.pas"))->SourceEditor()->Buffer().Line(row);
    };
    ASSERT_EQ(line(12), "  MaxRecentFiles = 8;");

    struct Case {
        TOTABlockType style;
        std::string text;  // what the block marks from (12, 3) to (14, 4)
        std::string row12; // row 12 after inserting "X" over it
    } cases[] = {
        {btNonInclusive, "MaxRecentFiles = 8;\r\n\r\ntyp", "  Xe"},
        {btInclusive, "MaxRecentFiles = 8;\r\n\r\ntype", "  X"},
        {btLine, "  MaxRecentFiles = 8;\r\n\r\ntype\r\n", "X  TRecentList = class(TStringList)"},
        {btColumn, "M\r\n\r\np", "  XaxRecentFiles = 8;"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.style));
        ASSERT_TRUE(pos->Move(12, 3));
        block->SetStyle(c.style);
        ASSERT_TRUE(block->Extend(14, 4));
        EXPECT_TRUE(block->GetIsValid());
        EXPECT_EQ(block->GetStyle(), c.style);
        EXPECT_EQ(block->GetStartingRow(), 12);
        EXPECT_EQ(block->GetEndingRow(), 14);
        EXPECT_EQ(pos->GetRow(), 14); // marking moved the cursor to the far end
        EXPECT_EQ(block->GetText(), c.text);
        EXPECT_EQ(block->GetSize(), static_cast<int>(c.text.size()));
        buffer->GetBufferOptions()->SetAutoIndent(false);
        pos->InsertText("X");
        EXPECT_FALSE(block->GetIsValid());
        EXPECT_EQ(line(12), c.row12);
        EXPECT_TRUE(buffer->GetModified());
        // One undo gives back the text and the block.
        auto* source = model->FindOpenModule(File("Utils.pas"))->SourceEditor();
        ASSERT_TRUE(source->Undo());
        EXPECT_EQ(source->Text(), original);
        EXPECT_TRUE(block->GetIsValid());
        EXPECT_EQ(block->GetText(), c.text);
        EXPECT_FALSE(buffer->GetModified());
        block->Reset();
    }
}

TEST_F(ModelTest, MarkingAfterAMoveStartsAtTheCursorAndExtendingGoesOn) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    _di_IOTAEditPosition pos = view->GetPosition();
    _di_IOTAEditBlock block = view->GetBlock();
    pos->Move(12, 5);
    block->Extend(12, 9);
    block->Extend(13, 1); // from the same anchor
    EXPECT_EQ(block->GetStartingColumn(), 5);
    EXPECT_EQ(block->GetText(), "xRecentFiles = 8;\r\n");
    // Marking backwards gives the same block with the cursor at its start.
    pos->Move(13, 1);
    block->Extend(12, 5);
    EXPECT_EQ(block->GetStartingRow(), 12);
    EXPECT_EQ(block->GetStartingColumn(), 5);
    EXPECT_EQ(pos->GetRow(), 12);
    EXPECT_EQ(block->GetText(), "xRecentFiles = 8;\r\n");
    // A plain move keeps the block: blocks are persistent.
    pos->Move(1, 1);
    EXPECT_TRUE(block->GetIsValid());
    EXPECT_FALSE(block->Extend(0, 1));
    EXPECT_FALSE(pos->Move(999, 1));
    EXPECT_EQ(pos->GetRow(), 1);
}

TEST_F(ModelTest, ThePositionReadsAndDeletesCharacters) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    _di_IOTAEditPosition pos = view->GetPosition();
    pos->Move(1, 1);
    EXPECT_EQ(pos->GetCharacter(), 'u');
    EXPECT_EQ(pos->Read(4), "unit");
    pos->MoveEOL();
    EXPECT_EQ(pos->GetColumn(), 12);
    EXPECT_EQ(pos->GetCharacter(), '\0');
    EXPECT_TRUE(pos->IsWhiteSpace());
    pos->Delete(1); // joins the next, empty line
    pos->BackspaceDelete(1);
    pos->MoveBOL();
    EXPECT_EQ(pos->Read(13), "unit Utils\r\n{ ");
    EXPECT_EQ(pos->GetLastRow(), view->GetBuffer()->GetLinesInBuffer());
}

TEST_F(ModelTest, AReadOnlyBufferRefusesEditsAndStaysUnchanged) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    _di_IOTAEditBuffer buffer = view->GetBuffer();
    buffer->SetIsReadOnly(true);
    EXPECT_TRUE(buffer->IsReadOnly());
    EXPECT_THROW(view->GetPosition()->InsertText("x"), EReadOnlyBuffer);
    EXPECT_THROW(view->GetBlock()->Delete(), EReadOnlyBuffer);
    EXPECT_FALSE(buffer->GetModified());
    buffer->SetIsReadOnly(false);
    view->GetPosition()->InsertText("x");
    EXPECT_TRUE(buffer->GetModified());
}

TEST_F(ModelTest, ViewsScrollWithinTheBufferAndKeepTheCursorInSight) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    EXPECT_EQ(view->GetTopRow(), 1);
    EXPECT_EQ(view->GetBottomRow(), view->GetViewHeight());
    view->Scroll(2, 0);
    EXPECT_EQ(view->GetTopRow(), 3);
    view->Scroll(-10, 0);
    EXPECT_EQ(view->GetTopRow(), 1);
    view->Scroll(100000, 0);
    EXPECT_EQ(view->GetTopRow(), view->GetBuffer()->GetLinesInBuffer());
    view->GetPosition()->Move(40, 1);
    view->SetTopLeft(1, 1);
    view->MoveViewToCursor();
    EXPECT_EQ(view->GetBottomRow(), 40);
    view->Paint();
    EXPECT_EQ(dynamic_cast<TEditView*>(view.get())->PaintCount(), 1);
}

// ---------------------------------------------------------------------------------------------
// Saving and closing

TEST_F(ModelTest, SavingWritesTheBufferInItsCodePageAndLineBreaks) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    view->GetPosition()->Move(1, 1);
    view->GetPosition()->InsertText(rtl::Utf8ToCp1251("// Заголовок\r\n"));
    _di_IOTAModule module = view->GetBuffer()->GetModule();
    ASSERT_TRUE(module->Save(false, false));
    std::string saved = testfiles::ReadFile(File("Utils.pas"));
    EXPECT_EQ(saved, testfiles::ReadFile((testfiles::ExamplesDir() / "Utils.pas").string())
                         .insert(0, rtl::Utf8ToCp1251("// Заголовок\r\n")));
    EXPECT_FALSE(view->GetBuffer()->GetModified());
}

TEST_F(ModelTest, ClosingAModifiedModuleAsksConfirmAndFollowsTheAnswerUnlessForced) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    _di_IOTAEditBuffer buffer = view->GetBuffer();
    _di_IOTAModule module = buffer->GetModule();
    view->GetPosition()->InsertText("X");

    answer = mrCancel;
    EXPECT_FALSE(module->Close());
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_EQ(questions[0], "Confirm: Save changes to Utils.pas?");
    EXPECT_TRUE(model->FindModule(File("Utils.pas")));

    answer = mrNo;
    EXPECT_TRUE(module->Close());
    EXPECT_FALSE(model->FindModule(File("Utils.pas")));
    EXPECT_EQ(testfiles::ReadFile(File("Utils.pas")).substr(0, 4), "unit"); // not saved
    // The buffer outlives its module as an object; the closed view has no buffer.
    EXPECT_FALSE(buffer->GetModule());
    EXPECT_EQ(buffer->GetFileName(), File("Utils.pas"));
    EXPECT_FALSE(view->GetBuffer());
    EXPECT_FALSE(model->GetTopView());

    view = OpenUnit("Utils.pas");
    view->GetPosition()->InsertText("Y");
    answer = mrYes;
    EXPECT_TRUE(view->GetBuffer()->GetModule()->Close());
    EXPECT_EQ(testfiles::ReadFile(File("Utils.pas")).substr(0, 5), "Yunit");
    // A forced close asks nothing, and an unmodified module never asks.
    questions.clear();
    view = OpenUnit("Utils.pas");
    view->GetPosition()->InsertText("X");
    EXPECT_TRUE(view->GetBuffer()->GetModule()->CloseModule(true));
    OpenUnit("Main.pas")->GetBuffer()->GetModule()->Close();
    EXPECT_TRUE(questions.empty());
    EXPECT_EQ(model->GetModuleCount(), 0);
}

TEST_F(ModelTest, ClosingAPageKeepsAModuleWithOtherViewsAndTheProjectsSource) {
    _di_IOTAEditView first = OpenUnit("Utils.pas");
    auto* source = model->FindOpenModule(File("Utils.pas"))->SourceEditor();
    TEditView* second = model->OpenView(source, model->NewEditWindow());
    EXPECT_EQ(source->GetEditViewCount(), 2);
    EXPECT_FALSE(first->GetEditWindow() == _di_INTAEditWindow(second->GetEditWindow()));
    Query<IOTAEditActions>(_di_IOTAEditView(second))->ClosePage();
    EXPECT_EQ(source->GetEditViewCount(), 1);
    EXPECT_TRUE(model->FindModule(File("Utils.pas")));
    Query<IOTAEditActions>(first)->ClosePage();
    EXPECT_FALSE(model->FindModule(File("Utils.pas")));
    EXPECT_THROW(first->GetPosition()->GetCharacter(), EModelError);
    EXPECT_THROW(first->GetBlock()->GetText(), EModelError);
    // The project source's page closes alone: the project stays open.
    OpenExample();
    Query<IOTAEditActions>(OpenUnit("Example.dpr"))->ClosePage();
    TModelModule* project = model->FindOpenModule(File("Example.dpr"));
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->SourceEditor()->GetEditViewCount(), 0);
    EXPECT_TRUE(questions.empty());
}

// ---------------------------------------------------------------------------------------------
// Forms

TEST_F(ModelTest, EveryExampleFormLoadsIntoItsDesignerRoot) {
    struct Expected {
        const char *unit, *root, *cls;
        const char* kind;
        int components;
    } expected[] = {
        {"Main.pas", "MainForm", "TMainForm", "TForm", 16},
        {"Settings.pas", "SettingsForm", "TSettingsForm", "TForm", 9},
        {"DataMod.pas", "DataModuleMain", "TDataModuleMain", "TDataModule", 2},
        {"Frame1.pas", "InfoFrame", "TInfoFrame", "TFrame", 3},
    };
    // A unit that declares a class of the library's name does not graft onto its ancestry.
    std::string dataMod = ReadFileBytes(File("DataMod.pas"));
    dataMod.insert(dataMod.find("type\r\n") + 6, "  TObject = class(TGhost) end;\r\n");
    WriteFileBytes(File("DataMod.pas"), dataMod);
    OpenExample();
    for (const auto& e : expected) {
        SCOPED_TRACE(e.unit);
        auto module = model->OpenModuleFile(File(e.unit), TOpenMode::Background);
        _di_IOTAFormEditor form;
        for (int i = 0; i < module->GetModuleFileCount(); ++i)
            if (Supports(module->GetModuleFileEditor(i), form)) break;
        ASSERT_TRUE(form);
        EXPECT_EQ(form->GetFileName(), File(ChangeFileExt(e.unit, ".dfm")));
        _di_IDesigner designer = Query<INTAFormEditor>(form)->GetFormDesigner();
        TDesignComponent* root = designer->GetRoot();
        EXPECT_EQ(root->Name, e.root);
        EXPECT_EQ(root->ClassName, e.cls);
        EXPECT_EQ(root->ClassParentName(), e.kind);
        EXPECT_TRUE(root->InheritsFrom("TComponent"));
        _di_IOTAComponent rc = form->GetRootComponent();
        EXPECT_EQ(rc->GetComponentType(), e.cls);
        EXPECT_EQ(rc->GetComponentCount(), e.components);
        EXPECT_EQ(rc->GetComponentHandle(), root);
    }
    EXPECT_EQ(model->GetActiveDesignerType(), "dfm");
    // A frame placed on a form knows its class's ancestry from the project's other unit.
    auto main = model->OpenModuleFile(File("Main.pas"), TOpenMode::Hidden);
    TDesignComponent* frame = main->FormEditor()->Root()->FindComponent("InfoFrame1");
    EXPECT_EQ(frame->ClassParentName(), "TFrame");
    EXPECT_TRUE(frame->InheritsFrom("TWinControl"));
    EXPECT_EQ(frame->Ancestors.back(), "TObject");
    EXPECT_TRUE(frame->IsControl());
    // A data module is owned by its designer window and has no controls: a timer and an image
    // list are none.
    auto dataModule = model->OpenModuleFile(File("DataMod.pas"), TOpenMode::Hidden);
    ASSERT_NE(dataModule->FormEditor()->Root()->Owner, nullptr);
    EXPECT_TRUE(dataModule->FormEditor()->Root()->Owner->InheritsFrom("TWinControl"));
    _di_IOTAComponent rc = dataModule->FormEditor()->GetRootComponent();
    EXPECT_FALSE(rc->IsTControl());
    EXPECT_EQ(rc->GetControlCount(), 0);
}

// The classes of the project's units are kept between form loads until a unit changes.
TEST_F(ModelTest, AFrameClassIsReadAgainFromItsUnitOnceTheUnitChanged) {
    auto frameParent = [&] {
        auto main = model->OpenModuleFile(File("Main.pas"), TOpenMode::Hidden);
        std::string parent =
            main->FormEditor()->Root()->FindComponent("InfoFrame1")->ClassParentName();
        model->CloseAll();
        return parent;
    };
    auto past = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(File("Frame1.pas"), past);
    OpenExample();
    EXPECT_EQ(frameParent(), "TFrame");
    std::string unit = ReadFileBytes(File("Frame1.pas"));
    unit.replace(unit.find("class(TFrame)"), 13, "class(TCustomFrame)");
    WriteFileBytes(File("Frame1.pas"), unit);
    OpenExample();
    EXPECT_EQ(frameParent(), "TCustomFrame");
}

TEST_F(ModelTest, ComponentsGiveControlsParentsPropertiesAndSelection) {
    auto module = model->OpenModuleFile(File("Main.pas"), TOpenMode::Hidden);
    _di_IOTAFormEditor form(module->FormEditor());
    _di_IOTAComponent root = form->GetRootComponent();
    // Controls are the visual children: panel, memo, status bar, frame; not menu and actions.
    ASSERT_EQ(root->GetControlCount(), 4);
    _di_IOTAComponent panel = root->GetControl(0);
    EXPECT_EQ(panel->GetComponentType(), "TPanel");
    EXPECT_TRUE(panel->IsTControl());
    _di_IOTAComponent edit = form->FindComponent("NameEdit");
    EXPECT_TRUE(edit->GetParent()->GetComponentHandle() == panel->GetComponentHandle());
    EXPECT_FALSE(root->GetParent());
    std::string value;
    ASSERT_TRUE(edit->GetPropValueByName("Width", value));
    EXPECT_EQ(value, "217");
    EXPECT_FALSE(edit->GetPropValueByName("Nothing", value));
    EXPECT_TRUE(edit->SetPropByName("Width", "300"));
    EXPECT_TRUE(form->GetModified());
    EXPECT_FALSE(edit->SetPropByName("Width", "'unclosed"));
    // Selection.
    EXPECT_EQ(form->GetSelCount(), 0);
    EXPECT_TRUE(edit->Select(false));
    EXPECT_TRUE(panel->Select(true));
    ASSERT_EQ(form->GetSelCount(), 2);
    EXPECT_EQ(form->GetSelComponent(1)->GetComponentHandle(), panel->GetComponentHandle());
    EXPECT_TRUE(root->Select(false));
    EXPECT_EQ(form->GetSelCount(), 1);
    // Handles identify components of this form only.
    EXPECT_TRUE(form->GetComponentFromHandle(edit->GetComponentHandle()));
    int foreign = 0;
    EXPECT_FALSE(form->GetComponentFromHandle(&foreign));
}

TEST_F(ModelTest, ADamagedOrMissingFileGivesAClearErrorAndAFormFileOpensItsUnit) {
    std::string bytes = testfiles::ReadFile(File("Settings.dfm"));
    testfiles::WriteFile(File("Settings.dfm"), bytes.substr(0, bytes.size() / 2));
    try {
        model->OpenModuleFile(File("Settings.pas"), TOpenMode::Show);
        FAIL() << "a damaged form opened";
    } catch (const EFormFileError& e) {
        EXPECT_NE(e.Message().find("Settings.dfm"), std::string::npos) << e.Message();
    }
    EXPECT_EQ(model->GetModuleCount(), 0);
    EXPECT_FALSE(model->GetTopView());
    EXPECT_FALSE(model->OpenFile(File("Settings.pas")));
    // The module info still names the module.
    _di_IOTAProject project = OpenExample();
    EXPECT_EQ(project->GetModule(1)->GetFormName(), "SettingsForm");
    // A missing unit opens nothing; a form file opens its unit.
    EXPECT_FALSE(model->OpenFile(File("Missing.pas")));
    EXPECT_THROW(model->OpenModuleFile(File("Missing.pas"), TOpenMode::Show), rtl::EFOpenError);
    ASSERT_TRUE(model->OpenFile(File("Frame1.dfm")));
    EXPECT_EQ(model->CurrentModule()->GetFileName(), File("Frame1.pas"));
}

// ---------------------------------------------------------------------------------------------
// Notifiers

TEST_F(ModelTest, FormNotifiersHearActivationRenameAndSaving) {
    auto module = model->OpenModuleFile(File("Main.pas"), TOpenMode::Show);
    _di_IOTAFormEditor form(module->FormEditor());
    auto notifier = MakeInterfaced<TRecordingNotifier>();
    int index = form->AddNotifier(_di_IOTANotifier(notifier.get()));
    form->Show();
    EXPECT_EQ(model->CurrentModule()->GetFileName(), File("Main.pas"));
    _di_IOTAComponent edit = form->FindComponent("NameEdit");
    ASSERT_TRUE(edit->SetPropByName("Name", "UserEdit"));
    EXPECT_EQ(notifier->renamedHandle, edit->GetComponentHandle());
    EXPECT_THROW(edit->SetPropByName("Name", "OkButton"), EModelError); // taken
    EXPECT_THROW(edit->SetPropByName("Name", "1st"), EModelError);
    module->Save(false, false);
    EXPECT_EQ(notifier->events,
              (std::vector<std::string>{"activated", "renamed NameEdit UserEdit", "saving"}));
    form->RemoveNotifier(index);
    form->Show();
    EXPECT_EQ(notifier->events.size(), 3u);
    EXPECT_TRUE(LoadFormFile(File("Main.dfm")).Root->FindComponent("UserEdit"));
}

// ---------------------------------------------------------------------------------------------
// C++Builder projects, damaged resources

TEST_F(ModelTest, ACppBuilderModuleHasItsSourceHeaderAndForm) {
    testfiles::WriteFile(
        File("Demo.bpr"),
        "<PROJECT>\r\n  <FILELIST>\r\n"
        "    <FILE FILENAME=\"Demo.cpp\" FORMNAME=\"\" UNITNAME=\"Demo\"/>\r\n"
        "    <FILE FILENAME=\"Unit1.cpp\" FORMNAME=\"Form1\" UNITNAME=\"Unit1\"/>\r\n"
        "  </FILELIST>\r\n</PROJECT>\r\n");
    testfiles::WriteFile(
        File("Demo.cpp"),
        "#include <vcl.h>\r\nWINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {}\r\n");
    testfiles::WriteFile(File("Unit1.cpp"), "#include \"Unit1.h\"\r\nTForm1 *Form1;\r\n");
    testfiles::WriteFile(File("Unit1.h"),
                         "class TForm1 : public TForm\r\n{\r\n__published:\r\n};\r\n");
    testfiles::WriteFile(File("Unit1.dfm"), "object Form1: TForm1\r\n  Caption = 'C++'\r\nend\r\n");
    _di_IOTAProject project = Query<IOTAProject>(model->OpenProjectFile(File("Demo.bpr")));
    ASSERT_TRUE(project);
    // The project module: its source and its options file.
    ASSERT_EQ(project->GetModuleFileCount(), 2);
    EXPECT_EQ(project->GetModuleFileEditor(0)->GetFileName(), File("Demo.cpp"));
    EXPECT_EQ(project->GetModuleFileEditor(1)->GetFileName(), File("Demo.bpr"));
    ASSERT_EQ(project->GetModuleCount(), 1);
    _di_IOTAModuleInfo info = project->GetModule(0);
    EXPECT_EQ(info->GetDesignClass(), "TForm"); // from the header
    _di_IOTAModule unit = info->OpenModule();
    ASSERT_EQ(unit->GetModuleFileCount(), 3);
    EXPECT_EQ(unit->GetModuleFileEditor(1)->GetFileName(), File("Unit1.h"));
    EXPECT_TRUE(Supports<IOTASourceEditor>(unit->GetModuleFileEditor(1)));
    _di_IOTAFormEditor form = Query<IOTAFormEditor>(unit->GetModuleFileEditor(2));
    ASSERT_TRUE(form);
    EXPECT_TRUE(Query<INTAFormEditor>(form)->GetFormDesigner()->GetRoot()->InheritsFrom("TForm"));
}

TEST_F(ModelTest, ADamagedResourceFileKeepsTheProjectClosed) {
    testfiles::WriteFile(File("Example.res"), std::string("\0\0\0\0\x20\0\0\0\xFF\xFF", 10));
    try {
        OpenExample();
        FAIL() << "the project opened";
    } catch (const EModelError& e) {
        EXPECT_NE(e.Message().find("Example.res"), std::string::npos) << e.Message();
    }
    EXPECT_EQ(model->GetModuleCount(), 0);
}

TEST_F(ModelTest, SettingTheWholeTextIsOneUndoStep) {
    _di_IOTAEditView view = OpenUnit("Utils.pas");
    auto* source = model->FindOpenModule(File("Utils.pas"))->SourceEditor();
    std::string before = source->Text();
    source->SetText("unit Utils;\r\nend.\r\n");
    EXPECT_EQ(source->GetLinesInBuffer(), 3);
    EXPECT_TRUE(source->Undo());
    EXPECT_EQ(source->Text(), before);
    EXPECT_FALSE(source->Undo()); // nothing left to undo
    EXPECT_TRUE(source->Redo());
    EXPECT_EQ(source->Text(), "unit Utils;\r\nend.\r\n");
}
