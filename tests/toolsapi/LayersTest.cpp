// The layers of the tree: each directory includes only what stands above it. The core's layers
// (runtime, foundation, persistence, specification) include only those before them and no Qt;
// the core never includes the add-in's or the host's code; one expert never includes another;
// the settings editor knows neither the host layer nor the workbench.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

fs::path SourceDir() {
    const char* dir = std::getenv("ZELVANE_SOURCE_DIR");
    return dir ? fs::path(dir) : fs::current_path();
}

struct TInclude {
    std::string File, Target;
};

// Every #include of the sources under the directory.
std::vector<TInclude> Includes(const fs::path& dir) {
    static const std::regex include(R"(^\s*#\s*include\s*[<"]([^>"]+)[>"])");
    std::vector<TInclude> found;
    if (!fs::exists(dir)) return found;
    for (const auto& e : fs::recursive_directory_iterator(dir)) {
        std::string ext = e.path().extension().string();
        if (ext != ".h" && ext != ".cpp") continue;
        std::ifstream in(e.path());
        std::smatch m;
        for (std::string line; std::getline(in, line);)
            if (std::regex_search(line, m, include))
                found.push_back({fs::relative(e.path(), SourceDir()).string(), m[1]});
    }
    return found;
}

bool IsQt(const std::string& target) {
    return target.size() > 1 && target[0] == 'Q' && std::isupper(static_cast<unsigned char>(target[1]));
}

bool StartsWith(const std::string& s, const std::string& prefix) {
    return s.rfind(prefix, 0) == 0;
}

TEST(Layers, EachDirectoryIncludesOnlyTheLayersAboveIt) {
    const std::vector<std::string> core = {"rtl", "foundation", "persistence", "specification"};
    const std::vector<std::string> addin = {"host/", "editor/", "experts/", "locale/", "about/"};
    struct TRule {
        std::string Dir;
        bool NoQt;
        std::vector<std::string> Forbidden;
    };
    std::vector<TRule> rules;
    // The core in its order: each of its layers includes only those before it.
    for (size_t i = 0; i < core.size(); ++i) {
        std::vector<std::string> forbidden = addin;
        forbidden.insert(forbidden.end(), {"toolsapi/", "workbench/"});
        for (size_t later = i + 1; later < core.size(); ++later)
            forbidden.push_back(core[later] + "/");
        rules.push_back({core[i], true, forbidden});
    }
    rules.push_back({"toolsapi", false, {"host/", "editor/", "experts/", "workbench/"}});
    rules.push_back({"editor", false, {"host/", "experts/", "workbench/"}});
    for (const char* dir : {"host", "locale", "about", "experts"})
        rules.push_back({dir, false, {"workbench/", "tests/"}});
    // One expert never includes another.
    for (const auto& e : fs::directory_iterator(SourceDir() / "experts")) {
        std::vector<std::string> others;
        for (const auto& o : fs::directory_iterator(SourceDir() / "experts"))
            if (o.path() != e.path()) others.push_back("experts/" + o.path().filename().string() + "/");
        rules.push_back({"experts/" + e.path().filename().string(), false, others});
    }

    int checked = 0;
    for (const TRule& rule : rules)
        for (const TInclude& inc : Includes(SourceDir() / rule.Dir)) {
            ++checked;
            EXPECT_FALSE(rule.NoQt && IsQt(inc.Target)) << inc.File << " includes " << inc.Target;
            for (const std::string& f : rule.Forbidden)
                EXPECT_FALSE(StartsWith(inc.Target, f)) << inc.File << " includes " << inc.Target;
        }
    // The rules reached the tree.
    EXPECT_GT(checked, 200);
}

} // namespace
