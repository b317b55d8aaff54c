#include "workbench/Packages.h"

#include "rtl/IniFiles.h"
#include "rtl/Lists.h"
#include "rtl/SysUtils.h"
#include "toolsapi/Forms.h"
#include "toolsapi/Package.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace workbench {

using namespace ToolsAPI;

namespace {

std::string DefaultSettingsFile() {
    std::string dir = rtl::UserConfigDir();
    return dir.empty() ? std::string() : dir + "/workbench.ini";
}

std::string Absolute(const std::string& name, const std::string& baseDir) {
    std::filesystem::path p(name);
    if (p.is_relative() && !baseDir.empty()) p = std::filesystem::path(baseDir) / p;
    return p.lexically_normal().string();
}

} // namespace

std::vector<std::string> PackageList(const TPackageListOptions& options,
                                     const std::string& programDir) {
    std::vector<std::string> list;
    auto add = [&](const std::string& file) {
        if (file.empty()) return;
        if (std::find(list.begin(), list.end(), file) == list.end()) list.push_back(file);
    };
    if (!options.NoDefault) {
        // Beside the program in a build tree, else where an installation puts it. A missing
        // add-in is no error: the IDE runs bare.
        std::string def = Absolute("libzelvane.so", programDir);
#ifdef ZELVANE_INSTALLED_ADDIN_DIR
        if (!rtl::FileExists(def))
            def = Absolute(std::string(ZELVANE_INSTALLED_ADDIN_DIR) + "/libzelvane.so", programDir);
#endif
        if (rtl::FileExists(def)) add(def);
    }
    std::string settings =
        options.SettingsFile.empty() ? DefaultSettingsFile() : options.SettingsFile;
    if (!settings.empty() && rtl::FileExists(settings)) {
        rtl::TMemIniFile ini(settings);
        rtl::TStringList values;
        ini.ReadSectionValues("Packages", &values);
        std::string base = std::filesystem::path(settings).parent_path().string();
        for (int i = 0; i < values.Count(); ++i)
            add(Absolute(rtl::Trim(values.ValueFromIndex(i)), base));
    }
    for (const std::string& p : options.Packages)
        add(Absolute(p, std::filesystem::current_path().string()));
    return list;
}

// ---------------------------------------------------------------------------------------------

TPackageLoader::~TPackageLoader() {
    UnloadAll();
}

void TPackageLoader::Report(const std::string& text) {
    reports_.push_back(text);
    std::cerr << "workbench: " << text << '\n';
}

bool TPackageLoader::Load(const std::string& fileName) {
    void* handle = dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* why = dlerror();
        std::string text = "Can't load package " + fileName + ": " + (why ? why : "unknown error");
        Report(text);
        rtl::Exception e(text);
        if (Application) Application->ShowException(&e);
        return false;
    }
    dlerror();
    auto entry = reinterpret_cast<TPackageRegisterProc>(dlsym(handle, PackageRegisterProcName));
    if (!entry) {
        std::string text = "Package " + fileName + " has no entry point " +
                           std::string(PackageRegisterProcName) + "; it is not installed";
        Report(text);
        rtl::Exception e(text);
        if (Application) Application->ShowException(&e);
        dlclose(handle);
        return false;
    }

    packages_.push_back(TPackage{fileName, handle, {}});
    size_t index = packages_.size() - 1;
    SetRegisterWizardProc([this, index](const _di_IOTAWizard& wizard) {
        packages_[index].Wizards.push_back(wizard);
        return true;
    });
    bool ok = true;
    try {
        entry();
    } catch (...) {
        ok = false;
        std::string what = "an exception of an unknown type";
        try {
            throw;
        } catch (const std::exception& e) {
            what = e.what();
        } catch (...) {
        }
        Report("Package " + fileName + " raised in Register: " + what);
        if (Application) Application->HandleException(nullptr);
    }
    SetRegisterWizardProc(nullptr);
    return ok;
}

void TPackageLoader::LoadAll(const std::vector<std::string>& fileNames) {
    for (const std::string& f : fileNames)
        Load(f);
}

void TPackageLoader::UnloadAll() {
    while (!packages_.empty()) {
        TPackage& package = packages_.back();
        // The wizards go before their code: each is told, then released, the last first.
        while (!package.Wizards.empty()) {
            _di_IOTAWizard wizard = package.Wizards.back();
            package.Wizards.pop_back();
            try {
                wizard->Destroyed();
            } catch (...) {
                Report("Wizard of " + package.FileName + " raised while being released");
                if (Application) Application->HandleException(nullptr);
            }
            wizard = nullptr;
        }
        if (package.Handle) dlclose(package.Handle);
        packages_.pop_back();
    }
}

} // namespace workbench
