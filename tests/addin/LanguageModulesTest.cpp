// The language modules as the build makes them: every number that the sources ask the string
// table for is in the package's table and in each module; each module holds the whole table,
// the English one the package's own texts byte for byte; and a module's UTF-8 texts reach the
// add-in in its code page.
#include "foundation/ResStrings.h"
#include "host/ExpMng.h"
#include "locale/LanguageModule.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/CodePage.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using namespace zelvane;

namespace {

const char* const kModules[] = {"zelv_eng.dll", "zelv_rus.dll", "zelv_ger.dll"};

std::string ModulePath(const std::string& name) {
    return std::string(ZELVANE_LANGUAGE_DIR) + "/" + name;
}

// A module's texts as its table holds them.
class TModuleTexts {
public:
    explicit TModuleTexts(const std::string& name)
        : handle_(dlopen(ModulePath(name).c_str(), RTLD_NOW | RTLD_LOCAL)) {}
    ~TModuleTexts() {
        if (handle_) dlclose(handle_);
    }
    bool Loaded() const { return handle_ != nullptr; }
    std::string Text(int id) const {
        auto load = reinterpret_cast<TLoadStringProc>(dlsym(handle_, LoadStringProcName));
        char buffer[1024];
        return std::string(buffer, size_t(load(id, buffer, sizeof buffer)));
    }

private:
    void* handle_;
};

bool IsTextNumber(int id) {
    return (id >= 50500 && id <= 50625) || (id >= 51001 && id <= 51264) ||
           (id >= 51500 && id <= 51573) || (id >= 65520 && id <= 65528);
}

// The numbers the add-in's sources ask for: a constant of a text number that some line other than
// its definition "name = number" names, and a number written straight into a call of the string
// table.
std::set<int> NumbersAskedFor() {
    static const std::regex word(R"(([A-Za-z_]\w*)( *= *\d)?)"),
        definition(R"(constexpr int (\w+) *= *(\d{1,6})\b)"),
        call(R"((?:Locale|Res)Str\( *(\d{1,6})(?!\d))");
    std::map<std::string, int> constants;
    std::set<std::string> named;
    std::set<int> asked;
    std::filesystem::path root = std::getenv("ZELVANE_SOURCE_DIR");
    for (const char* dir : {"host", "experts", "about", "locale", "foundation", "persistence",
                            "specification", "editor"})
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root / dir)) {
            std::string ext = entry.path().extension().string();
            if ((ext != ".cpp" && ext != ".h") ||
                entry.path().parent_path().filename() == "modules")
                continue;
            std::stringstream in;
            in << std::ifstream(entry.path()).rdbuf();
            const std::string text = in.str();
            for (std::sregex_iterator m(text.begin(), text.end(), definition), end; m != end; ++m)
                if (IsTextNumber(std::stoi((*m)[2]))) constants[(*m)[1]] = std::stoi((*m)[2]);
            for (std::sregex_iterator m(text.begin(), text.end(), call), end; m != end; ++m)
                asked.insert(std::stoi((*m)[1]));
            for (std::sregex_iterator m(text.begin(), text.end(), word), end; m != end; ++m)
                if (!(*m)[2].matched) named.insert((*m)[1]);
        }
    for (const auto& [name, id] : constants)
        if (named.contains(name)) asked.insert(id);
    return asked;
}

TEST(LanguageModules, EveryNumberAskedForAndTheWholeTableAreInEachModuleEnglishAsThePackages) {
    std::set<int> asked = NumbersAskedFor();
    // The scan finds the host's, the experts' and the lower layers' numbers.
    for (int id : {SExpertsSettings, SLabelMaxLogSize, SViewCPUItem, SNegativeFileSize, 50514})
        EXPECT_TRUE(asked.count(id)) << id;
    for (const char* name : kModules) {
        TModuleTexts module(name);
        ASSERT_TRUE(module.Loaded()) << name;
        for (int id : asked) {
            EXPECT_FALSE(PackageResStr(id).empty()) << id;
            EXPECT_FALSE(module.Text(id).empty()) << name << " " << id;
        }
    }
    // Each module holds the whole table; English is the package's own.
    TModuleTexts english("zelv_eng.dll"), russian("zelv_rus.dll"), german("zelv_ger.dll");
    std::vector<std::pair<int, std::string>> table = PackageResStrings();
    ASSERT_GT(table.size(), 100u);
    for (const auto& [id, text] : table) {
        EXPECT_EQ(english.Text(id), text) << id;
        EXPECT_FALSE(russian.Text(id).empty()) << id;
        EXPECT_FALSE(german.Text(id).empty()) << id;
    }
    // Names are not translated.
    for (int id = 65521; id <= 65528; ++id) {
        EXPECT_EQ(russian.Text(id), PackageResStr(id)) << id;
        EXPECT_EQ(german.Text(id), PackageResStr(id)) << id;
    }
}

TEST(LanguageModules, TheirTextsReachTheAddinInItsCodePage) {
    struct TCase {
        const char* Module;
        int Id;
        const char* Utf8;
    };
    const TCase cases[] = {
        {"zelv_rus.dll", SExpertsMenu, "Меню экспертов"},
        {"zelv_ger.dll", SExpertsMenu, "Expertenmenue"},
        {"zelv_ger.dll", SNegativeFileSize,
         "Die neue Dateigroesse darf nicht kleiner als null sein."},
        {"zelv_ger.dll", 50520, "Eine Eigenschaft mit dem Namen „%s“ gibt es nicht."},
        {"zelv_eng.dll", SLabelItemCaption, "menu item’s text"},
    };
    for (const TCase& c : cases) {
        LoadNewLanguage(ModulePath(c.Module));
        EXPECT_EQ(LocaleStr(c.Id), rtl::Utf8ToCp1251(c.Utf8)) << c.Module << " " << c.Id;
    }
    // Each module names the languages in its own language.
    LoadNewLanguage(ModulePath("zelv_rus.dll"));
    EXPECT_EQ(TExpManager::TranslateLangName("German"), rtl::Utf8ToCp1251("Немецкий"));
    EXPECT_EQ(TExpManager::RetranslateLangName(rtl::Utf8ToCp1251("Русский")), "Russian");
    LoadNewLanguage(ModulePath("zelv_ger.dll"));
    EXPECT_EQ(TExpManager::TranslateLangName("English"), "Englisch");
    EXPECT_EQ(TExpManager::TranslateLangName("Klingon"), "Klingon");
    LoadNewLanguage("");
    // Letters the code page lacks, beyond German's.
    EXPECT_EQ(HostText("caf\xC3\xA9 \xE4\xB8\xAD", CodePageUtf8), "cafe ?");
    EXPECT_EQ(HostText("\xE4\xF6", CodePage1251), "\xE4\xF6");
}

} // namespace
