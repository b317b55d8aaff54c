// The IDE access layer against the headless model, and against small fakes where the rules
// are about file names the model would not produce.
#include "host/OTAUtils.h"
#include "tests/QtEnvironment.h"
#include "tests/workbench/TestFiles.h"
#include "workbench/model/Files.h"
#include "workbench/model/Model.h"

#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

using namespace zelvane;
using namespace ToolsAPI;
using workbench::TIDEModel;
using workbench::TOpenMode;

namespace {

// Widgets need an application; the tests run on the offscreen platform.
const auto* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new testqt::TQtEnvironment("host_tests"));

class OTAUtilsTest : public ::testing::Test {
protected:
    void SetUp() override {
        model = TIDEModel::Create();
        BorlandIDEServices = _di_IBorlandIDEServices(model.get());
    }
    void TearDown() override {
        BorlandIDEServices = nullptr;
        model = nullptr;
    }
    std::string File(const std::string& name) const { return copy.File(name); }
    _di_IOTAProject OpenExample() {
        return Query<IOTAProject>(model->OpenProjectFile(File("Example.dpr")));
    }
    _di_IOTAModule Open(const std::string& name, TOpenMode mode = TOpenMode::Show) {
        return _di_IOTAModule(model->OpenModuleFile(File(name), mode).get());
    }
    // A second project in a directory of its own.
    std::string WriteSecondProject() {
        std::filesystem::create_directories(copy.Path() / "second");
        testfiles::WriteFile(
            File("second/Second.dpr"),
            "program Second;\r\nuses\r\n  Tool in 'Tool.pas';\r\nbegin\r\nend.\r\n");
        testfiles::WriteFile(File("second/Tool.pas"),
                             "unit Tool;\r\ninterface\r\nimplementation\r\nend.\r\n");
        return File("second/Second.dpr");
    }

    testfiles::TExampleCopy copy;
    DelphiInterface<TIDEModel> model;
};

