#include "rtl/Registry.h"

#include "rtl/IniFiles.h"
#include "rtl/Lists.h"
#include "rtl/SafeFile.h"
#include "rtl/SysUtils.h"

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace rtl {

RTL_IMPLEMENT_CLASS(TRegistry)

namespace {

std::string RootName(HKEY root) {
    switch (root) {
    case HKEY_CURRENT_USER: return "HKEY_CURRENT_USER";
    case HKEY_LOCAL_MACHINE: return "HKEY_LOCAL_MACHINE";
    default: return "HKEY_" + std::to_string(root);
    }
}

// A path without leading, trailing or doubled backslashes.
std::string Normal(const std::string& path) {
    std::string r;
    for (char c : path) {
        if (c == '\\' && (r.empty() || r.back() == '\\')) continue;
        r += c;
    }
    if (!r.empty() && r.back() == '\\') r.pop_back();
    return r;
}

// The store as it is on the disk; unreadable text reads as an empty store.
std::unique_ptr<TMemIniFile> OpenStore() {
    try {
        return std::make_unique<TMemIniFile>(TRegistry::StoreFileName());
    } catch (...) {
        return std::make_unique<TMemIniFile>(std::string());
    }
}

void SaveStore(TMemIniFile& store) {
    try {
        std::string file = TRegistry::StoreFileName();
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        TStringList lines;
        store.GetStrings(&lines);
        WriteFileAtomically(file, lines.GetText());
    } catch (...) {
        // The settings stay as they were on the disk.
    }
}

bool HasSection(TMemIniFile& store, const std::string& section) {
    TStringList sections;
    store.ReadSections(&sections);
    return sections.IndexOf(section) >= 0;
}

} // namespace

std::string TRegistry::StoreFileName() {
    std::string dir = UserConfigDir();
    if (dir.empty()) dir = (std::filesystem::temp_directory_path() / "zelvane").string();
    return dir + "/registry.ini";
}

std::string TRegistry::FullKey(const std::string& key) const {
    if (!key.empty() && key.front() == '\\') return Normal(key);
    return Normal(currentPath_ + "\\" + key);
}

std::string TRegistry::Section() const {
    return currentPath_.empty() ? RootName(RootKey) : RootName(RootKey) + "\\" + currentPath_;
}

bool TRegistry::OpenKey(const std::string& key, bool canCreate) {
    std::string path = FullKey(key);
    std::string section = path.empty() ? RootName(RootKey) : RootName(RootKey) + "\\" + path;
    auto store = OpenStore();
    if (!HasSection(*store, section)) {
        if (!canCreate) return false;
        // A key without values is kept as a section with no entries.
        TStringList lines;
        store->GetStrings(&lines);
        lines.Add("[" + section + "]");
        store->SetStrings(&lines);
        SaveStore(*store);
    }
    currentPath_ = path;
    return true;
}

bool TRegistry::KeyExists(const std::string& key) {
    std::string path = FullKey(key);
    auto store = OpenStore();
    return HasSection(*store, path.empty() ? RootName(RootKey) : RootName(RootKey) + "\\" + path);
}

bool TRegistry::ValueExists(const std::string& name) {
    return OpenStore()->ValueExists(Section(), name);
}

std::string TRegistry::ReadString(const std::string& name) {
    return OpenStore()->ReadString(Section(), name, "");
}

void TRegistry::WriteString(const std::string& name, const std::string& value) {
    auto store = OpenStore();
    // A value written as it stands leaves the file alone: the add-in writes all its values back
    // at every stop.
    if (store->ValueExists(Section(), name) && store->ReadString(Section(), name, "") == value)
        return;
    store->WriteString(Section(), name, value);
    SaveStore(*store);
}

bool TRegistry::DeleteValue(const std::string& name) {
    auto store = OpenStore();
    if (!store->ValueExists(Section(), name)) return false;
    store->DeleteKey(Section(), name);
    SaveStore(*store);
    return true;
}

} // namespace rtl
