// The package loader: reads the list of design-time packages, loads each shared library with
// dlopen, calls its Register entry, keeps the wizards it registers, and at the end releases the
// wizards and unloads the libraries in reverse order. A package that can't be loaded, lacks the
// entry or raises in Register is reported, and the loader goes on with the next.
#pragma once

#include "toolsapi/ToolsAPI.h"

#include <string>
#include <vector>

namespace workbench {

struct TPackageListOptions {
    // Packages named on the command line, in order.
    std::vector<std::string> Packages;
    // Leave out the default package (the add-in beside the program).
    bool NoDefault = false;
    // The settings file with a [Packages] section; empty for the user's default one.
    std::string SettingsFile;
};

// The package list: the default package (libzelvane.so in the program's directory, or in the
// add-in's directory of an installation) if it exists, then the packages of the settings file's [Packages] section (each key's value a file
// name, relative names taken from the settings file's directory) in key order, then those of the
// command line. A file named twice is loaded once.
std::vector<std::string> PackageList(const TPackageListOptions& options,
                                     const std::string& programDir);

class TPackageLoader {
public:
    struct TPackage {
        std::string FileName;
        void* Handle = nullptr;
        std::vector<ToolsAPI::_di_IOTAWizard> Wizards;
    };

    TPackageLoader() = default;
    TPackageLoader(const TPackageLoader&) = delete;
    TPackageLoader& operator=(const TPackageLoader&) = delete;
    ~TPackageLoader();

    // Loads one package; false (with a report) when it could not be loaded or its Register
    // failed. A package whose Register raised stays loaded with the wizards it registered
    // before the failure, as the IDE keeps a half-built wizard.
    bool Load(const std::string& fileName);
    void LoadAll(const std::vector<std::string>& fileNames);
    // Releases all wizards and unloads all packages, the last loaded first.
    void UnloadAll();

    const std::vector<TPackage>& Packages() const { return packages_; }
    // The reports of failures, one line each, in order.
    const std::vector<std::string>& Reports() const { return reports_; }

private:
    void Report(const std::string& text);

    std::vector<TPackage> packages_;
    std::vector<std::string> reports_;
};

} // namespace workbench