std::vector<std::string> Names(const std::vector<TDesignComponent*>& roots) {
    std::vector<std::string> names;
    for (auto* r : roots)
        names.push_back(r->Name);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Services, modules and projects

TEST_F(OTAUtilsTest, WithoutServicesEverythingIsEmpty) {
    BorlandIDEServices = nullptr;
    std::vector<_di_IOTAEditor> editors;
    GetOpenedEditors(editors, mtUnit, false);
    EXPECT_EQ(
        (std::vector<bool>{!OTAKeyboardServices(), GetProjectFormType().empty(), !GetActiveModule(),
                           !GetActiveProject(), !GetProjectResource(), !GetActiveFormEditor(),
                           !GetActiveSourceEditor(), !GetEditorForm(), !GetEditorForm2(),
                           editors.empty(), GetProjectModuleNames().empty()}),
        std::vector<bool>(11, true));
}

TEST_F(OTAUtilsTest, ASingleLooseProjectIsActiveTwoGiveNoneAndAGroupSettlesIt) {
    _di_IOTAProject project = OpenExample();
    EXPECT_TRUE(GetActiveProject() == project);
    model->OpenProjectFile(WriteSecondProject());
    EXPECT_EQ(model->GetModuleCount(), 2);
    EXPECT_FALSE(GetActiveProject());
    // A group settles the active project whatever else is open.
    _di_IOTAProjectGroup group =
        Query<IOTAProjectGroup>(model->OpenProjectFile(File("Example.bpg")));
    ASSERT_TRUE(group);
    EXPECT_TRUE(GetActiveProject() == group->GetActiveProject());
    EXPECT_EQ(GetActiveProject()->GetFileName(), File("Example.dpr"));
    // An empty group gives none: loose projects do not count once a group is open.
    model->CloseAll();
    testfiles::WriteFile(File("Empty.bpg"),
                         "VERSION = BWS.01\r\nPROJECTS =\r\ndefault: $(PROJECTS)\r\n");
    OpenExample();
    model->OpenProjectFile(File("Empty.bpg"));
    EXPECT_FALSE(GetActiveProject());
}

// ---------------------------------------------------------------------------------------------
// Editors

TEST_F(OTAUtilsTest, FormAndSourceEditorsAreSeparateFacetsAndOnlyTheFormHasARoot) {
    _di_IOTAModule main = Open("Main.pas");
    _di_IOTAFormEditor form = GetFormEditorFromModule(main);
    _di_IOTASourceEditor source = GetSourceEditorFromModule(main);
    ASSERT_TRUE(form && source);
    EXPECT_EQ(form->GetFileName(), File("Main.dfm"));
    EXPECT_EQ(source->GetFileName(), File("Main.pas"));
    EXPECT_FALSE(Supports<IOTASourceEditor>(form) || Supports<IOTAFormEditor>(source));
    EXPECT_FALSE(GetFormEditorFromModule(Open("Utils.pas")) || GetFormEditorFromModule(nullptr));
    _di_IDesigner designer = GetActiveFormDesigner(form);
    ASSERT_TRUE(designer);
    EXPECT_EQ(designer->GetRoot()->Name, "MainForm");
    EXPECT_FALSE(GetActiveFormDesigner(nullptr));
    EXPECT_EQ(GetFormFromEditor(_di_IOTAEditor(form))->Name, "MainForm");
    EXPECT_EQ(GetFormFromEditor(_di_IOTAEditor(source)), nullptr);
    EXPECT_EQ(GetFormFromEditor(nullptr), nullptr);
}

TEST_F(OTAUtilsTest, TheKindFilterTellsFormsDataModulesFramesAndReports) {
    // A report counts only when its direct parent is TQuickRep.
    testfiles::WriteFile(File("Report.pas"), "unit Report;\r\ninterface\r\ntype\r\n"
                                             "  TSalesReport = class(TQuickRep)\r\n  end;\r\n"
                                             "  TYearReport = class(TSalesReport)\r\n  end;\r\n"
                                             "implementation\r\nend.\r\n");
    testfiles::WriteFile(File("Report.dfm"), "object SalesReport: TSalesReport\r\nend\r\n");
    testfiles::WriteFile(File("Year.pas"), "unit Year;\r\ninterface\r\nuses Report;\r\n"
                                           "implementation\r\nend.\r\n");
    testfiles::WriteFile(File("Year.dfm"), "object YearReport: TYearReport\r\nend\r\n");
    testfiles::WriteFile(File("Reports.dpr"),
                         "program Reports;\r\nuses\r\n"
                         "  Report in 'Report.pas' {SalesReport},\r\n"
                         "  Year in 'Year.pas' {YearReport};\r\nbegin\r\nend.\r\n");
    OpenExample();
    model->OpenProjectFile(File("Reports.dpr"));
    auto editor = [&](const std::string& unit) {
        return _di_IOTAEditor(GetFormEditorFromModule(Open(unit, TOpenMode::Hidden)));
    };
    struct Case {
        const char* Unit;
        TProjectFormTypes Types;
        bool Found;
    };
    const Case cases[] = {
        {"Main.pas", {pfkForm}, true},
        {"Main.pas", {pfkFrame, pfkDataModule, pfkQuickRep}, false},
        {"DataMod.pas", {pfkDataModule}, true},
        {"DataMod.pas", {pfkForm}, false},
        {"Frame1.pas", {pfkFrame}, true},
        {"Frame1.pas", {pfkForm}, false},
        {"Report.pas", {pfkQuickRep}, true},
        {"Report.pas", {pfkForm, pfkFrame, pfkDataModule}, false},
        // A grandchild of TQuickRep is no report for the filter, and no form either.
        {"Year.pas", AllProjectFormTypes, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(GetFormFromEditor(editor(c.Unit), c.Types) != nullptr, c.Found) << c.Unit;
    EXPECT_NE(GetFormFromEditor(editor("Year.pas")), nullptr);
}

// ---------------------------------------------------------------------------------------------
// Lists of forms and editors

TEST_F(OTAUtilsTest, ProjectFormsOpenEveryModuleOfTheProject) {
    OpenExample();
    std::vector<TDesignComponent*> list = {nullptr}; // cleared first
    GetProjectForms(list, AllProjectFormTypes);
    EXPECT_EQ(Names(list), (std::vector<std::string>{"DataModuleMain", "InfoFrame", "MainForm",
                                                     "SettingsForm"}));
    EXPECT_EQ(model->GetModuleCount(), 6); // the project and its five units
    GetProjectForms(list, {pfkForm});
    EXPECT_EQ(Names(list), (std::vector<std::string>{"MainForm", "SettingsForm"}));
}

TEST_F(OTAUtilsTest, OpenFormsAreFilteredByTheActiveProject) {
    OpenExample();
    Open("Main.pas");
    testfiles::WriteFile(File("Loose.pas"), "unit Loose;\r\ninterface\r\ntype\r\n"
                                            "  TLooseForm = class(TForm)\r\n  end;\r\n"
                                            "implementation\r\nend.\r\n");
    testfiles::WriteFile(File("Loose.dfm"), "object LooseForm: TLooseForm\r\nend\r\n");
    Open("Loose.pas");
    std::vector<TDesignComponent*> list;
    GetProjectForms(list, AllProjectFormTypes, false);
    EXPECT_EQ(Names(list), (std::vector<std::string>{"LooseForm", "MainForm"}));
    GetProjectForms(list, AllProjectFormTypes, true);
    EXPECT_EQ(Names(list), (std::vector<std::string>{"MainForm"}));

    std::vector<_di_IOTAFormEditor> forms;
    GetOpenedFormEditors(forms, AllProjectFormTypes, true);
    ASSERT_EQ(forms.size(), 1u);
    EXPECT_EQ(forms[0]->GetFileName(), File("Main.dfm"));
}

TEST_F(OTAUtilsTest, OpenedEditorsOfUnitsAreTheSourceEditors) {
    OpenExample();
    Open("Main.pas");
    Open("Utils.pas");
    std::vector<_di_IOTAEditor> editors;
    GetOpenedEditors(editors, mtUnit, false);
    std::vector<std::string> files;
    for (auto& e : editors)
        files.push_back(workbench::ExtractFileName(e->GetFileName()));
    // The project's own source is an open module's source editor too.
    EXPECT_EQ(files, (std::vector<std::string>{"Example.dpr", "Main.pas", "Utils.pas"}));
    GetOpenedEditors(editors, mtForm, false);
    ASSERT_EQ(editors.size(), 1u);
    EXPECT_TRUE(Supports<IOTAFormEditor>(editors[0]));

    std::vector<IOTASourceEditor*> sources;
    GetOpenedSourceEditors(sources, true);
    ASSERT_EQ(sources.size(), 3u);
    EXPECT_EQ(sources[1]->GetFileName(), File("Main.pas"));
    EXPECT_EQ(sources[1]->GetEditViewCount(), 1);
}

TEST_F(OTAUtilsTest, TheProjectsModulesAndTheirNames) {
    std::vector<_di_IOTAModuleInfo> none, modules;
    GetProjectModules(none);
    OpenExample();
    GetProjectModules(modules);
    EXPECT_EQ((std::vector<size_t>{none.size(), modules.size()}), (std::vector<size_t>{0, 6}));

    std::vector<std::string> names = {"kept"};
    GetProjectModuleNames(names, mnkForm);
    EXPECT_EQ(names, (std::vector<std::string>{"kept", "MainForm", "SettingsForm", "DataModuleMain",
                                               "InfoFrame"}));
    names.clear();
    GetProjectModuleNames(names, mnkDesignClass);
    EXPECT_TRUE(names.empty());
    GetProjectModuleNames(names, mnkUnit);
    EXPECT_EQ(names.size(), 6u);

    TModuleNames all = GetProjectModuleNames();
    ASSERT_EQ(all.size(), 6u);
    EXPECT_EQ(all[2],
              (TModuleNameRec{File("DataMod.pas"), "DataMod", "DataModuleMain", "TDataModule"}));
    EXPECT_EQ(all[4][mnkForm], "");
}

// ---------------------------------------------------------------------------------------------
// The IDE's windows

TEST_F(OTAUtilsTest, TheEditorFormIsTheTopViewsWindowFormAndFoundOnlyWhenVisible) {
    QWidget form;
    form.setObjectName("EditWindow_0");
    QWidget* editor = new QWidget(&form);
    editor->setObjectName("Editor");
    QObject* tabs = new QObject(editor);
    tabs->setObjectName("TabControl");
    model->MainEditWindow()->SetForm(&form);

    EXPECT_EQ(GetEditorForm(), nullptr); // no buffer yet
    EXPECT_EQ(GetEditorFormComponent("Editor"), nullptr);
    Open("Utils.pas");
    EXPECT_EQ(GetEditorForm(), &form);
    EXPECT_EQ(GetEditorForm2(), &form);
    EXPECT_EQ(GetEditorFormComponent("editor"), editor);
    EXPECT_EQ(GetEditorFormComponent("TABCONTROL"), tabs); // found at any depth
    EXPECT_EQ(GetEditorFormComponent("Missing"), nullptr);
    // Found by its name only when visible.
    QWidget other, edit;
    other.setObjectName("AppBuilder");
    edit.setObjectName("EditWindow_1");
    other.show();
    EXPECT_EQ(FindEditorForm(), nullptr);
    edit.show();
    EXPECT_EQ(FindEditorForm(), &edit);
    edit.hide();
    EXPECT_EQ(FindEditorForm(), nullptr);
}

// ---------------------------------------------------------------------------------------------
// ShowModule

namespace {

// A module of editors with file names of any kind, and a services object whose action services
// record what they are asked to open.
struct TFakeEditor : TNotifierObject, virtual IOTASourceEditor {
    explicit TFakeEditor(std::string f, std::vector<std::string>* log)
        : file(std::move(f)), log(log) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTASourceEditor>(this, iid, obj);
    }
    int AddNotifier(const _di_IOTANotifier&) override { return -1; }
    void RemoveNotifier(int) override {}
    std::string GetFileName() override { return file; }
    bool GetModified() override { return false; }
    void MarkModified() override {}
    void Show() override { log->push_back("show " + file); }
    _di_IOTAModule GetModule() override { return nullptr; }
    int GetEditViewCount() override { return 0; }
    _di_IOTAEditView GetEditView(int) override { return nullptr; }
    int GetLinesInBuffer() override { return 0; }
    std::string file;
    std::vector<std::string>* log;
};

struct TFakeModule : TNotifierObject, virtual IOTAModule {
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAModule>(this, iid, obj);
    }
    std::string GetFileName() override { return "Fake.pas"; }
    int GetModuleFileCount() override { return static_cast<int>(editors.size()); }
    _di_IOTAEditor GetModuleFileEditor(int i) override { return editors[static_cast<size_t>(i)]; }
    int GetOwnerCount() override { return 0; }
    _di_IOTAProject GetOwner(int) override { return nullptr; }
    _di_IOTAEditor GetCurrentEditor() override { return nullptr; }
    bool Close() override { return true; }
    bool CloseModule(bool) override { return true; }
    bool Save(bool, bool) override { return true; }
    void Show() override {}
    std::vector<_di_IOTAEditor> editors;
};

struct TFakeInfo : TInterfacedObject, virtual IOTAModuleInfo {
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAModuleInfo>(this, iid, obj);
    }
    TOTAModuleType GetModuleType() override { return omtForm; }
    std::string GetName() override { return "Fake"; }
    std::string GetFileName() override { return "Fake.pas"; }
    std::string GetFormName() override { return "FakeForm"; }
    std::string GetDesignClass() override { return ""; }
    _di_IOTAModule OpenModule() override {
        ++opened;
        return _di_IOTAModule(module.get());
    }
    DelphiInterface<TFakeModule> module = MakeInterfaced<TFakeModule>();
    int opened = 0;
};

struct TFakeServices : TInterfacedObject, virtual IBorlandIDEServices, virtual IOTAActionServices {
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IBorlandIDEServices, IOTAActionServices>(this, iid, obj);
    }
    bool OpenFile(const std::string& f) override {
        log->push_back("open " + f);
        return true;
    }
    bool OpenProject(const std::string&, bool) override { return false; }
    bool CloseFile(const std::string&) override { return false; }
    bool SaveFile(const std::string&) override { return false; }
    std::vector<std::string>* log = nullptr;
};

