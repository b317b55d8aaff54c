// The registry store: values under keys that survive a new registry object, keys compared
// without regard to case, keys that are not made unless asked, and a store file that is not a
// store, and a file that is written only when a value changes.
#include "rtl/Registry.h"

#include "TestSupport.h"

#include <optional>
#include <sys/stat.h>

using namespace rtl;
using namespace rtltest;

namespace {

// The store under a scratch directory taken for the configuration home.
class RegistryTest : public TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        if (const char* old = std::getenv("XDG_CONFIG_HOME")) old_ = old;
        setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
    }
    void TearDown() override {
        if (old_)
            setenv("XDG_CONFIG_HOME", old_->c_str(), 1);
        else
            unsetenv("XDG_CONFIG_HOME");
        TempDirTest::TearDown();
    }
    std::optional<std::string> old_;
};

TEST_F(RegistryTest, ValuesOutliveTheObjectThatWroteThem) {
    {
        TRegistry reg;
        ASSERT_TRUE(reg.OpenKey("\\Software\\Zelvane", true));
        reg.WriteString("ExpVersion", "1.0");
        reg.WriteString("ExpCurrentLocale", "");
    }
    EXPECT_EQ(TRegistry::StoreFileName(), Path("zelvane/registry.ini"));
    TRegistry reg;
    ASSERT_TRUE(reg.OpenKey("\\SOFTWARE\\zelvane", false));
    EXPECT_EQ(reg.ReadString("expversion"), "1.0");
    EXPECT_EQ(std::pair(reg.ValueExists("ExpCurrentLocale"), reg.ValueExists("ExpLocaleDir")),
              std::pair(true, false));
    EXPECT_EQ(reg.ReadString("ExpLocaleDir"), "");
    EXPECT_TRUE(reg.DeleteValue("ExpVersion"));
    TRegistry after;
    ASSERT_TRUE(after.OpenKey("\\Software\\Zelvane", false));
    EXPECT_FALSE(after.ValueExists("ExpVersion"));
}

TEST_F(RegistryTest, AMissingKeyOpensOnlyWhenItMayBeMade) {
    TRegistry reg;
    EXPECT_FALSE(reg.OpenKey("\\Software\\Zelvane", false));
    EXPECT_FALSE(reg.KeyExists("\\Software\\Zelvane"));
    ASSERT_TRUE(reg.OpenKey("\\Software", true));
    // Relative to the open key.
    ASSERT_TRUE(reg.OpenKey("Zelvane", true));
    EXPECT_EQ(reg.CurrentPath(), "Software\\Zelvane");
    EXPECT_TRUE(TRegistry().KeyExists("\\Software\\Zelvane"));
    // Another root is another tree.
    TRegistry machine;
    machine.RootKey = HKEY_LOCAL_MACHINE;
    EXPECT_FALSE(machine.KeyExists("\\Software\\Zelvane"));
}

TEST_F(RegistryTest, AStoreThatIsNotOneReadsEmptyAndIsWrittenAnew) {
    std::filesystem::create_directories(Path("zelvane"));
    WriteFile(Path("zelvane/registry.ini"), std::string("\0\xFF[[=", 5));
    TRegistry reg;
    ASSERT_TRUE(reg.OpenKey("\\Software\\Zelvane", true));
    EXPECT_EQ(reg.ReadString("ExpVersion"), "");
    reg.WriteString("ExpVersion", "1.0");
    TRegistry again;
    ASSERT_TRUE(again.OpenKey("\\Software\\Zelvane", false));
    EXPECT_EQ(again.ReadString("ExpVersion"), "1.0");
}

TEST_F(RegistryTest, WritingAValueAsItStandsLeavesTheFileAlone) {
    TRegistry reg;
    ASSERT_TRUE(reg.OpenKey("\\Software\\Zelvane", true));
    reg.WriteString("ExpVersion", "1.0");
    // The store is replaced by a new file at each write, so a write shows in its inode.
    auto inode = [] {
        struct stat st {};
        EXPECT_EQ(stat(TRegistry::StoreFileName().c_str(), &st), 0);
        return st.st_ino;
    };
    auto before = inode();
    reg.WriteString("ExpVersion", "1.0");
    EXPECT_EQ(inode(), before);
    reg.WriteString("ExpVersion", "1.1");
    EXPECT_NE(inode(), before);
    EXPECT_EQ(reg.ReadString("ExpVersion"), "1.1");
}

} // namespace
