// File and name helpers of the model: whole-file reads and writes, case-blind names, and the
// resolution of the Windows-style relative paths that project files hold.
#pragma once

#include <string>
#include <string_view>

namespace workbench {

// The whole file; raises rtl::EFOpenError naming the file when it can't be read.
std::string ReadFileBytes(const std::string& fileName);
// Replaces the file; raises rtl::EFCreateError when it can't be written.
void WriteFileBytes(const std::string& fileName, std::string_view bytes);
bool FileExists(const std::string& fileName);
bool DirectoryExists(const std::string& name);

std::string LowerCase(std::string_view s);
bool SameText(std::string_view a, std::string_view b);

// ".pas" for "Units/Main.pas"; empty without one.
std::string ExtractFileExt(const std::string& fileName);
// "Main.pas" for "Units/Main.pas".
std::string ExtractFileName(const std::string& fileName);
// "Units/" for "Units/Main.pas"; empty without a directory.
std::string ExtractFilePath(const std::string& fileName);
std::string ChangeFileExt(const std::string& fileName, const std::string& ext);

// An absolute, normalised path for a path written in a project file, relative to dir.
// Backslashes count as separators. Where the file does not exist under that spelling, a file
// whose name differs only in case is taken, as on the file system those projects came from.
std::string ResolvePath(const std::string& dir, const std::string& path);

// The file of that name with another extension beside it, found case-blind; empty if none.
std::string FindCompanionFile(const std::string& fileName, const std::string& ext);

} // namespace workbench
