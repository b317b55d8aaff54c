// The layers of the tree: each directory includes only what stands above it. The core's layers
// (runtime, foundation, persistence, specification) include no Qt, and only those before them;
// the core never includes the add-in's or the host's code; one expert never includes another;
// the settings editor knows neither the host layer nor the experts nor the workbench. And no two
// directories include each other, directly or around a ring.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
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

// A Qt header in any of its spellings: <QWidget>, <QtWidgets/QWidget>, <QtCore>, <qglobal.h>.
bool IsQt(const std::string& target) {
    auto upper = [&](size_t i) {
        return i < target.size() && std::isupper(static_cast<unsigned char>(target[i]));
    };
    bool module = target.rfind("Qt", 0) == 0 && upper(2);
    bool lower = target.size() > 3 && target[0] == 'q' && target.find('/') == std::string::npos &&
                 target.ends_with(".h");
    return (target[0] == 'Q' && upper(1)) || module || lower;
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
            if (o.path() != e.path())
                others.push_back("experts/" + o.path().filename().string() + "/");
        rules.push_back({"experts/" + e.path().filename().string(), false, others});
    }

    int checked = 0;
    for (const TRule& rule : rules)
        for (const TInclude& inc : Includes(SourceDir() / rule.Dir)) {
            ++checked;
            EXPECT_FALSE(rule.NoQt && IsQt(inc.Target)) << inc.File << " includes " << inc.Target;
            for (const std::string& f : rule.Forbidden)
                EXPECT_FALSE(inc.Target.starts_with(f)) << inc.File << " includes " << inc.Target;
        }
    // The rules reached the tree.
    EXPECT_GT(checked, 200);
}

TEST(Layers, NoTwoDirectoriesIncludeEachOther) {
    // The package's entry registers every expert: it is the one file that may see them all, and
    // it is built into the add-in module alone, after the libraries of every layer.
    const std::set<std::string> entryPoints = {"host/Register.cpp"};
    std::map<std::string, std::set<std::string>> edges;
    for (const char* dir : {"rtl", "foundation", "persistence", "specification", "toolsapi",
                            "editor", "host", "experts", "locale", "about", "workbench", "tools"})
        for (const TInclude& inc : Includes(SourceDir() / dir)) {
            // The directories of the file and of what it includes ("workbench/model").
            std::string from = fs::path(inc.File).parent_path().string(),
                        to = fs::path(inc.Target).parent_path().string();
            if (!entryPoints.contains(inc.File) && !to.empty() && to != from &&
                fs::is_directory(SourceDir() / to))
                edges[from].insert(to);
        }
    ASSERT_GT(edges.size(), 10u);

    // Depth first; a directory met again while it is on the path closes a ring.
    std::map<std::string, int> state; // 1 on the path, 2 done
    std::vector<std::string> path;
    std::function<void(const std::string&)> visit = [&](const std::string& dir) {
        state[dir] = 1;
        path.push_back(dir);
        for (const std::string& next : edges[dir]) {
            if (state[next] == 1) {
                std::string ring;
                for (auto it = std::find(path.begin(), path.end(), next); it != path.end(); ++it)
                    ring += *it + " -> ";
                ADD_FAILURE() << "include cycle: " << ring << next;
            } else if (state[next] == 0) {
                visit(next);
            }
        }
        path.pop_back();
        state[dir] = 2;
    };
    for (const auto& [dir, targets] : edges)
        if (state[dir] == 0) visit(dir);
}

} // namespace
