// The objconv command-line tool: conversions between the forms, detection, checking, and its
// exit statuses and messages.
#include "TestSupport.h"

#include <sys/wait.h>

namespace fs = std::filesystem;
using namespace rtltest;

namespace {

fs::path BinaryDir() {
    if (const char* s = std::getenv("ZELVANE_BINARY_DIR")) return s;
    return fs::canonical("/proc/self/exe").parent_path().parent_path();
}

class ObjconvTool : public ::testing::Test {
protected:
    void SetUp() override {
        tool_ = BinaryDir() / "tools" / "objconv";
        ASSERT_TRUE(fs::exists(tool_)) << tool_ << " is not built";
        dir_ = BinaryDir() / "objconv-test";
        fs::create_directories(dir_);
    }

    // Runs the tool with the arguments; returns its exit status, with stdout and stderr.
    int Run(const std::string& args, std::string* out = nullptr, std::string* err = nullptr) {
        fs::path o = dir_ / "stdout", e = dir_ / "stderr";
        std::string cmd = tool_.string() + " " + args + " > " + o.string() + " 2> " + e.string();
        int rc = std::system(cmd.c_str());
        if (out) *out = ReadFile(o);
        if (err) *err = ReadFile(e);
        return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    }

    fs::path Corpus(const char* name) { return CorpusDir() / name; }

    fs::path tool_, dir_;
};

TEST_F(ObjconvTool, ConvertsBetweenTheThreeForms) {
    fs::path text = Corpus("form.txt");
    fs::path bin = dir_ / "form.dfm", res = dir_ / "form.res", back = dir_ / "back.txt";
    ASSERT_EQ(Run(text.string() + " " + bin.string()), 0);
    EXPECT_EQ(ReadFile(bin).substr(0, 4), "TPF0");
    ASSERT_EQ(Run("--to=resource " + bin.string() + " -o " + res.string()), 0);
    EXPECT_EQ(static_cast<unsigned char>(ReadFile(res)[0]), 0xFF);
    ASSERT_EQ(Run(res.string() + " " + back.string()), 0);
    EXPECT_EQ(ReadFile(back), ReadFile(text));
    std::string out;
    ASSERT_EQ(Run("-t text " + bin.string(), &out), 0);
    EXPECT_EQ(out, ReadFile(text));
}

TEST_F(ObjconvTool, DetectsAndChecks) {
    std::string out, err;
    EXPECT_EQ(Run("--detect " + Corpus("common.txt").string(), &out), 0);
    EXPECT_EQ(out, "text\n");
    fs::path bin = dir_ / "two.bin";
    WriteFile(dir_ / "two.txt", ReadFile(Corpus("form.txt")) + ReadFile(Corpus("common.txt")));
    ASSERT_EQ(Run((dir_ / "two.txt").string() + " " + bin.string()), 0);
    EXPECT_EQ(Run("-d " + bin.string(), &out), 0);
    EXPECT_EQ(out, "binary\n");
    EXPECT_EQ(Run("--check " + bin.string(), &out, &err), 0);
    EXPECT_EQ(err, bin.string() + ": 2 objects in binary form\n");
    WriteFile(dir_ / "junk", "hello");
    EXPECT_EQ(Run("-d " + (dir_ / "junk").string(), &out), 0);
    EXPECT_EQ(out, "unknown\n");
}

TEST_F(ObjconvTool, BadInputFailsWithAOneLineReason) {
    std::string out, err;
    WriteFile(dir_ / "bad.txt", "object A: T\r\n  X = (\r\n");
    EXPECT_EQ(Run((dir_ / "bad.txt").string(), &out, &err), 1);
    EXPECT_EQ(err, "objconv: " + (dir_ / "bad.txt").string() +
                       ": EParserError: Invalid property value on line 3\n");
    EXPECT_EQ(out, "");
    WriteFile(dir_ / "cut.dfm", "TPF0\x06TForm1\x05"
                                "Form1\x04Left\x02");
    EXPECT_EQ(Run((dir_ / "cut.dfm").string(), &out, &err), 1);
    EXPECT_EQ(err, "objconv: " + (dir_ / "cut.dfm").string() + ": EReadError: Stream read error\n");
    WriteFile(dir_ / "junk", "hello");
    EXPECT_EQ(Run((dir_ / "junk").string(), &out, &err), 1);
    EXPECT_EQ(err, "objconv: " + (dir_ / "junk").string() + ": not an object stream\n");
    EXPECT_EQ(Run((dir_ / "missing").string(), &out, &err), 1);
    EXPECT_NE(err.find("cannot open"), std::string::npos);
}

TEST_F(ObjconvTool, CommandLine) {
    std::string out, err;
    EXPECT_EQ(Run("--help", &out), 0);
    EXPECT_EQ(out.rfind("Usage: objconv", 0), 0u);
    for (auto [args, reason] : {std::pair{"", "no input file"},
                                {"--bogus x", "unknown option '--bogus'"},
                                {"--to=pdf x", "unknown form 'pdf'"}}) {
        EXPECT_EQ(Run(args, &out, &err), 2) << args;
        EXPECT_NE(err.find(reason), std::string::npos) << err;
    }
}

} // namespace
