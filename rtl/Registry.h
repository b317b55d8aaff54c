// The registry of the user's settings, in the shape of the platform's TRegistry: keys as
// backslash paths under a root, each holding named string values.
//
// The store is one ini file per user, $XDG_CONFIG_HOME/zelvane/registry.ini (or
// ~/.config/zelvane/registry.ini), a section per key ("HKEY_CURRENT_USER\Software\Zelvane").
// Keys and value names compare without regard to case. A value written is in the file at once;
// the file is replaced whole, so a crash never leaves half of it. A file that can't be read
// reads as empty. Nothing here raises for a missing store: reads give empty values, and a write
// that can't reach the disk is passed over.
#pragma once

#include "rtl/System.h"
#include "rtl/TypInfo.h"

#include <cstdint>
#include <string>

namespace rtl {

using HKEY = uint32_t;
constexpr HKEY HKEY_CURRENT_USER = 0x80000001;
constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;
constexpr uint32_t KEY_ALL_ACCESS = 0xF003F;

class TRegistry : public TObject {
    RTL_CLASS(TRegistry, TObject)
public:
    explicit TRegistry(uint32_t access = KEY_ALL_ACCESS) : access_(access) {}

    HKEY RootKey = HKEY_CURRENT_USER;

    // Opens the key: a path with a leading backslash from the root, else below the open key.
    // With canCreate a missing key is made; without, false.
    bool OpenKey(const std::string& key, bool canCreate);
    void CloseKey() { currentPath_.clear(); }
    bool KeyExists(const std::string& key);
    // The open key's path, without the root.
    const std::string& CurrentPath() const { return currentPath_; }

    bool ValueExists(const std::string& name);
    // The value, or an empty string when the open key has none.
    std::string ReadString(const std::string& name);
    void WriteString(const std::string& name, const std::string& value);
    bool DeleteValue(const std::string& name);

    // The file of the store.
    static std::string StoreFileName();

private:
    std::string FullKey(const std::string& key) const;
    std::string Section() const;

    uint32_t access_;
    std::string currentPath_;
};

} // namespace rtl