class ShowModuleTest : public ::testing::Test {
protected:
    void SetUp() override {
        services->log = &log;
        BorlandIDEServices = _di_IBorlandIDEServices(services.get());
    }
    void TearDown() override { BorlandIDEServices = nullptr; }
    _di_IOTAModuleInfo Module(const std::vector<const char*>& files) {
        for (const char* f : files)
            info->module->editors.push_back(_di_IOTAEditor(MakeInterfaced<TFakeEditor>(f, &log)));
        return _di_IOTAModuleInfo(info.get());
    }
    std::vector<std::string> log;
    DelphiInterface<TFakeServices> services = MakeInterfaced<TFakeServices>();
    DelphiInterface<TFakeInfo> info = MakeInterfaced<TFakeInfo>();
};

} // namespace

TEST_F(ShowModuleTest, EachKindShowsOrOpensItsFiles) {
    // A unit shows everything but forms, headers, project options and resources; the extension
    // test is a substring test, so no extension and a piece of a listed one stand in the list.
    // A form shows the form and opens its unit unless the form alone is asked for; a displacing
    // view shows a C++ source in place of opening it.
    struct Case {
        std::vector<const char*> Files;
        TModuleNameKind Kind;
        bool FormOnly, Displacing;
        std::vector<std::string> Log;
    };
    const std::vector<const char*> mixed = {"U.cpp", "U.h",   "U.dfm", "U.xfm",
                                            "P.bpr", "P.res", "U.pas", "P.dpr"};
    const Case cases[] = {
        {mixed, mnkUnit, false, false, {"show U.cpp", "show U.pas", "show P.dpr"}},
        {mixed, mnkFile, true, true, {"show U.cpp", "show U.pas", "show P.dpr"}},
        {{"Makefile", "X.d", "X.re", "X.DFM", "X.inc"}, mnkUnit, false, false, {"show X.inc"}},
        {{"U.pas", "U.dfm"}, mnkForm, false, false, {"open U.pas", "show U.dfm"}},
        {{"U.pas", "U.dfm"}, mnkForm, true, false, {"show U.dfm"}},
        {{"U.pas", "U.dfm"}, mnkForm, false, true, {"open U.pas", "show U.dfm"}},
        {{"U.CPP", "U.h", "U.xfm"}, mnkForm, false, true, {"show U.CPP", "show U.xfm"}},
        {{"U.CPP", "U.h", "U.xfm"}, mnkForm, false, false, {"open U.CPP", "show U.xfm"}},
    };
    for (const Case& c : cases) {
        log.clear();
        info->module->editors.clear();
        ShowModule(Module(c.Files), c.Kind, c.FormOnly, c.Displacing);
        EXPECT_EQ(log, c.Log) << c.Files[0] << " kind " << static_cast<int>(c.Kind) << " "
                              << c.FormOnly << c.Displacing;
    }
    // A design class opens the module and shows nothing.
    log.clear();
    info->opened = 0;
    ShowModule(Module({"U.pas", "U.dfm"}), mnkDesignClass, false, false);
    EXPECT_EQ(info->opened, 1);
    ShowModule(nullptr, mnkUnit, false, false);
    EXPECT_TRUE(log.empty());
}

