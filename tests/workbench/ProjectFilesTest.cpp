// Project files: Delphi project and package sources, C++Builder project files, project groups,
// and the class declarations of units.
#include "workbench/model/ProjectFiles.h"
#include "tests/workbench/TestFiles.h"
#include "workbench/model/Files.h"

#include <gtest/gtest.h>

using namespace workbench;

namespace {
// A project's entries as "unit file {form} class", the file relative to dir when it is there.
std::vector<std::string> Entries(const TProjectDescription& d, const std::string& dir) {
    std::vector<std::string> r;
    for (const auto& e : d.Entries) {
        auto file = std::filesystem::path(e.FileName).lexically_normal();
        auto in = file.lexically_relative(std::filesystem::path(dir).lexically_normal());
        r.push_back(e.UnitName + " " + (in.empty() || *in.begin() == ".." ? file : in).string() +
                    " {" + e.FormName + "} " + e.DesignClass);
    }
    return r;
}
} // namespace

TEST(DelphiProjects, CommentsPathsAndUnitsWithoutFilesAreHandled) {
    testfiles::TTempDir dir;
    std::string text = "{ A project with comments }\r\n"
                       "program Tricky; // uses Fake in 'Fake.pas'\r\n"
                       "uses\r\n"
                       "  Forms, (* Skipped in 'Skipped.pas', *)\r\n"
                       "  Units.Main in 'src\\Main.pas' {MainForm},\r\n"
                       "  Other in 'Sub\\Dir\\other.PAS',\r\n"
                       "  Quoted in 'It''s.pas';\r\n"
                       "begin\r\n"
                       "  Application.Run;\r\n"
                       "end.\r\n";
    TProjectDescription d = ParseDelphiProject(dir.File("Tricky.dpr"), text);
    EXPECT_EQ(Entries(d, dir.Path().string()),
              (std::vector<std::string>{"Units.Main src/Main.pas {MainForm} ",
                                        "Other Sub/Dir/other.PAS {} ", "Quoted It's.pas {} "}));
    EXPECT_TRUE(d.ResFile.empty()); // no {$R *.res}
}

TEST(DelphiProjects, PathsFindFilesThatDifferOnlyInCase) {
    testfiles::TTempDir dir;
    std::filesystem::create_directories(dir.Path() / "Source");
    testfiles::WriteFile(dir.File("Source/MainUnit.pas"), "unit MainUnit; end.");
    TProjectDescription d = ParseDelphiProject(
        dir.File("P.dpr"), "program P; uses MainUnit in 'SOURCE\\mainunit.pas'; begin end.");
    ASSERT_EQ(d.Entries.size(), 1u);
    EXPECT_EQ(d.Entries[0].FileName, dir.File("Source/MainUnit.pas"));
}

// The directory's listing is kept between look-ups; a file made since is found all the same.
TEST(DelphiProjects, ACaseBlindLookUpSeesFilesMadeSinceTheLastOne) {
    testfiles::TTempDir dir;
    testfiles::WriteFile(dir.File("Main.pas"), "");
    auto past = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(dir.Path(), past);
    EXPECT_EQ(FindCompanionFile(dir.File("main.pas"), ".dfm"), "");
    EXPECT_EQ(ResolvePath(dir.Path().string(), "MAIN.PAS"), dir.File("Main.pas"));
    testfiles::WriteFile(dir.File("Main.DFM"), "");
    EXPECT_EQ(FindCompanionFile(dir.File("main.pas"), ".dfm"), dir.File("Main.DFM"));
    std::filesystem::rename(dir.File("Main.pas"), dir.File("Renamed.pas"));
    EXPECT_EQ(ResolvePath(dir.Path().string(), "RENAMED.pas"), dir.File("Renamed.pas"));
}

TEST(DelphiProjects, APackageListsItsRequiredPackagesAndContainedUnits) {
    testfiles::TTempDir dir;
    std::string text = "package Tools;\r\n{$R *.res}\r\nrequires\r\n  rtl,\r\n  vcl;\r\n"
                       "contains\r\n  ToolReg in 'ToolReg.pas';\r\nend.\r\n";
    TProjectDescription d = ParseDelphiProject(dir.File("Tools.dpk"), text);
    EXPECT_EQ(Entries(d, dir.Path().string()),
              (std::vector<std::string>{"rtl rtl.dcp {} ", "vcl vcl.dcp {} ",
                                        "ToolReg ToolReg.pas {} "}));
    EXPECT_TRUE(d.Entries[0].PackageImport);
    EXPECT_TRUE(d.ResFile.empty()); // the directive names a file that isn't there
}

