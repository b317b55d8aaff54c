// Reading the files that describe projects: Delphi project sources (.dpr, .dpk), C++Builder
// project files (.bpr, .bpk), project groups (.bpg), and the class declarations of units.
#pragma once

#include "rtl/SysUtils.h"

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

using rtl::Exception;

RTL_EXCEPTION(EProjectFileError, Exception)

// One module of a project as its project file names it.
struct TProjectEntry {
    std::string UnitName;
    std::string FileName;       // absolute
    std::string FormName;       // from the project file, empty if it names none
    std::string DesignClass;    // "TDataModule" in "{DataModule1: TDataModule}"
    bool PackageImport = false; // a package that a package requires (.dcp)
};

struct TProjectDescription {
    std::string FileName;   // the project file
    std::string SourceFile; // the main source: the .dpr itself, or the .cpp of a .bpr
    std::string ResFile;    // the project's resource file, if it has one on disk
    std::vector<TProjectEntry> Entries;
};

// A Delphi project or package source: the units of its uses (or contains) clause that name a
// file with "in", the form comments after them, the packages of a requires clause, and the
// resource file of {$R *.res}.
TProjectDescription ParseDelphiProject(const std::string& fileName, std::string_view text);
// A C++Builder 6 project file (XML): the FILE entries of its FILELIST.
TProjectDescription ParseBuilderProject(const std::string& fileName, std::string_view text);
// The project files of a project group (.bpg), in the order of its PROJECTS line.
std::vector<std::string> ParseProjectGroup(const std::string& fileName, std::string_view text);
// Reads and parses the project file by its extension; raises EProjectFileError for a file it
// can't read or an extension it doesn't know.
TProjectDescription LoadProject(const std::string& fileName);

// A class a unit declares, and the class it derives from.
struct TClassDeclaration {
    std::string Name;
    std::string Parent;
};
// The classes the source declares, in its order: "TForm1 = class(TForm)" in Pascal, or
// "class TForm1 : public TForm" in a C++ header.
std::vector<TClassDeclaration> UnitClasses(std::string_view source, bool cpp);

// The parent class in a unit's declaration of className: "TForm" for "TForm1 = class(TForm)"
// in Pascal, or for "class TForm1 : public TForm" in a C++ header. Empty if not declared.
std::string FindParentClass(std::string_view source, std::string_view className, bool cpp);

// The parent of a class of the platform's component library, or empty for a class it does not
// know. Used to complete the ancestry of design roots and their components.
std::string LibraryClassParent(std::string_view className);

} // namespace workbench