TEST_F(OTAUtilsTest, ShowModuleByNameFindsTheModuleByItsNameOfThatKind) {
    OpenExample();
    ShowModuleByName("MAIN", mnkUnit, false, false);
    ASSERT_TRUE(GetActiveModule());
    EXPECT_EQ(GetActiveModule()->GetFileName(), File("Main.pas"));
    EXPECT_EQ(model->GetTopBuffer()->GetFileName(), File("Main.pas"));

    ShowModuleByName("settingsform", mnkForm, true, false);
    EXPECT_EQ(GetActiveModule()->GetFileName(), File("Settings.pas"));
    EXPECT_TRUE(GetActiveFormEditor());
    // The form alone was shown: the top buffer is still Main's.
    EXPECT_EQ(model->GetTopBuffer()->GetFileName(), File("Main.pas"));

    ShowModuleByName(File("Utils.pas"), mnkFile, false, false);
    EXPECT_EQ(model->GetTopBuffer()->GetFileName(), File("Utils.pas"));

    int before = model->GetModuleCount();
    ShowModuleByName("Nothing", mnkUnit, false, false);
    ShowModuleByName("TDataModule", mnkDesignClass, false, false); // never matched by text
    EXPECT_EQ(model->GetModuleCount(), before);
    ShowModuleByName("", mnkDesignClass, false, false); // matches the first module, shows nothing
    EXPECT_EQ(model->GetTopBuffer()->GetFileName(), File("Utils.pas"));
}