TEST(BuilderProjects, TheFileListGivesModulesAndTheProjectSource) {
    testfiles::TTempDir dir;
    testfiles::WriteFile(dir.File("Demo.res"), "");
    std::string text = R"(<?xml version='1.0' encoding='utf-8' ?>
<!-- C++Builder XML Project -->
<PROJECT>
  <MACROS>
    <PROJECT value="Demo.exe"/>
  </MACROS>
  <FILELIST>
      <FILE FILENAME="Demo.res" FORMNAME="" UNITNAME="Demo.res" CONTAINERID="ResTool" DESIGNCLASS="" LOCALCOMMAND=""/>
      <FILE FILENAME="Demo.cpp" FORMNAME="" UNITNAME="Demo" CONTAINERID="CCompiler" DESIGNCLASS="" LOCALCOMMAND=""/>
      <FILE FILENAME="Unit1.cpp" FORMNAME="Form1" UNITNAME="Unit1" CONTAINERID="CCompiler" DESIGNCLASS="" LOCALCOMMAND=""/>
      <FILE FILENAME="Data\DM.cpp" FORMNAME="DM" UNITNAME="DM" CONTAINERID="CCompiler" DESIGNCLASS="TDataModule" LOCALCOMMAND=""/>
  </FILELIST>
</PROJECT>
)";
    TProjectDescription d = ParseBuilderProject(dir.File("Demo.bpr"), text);
    EXPECT_EQ(d.SourceFile, dir.File("Demo.cpp"));
    EXPECT_EQ(d.ResFile, dir.File("Demo.res"));
    EXPECT_EQ(Entries(d, dir.Path().string()),
              (std::vector<std::string>{"Demo.res Demo.res {} ", "Unit1 Unit1.cpp {Form1} ",
                                        "DM Data/DM.cpp {DM} TDataModule"}));
}

TEST(ProjectGroups, ProjectsComeInTheOrderOfTheProjectsLine) {
    testfiles::TTempDir dir;
    std::string text = "VERSION = BWS.01\r\n"
                       "PROJECTS = Second.exe First.exe \\\r\n  Missing.exe\r\n"
                       "default: $(PROJECTS)\r\n\r\n"
                       "First.exe: First.dpr\r\n  $(DCC)\r\n\r\n"
                       "Second.exe: Sub\\Second.dpr\r\n  $(DCC)\r\n";
    auto projects = ParseProjectGroup(dir.File("G.bpg"), text);
    ASSERT_EQ(projects.size(), 2u); // Missing.exe has no rule
    EXPECT_EQ(projects[0], dir.File("Sub/Second.dpr"));
    EXPECT_EQ(projects[1], dir.File("First.dpr"));
}

TEST(ProjectFiles, AnUnknownOrMissingFileRaises) {
    EXPECT_THROW(LoadProject("/nonexistent/x.dpr"), EProjectFileError);
    testfiles::TTempDir dir;
    testfiles::WriteFile(dir.File("x.txt"), "");
    EXPECT_THROW(LoadProject(dir.File("x.txt")), EProjectFileError);
}

TEST(UnitClasses, TheParentComesFromTheDeclarationNotFromComments) {
    std::string pas = "type\r\n  { TMainForm = class(TWrong) }\r\n"
                      "  TMainForm = class ( Forms.TForm )\r\n  end;\r\n"
                      "  TOther = class(TMainForm);\r\n";
    EXPECT_EQ(FindParentClass(pas, "TMainForm", false), "TForm");
    EXPECT_EQ(FindParentClass(pas, "tother", false), "TMainForm");
    EXPECT_EQ(FindParentClass(pas, "TMissing", false), "");
    std::string h = "// class TForm1 : public TWrong\r\n"
                    "class PACKAGE TForm1 : public TForm\r\n{\r\n__published:\r\n};\r\n"
                    "class TDM : public TDataModule {};\r\n";
    EXPECT_EQ(FindParentClass(h, "TForm1", true), "TForm");
    EXPECT_EQ(FindParentClass(h, "TDM", true), "TDataModule");
}
