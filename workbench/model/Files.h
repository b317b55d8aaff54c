// File helpers of the model: whole-file reads and writes, and the resolution of the
// Windows-style relative paths that project files hold.
#pragma once

#include "rtl/SysUtils.h"

#include <string>
#include <string_view>

namespace workbench {

// The whole file; raises rtl::EFOpenError naming the file when it can't be read.
std::string ReadFileBytes(const std::string& fileName);
// Replaces the file; raises rtl::EFCreateError when it can't be written.
void WriteFileBytes(const std::string& fileName, std::string_view bytes);
// The runtime's names for the rest.
using rtl::ChangeFileExt;
using rtl::DirectoryExists;
using rtl::ExtractFileExt;
using rtl::ExtractFileName;
using rtl::ExtractFilePath;
using rtl::FileExists;
using rtl::LowerCase;
using rtl::SameText;

// An absolute, normalised path for a path written in a project file, relative to dir.
// Backslashes count as separators. Where the file does not exist under that spelling, a file
// whose name differs only in case is taken, as on the file system those projects came from.
std::string ResolvePath(const std::string& dir, const std::string& path);

// The file of that name with another extension beside it, found case-blind; empty if none.
std::string FindCompanionFile(const std::string& fileName, const std::string& ext);

} // namespace workbench
