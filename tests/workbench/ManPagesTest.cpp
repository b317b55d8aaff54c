// The manual pages say what the programs' --help says: every long option of a program's help
// stands in its page.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string Dir(const char* variable) {
    const char* dir = std::getenv(variable);
    return dir ? dir : ".";
}

std::string Output(const std::string& command) {
    std::string out;
    if (FILE* p = popen((command + " 2>/dev/null").c_str(), "r")) {
        std::array<char, 4096> buffer;
        while (size_t n = fread(buffer.data(), 1, buffer.size(), p))
            out.append(buffer.data(), n);
        pclose(p);
    }
    return out;
}

std::set<std::string> LongOptions(const std::string& help) {
    static const std::regex option(R"(--([a-z][a-z-]*))");
    std::set<std::string> found;
    for (std::sregex_iterator i(help.begin(), help.end(), option), end; i != end; ++i)
        found.insert((*i)[1]);
    return found;
}

TEST(ManPages, EveryOptionOfTheHelpStandsInThePage) {
    const std::pair<std::string, std::string> programs[] = {
        {Dir("ZELVANE_BINARY_DIR") + "/tools/objconv --help", "objconv.1"},
        {"QT_QPA_PLATFORM=offscreen " + Dir("ZELVANE_BINARY_DIR") + "/bin/workbench --help",
         "workbench.1"},
    };
    for (const auto& [command, page] : programs) {
        SCOPED_TRACE(page);
        std::set<std::string> options = LongOptions(Output(command));
        ASSERT_GE(options.size(), 4u) << command;
        std::ifstream in(Dir("ZELVANE_SOURCE_DIR") + "/packaging/" + page);
        std::stringstream text;
        text << in.rdbuf();
        // The page writes each hyphen as "\-".
        std::string unescaped = std::regex_replace(text.str(), std::regex(R"(\\-)"), "-");
        for (const std::string& o : options)
            EXPECT_NE(unescaped.find("--" + o), std::string::npos) << "--" << o;
    }
}

} // namespace
