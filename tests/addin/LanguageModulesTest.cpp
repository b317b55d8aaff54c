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

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
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

bool IsWordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// The number written at pos, skipping blanks; -1 when there is none.
int NumberAt(const std::string& text, size_t pos) {
    while (pos < text.size() && text[pos] == ' ')
        ++pos;
    size_t end = pos;
    while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])))
        ++end;
    return end > pos && end - pos < 7 ? std::stoi(text.substr(pos, end - pos)) : -1;
}

// Whether the text names the identifier other than in its definition "name = number".
bool Names(const std::string& text, const std::string& name) {
    for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
        size_t after = at + name.size();
        if ((at > 0 && IsWordChar(text[at - 1])) || (after < text.size() && IsWordChar(text[after])))
            continue;
        size_t next = text.find_first_not_of(' ', after);
        if (next != std::string::npos && text[next] == '=' && NumberAt(text, next + 1) >= 0)
            continue;
        return true;
    }
    return false;
}

// The numbers the add-in's sources ask for: a constant of a text number that some line other than
// its definition names, and a number written straight into a call of the string table.
std::set<int> NumbersAskedFor() {
    std::vector<std::string> sources;
    std::filesystem::path root = std::getenv("ZELVANE_SOURCE_DIR");
    for (const char* dir : {"host", "experts", "about", "locale", "foundation", "persistence",
                            "specification", "editor"}) {
        if (!std::filesystem::exists(root / dir)) continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root / dir)) {
            std::string ext = entry.path().extension().string();
            if (ext != ".cpp" && ext != ".h") continue;
            if (entry.path().parent_path().filename() == "modules") continue;
            std::stringstream text;
            text << std::ifstream(entry.path()).rdbuf();
            sources.push_back(text.str());
        }
    }
    std::map<std::string, int> constants;
    std::set<int> asked;
    for (const std::string& text : sources) {
        const std::string definition = "constexpr int ";
        for (size_t at = text.find(definition); at != std::string::npos;
             at = text.find(definition, at + 1)) {
            size_t name = at + definition.size(), end = name;
            while (end < text.size() && IsWordChar(text[end]))
                ++end;
            size_t equals = text.find_first_not_of(' ', end);
            if (equals == std::string::npos || text[equals] != '=') continue;
            int id = NumberAt(text, equals + 1);
            if (IsTextNumber(id)) constants[text.substr(name, end - name)] = id;
        }
        for (const std::string call : {"LocaleStr(", "ResStr("})
            for (size_t at = text.find(call); at != std::string::npos; at = text.find(call, at + 1))
                if (int id = NumberAt(text, at + call.size()); id >= 0) asked.insert(id);
    }
    for (const auto& [name, id] : constants)
        for (const std::string& text : sources)
            if (Names(text, name)) asked.insert(id);
    return asked;
}

TEST(LanguageModules, EveryNumberTheSourcesAskForIsInThePackageAndInEachModule) {
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
}

TEST(LanguageModules, EachModuleHoldsTheWholeTableAndEnglishIsThePackagesOwn) {
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
        {"zelv_rus.dll", SUnitManagerItem, "Менеджер модулей"},
        {"zelv_ger.dll", SExpertsMenu, "Expertenmenue"},
        {"zelv_ger.dll", SNegativeFileSize, "Die neue Dateigroesse darf nicht kleiner als null sein."},
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
