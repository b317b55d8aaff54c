// Object streams exchanged with Free Pascal's Classes unit, the independent implementation of
// the platform's formats: a small converter program (tests/interop/fpconv.pas) is compiled at
// test time, and streams written by one side are read by the other.
#include "rtl/CodePage.h"
#include "rtl/Filer.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace rtl;
namespace fs = std::filesystem;

namespace {

std::string ReadFile(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

void WriteFile(const fs::path& p, const std::string& data) {
    std::ofstream f(p, std::ios::binary);
    f << data;
}

fs::path SourceDir() {
    if (const char* s = std::getenv("ZELVANE_SOURCE_DIR")) return s;
    return fs::path(__FILE__).parent_path().parent_path().parent_path();
}

fs::path BinaryDir() {
    if (const char* s = std::getenv("ZELVANE_BINARY_DIR")) return s;
    // The test executable lives in <build>/tests.
    return fs::canonical("/proc/self/exe").parent_path().parent_path();
}

std::string Hex(const void* data, size_t n) {
    static const char digits[] = "0123456789ABCDEF";
    std::string s;
    auto* p = static_cast<const uint8_t*>(data);
    for (size_t i = 0; i < n; ++i) {
        s += digits[p[i] >> 4];
        s += digits[p[i] & 15];
    }
    return s;
}

// The same listing of a binary stream's values as fpconv's "dump", read with our TReader.
class Dumper {
public:
    explicit Dumper(TReader& r) : r_(r) {}
    std::string lines;

    void Object(const std::string& ind) {
        TFilerFlags flags;
        int32_t childPos = 0;
        r_.ReadPrefix(flags, childPos);
        std::string cls = r_.ReadStr();
        std::string name = r_.ReadStr();
        Add(ind + "object " + std::to_string(flags) + " " + std::to_string(childPos) + " " + cls +
            " " + name);
        while (!r_.EndOfList()) {
            Add(ind + "  prop " + r_.ReadStr());
            Value(ind + "    ");
        }
        r_.ReadListEnd();
        while (!r_.EndOfList()) Object(ind + "  ");
        r_.ReadListEnd();
        Add(ind + "end");
    }

private:
    void Add(const std::string& s) { lines += s + "\n"; }

    void Value(const std::string& ind) {
        TValueType v = r_.NextValue();
        std::string tag = ValueTypeName(v);
        switch (v) {
        case vaNull:
        case vaFalse:
        case vaTrue:
        case vaNil:
            r_.ReadValue();
            Add(ind + tag);
            break;
        case vaList:
            r_.ReadValue();
            Add(ind + tag);
            while (!r_.EndOfList()) Value(ind + "  ");
            r_.ReadListEnd();
            Add(ind + "end");
            break;
        case vaInt8:
        case vaInt16:
        case vaInt32:
        case vaInt64: Add(ind + tag + " " + std::to_string(r_.ReadInt64())); break;
        case vaExtended: {
            uint8_t b[10];
            ExtendedToBytes(r_.ReadFloat(), b);
            Add(ind + tag + " " + Hex(b, 10));
            break;
        }
        case vaSingle: {
            float f = r_.ReadSingle();
            Add(ind + tag + " " + Hex(&f, 4));
            break;
        }
        case vaCurrency: {
            r_.ReadValue();
            int64_t raw;
            r_.Read(&raw, 8);
            Add(ind + tag + " " + std::to_string(raw));
            break;
        }
        case vaDate: {
            double d = r_.ReadDate();
            Add(ind + tag + " " + Hex(&d, 8));
            break;
        }
        case vaString:
        case vaLString: {
            std::string s = r_.ReadString();
            Add(ind + tag + " " + Hex(s.data(), s.size()));
            break;
        }
        case vaUTF8String: {
            r_.ReadValue();
            uint32_t n;
            r_.Read(&n, 4);
            std::string s(n, '\0');
            r_.Read(s.data(), n);
            Add(ind + tag + " " + Hex(s.data(), s.size()));
            break;
        }
        case vaWString: {
            std::u16string w = r_.ReadWideString();
            Add(ind + tag + " " + Hex(w.data(), w.size() * 2));
            break;
        }
        case vaIdent: Add(ind + tag + " " + r_.ReadIdent()); break;
        case vaBinary: {
            r_.ReadValue();
            uint32_t n;
            r_.Read(&n, 4);
            std::string s(n, '\0');
            r_.Read(s.data(), n);
            Add(ind + tag + " " + Hex(s.data(), s.size()));
            break;
        }
        case vaSet: {
            r_.ReadValue();
            std::string names;
            for (std::string s; !(s = r_.ReadStr()).empty();) names += (names.empty() ? "" : ",") + s;
            Add(ind + tag + " " + names);
            break;
        }
        case vaCollection:
            r_.ReadValue();
            Add(ind + tag);
            while (!r_.EndOfList()) {
                std::string order = "-";
                TValueType n = r_.NextValue();
                if (n == vaInt8 || n == vaInt16 || n == vaInt32)
                    order = std::to_string(r_.ReadInteger());
                r_.ReadListBegin();
                Add(ind + "  item " + order);
                while (!r_.EndOfList()) {
                    Add(ind + "    prop " + r_.ReadStr());
                    Value(ind + "      ");
                }
                r_.ReadListEnd();
                Add(ind + "  end");
            }
            r_.ReadListEnd();
            Add(ind + "end");
            break;
        default: FAIL() << "unexpected tag " << int(v);
        }
    }

    TReader& r_;
};

std::string OurDump(const std::string& binary) {
    TStringStream in(binary);
    std::string all;
    while (in.GetPosition() < in.GetSize()) {
        TReader r(&in, 4096);
        r.ReadSignature();
        Dumper d(r);
        d.Object("");
        all += d.lines;
    }
    return all;
}

// Converts every object of data, one call per object, as fpconv does on its side.
std::string OurConvert(const std::string& mode, const std::string& data) {
    TStringStream in(data), out;
    while (in.GetPosition() < in.GetSize()) {
        if (mode == "b2t") ObjectBinaryToText(&in, &out);
        else if (mode == "t2b") ObjectTextToBinary(&in, &out);
        else if (mode == "r2t") ObjectResourceToText(&in, &out);
        else ObjectTextToResource(&in, &out);
    }
    return out.DataString();
}

std::string Lf(std::string s) {
    std::string r;
    for (char c : s)
        if (c != '\r') r += c;
    return r;
}

class FreePascalInterop : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (std::system("command -v fpc >/dev/null 2>&1") != 0) {
            skipReason_ = "Free Pascal (fpc) is not installed; the interoperability cases "
                          "with its Classes unit are skipped";
            return;
        }
        dir_ = BinaryDir() / "interop";
        fs::create_directories(dir_ / "work");
        fs::path src = SourceDir() / "tests" / "interop" / "fpconv.pas";
        tool_ = dir_ / "fpconv";
        std::string cmd = "fpc -O2 -v0 -FU" + dir_.string() + " -FE" + dir_.string() + " -o" +
                          tool_.string() + " " + src.string() + " > " +
                          (dir_ / "fpc.log").string() + " 2>&1";
        if (std::system(cmd.c_str()) != 0 || !fs::exists(tool_))
            compileError_ = "fpc could not compile " + src.string() + ":\n" +
                            ReadFile(dir_ / "fpc.log");
    }

    void SetUp() override {
        if (!skipReason_.empty()) GTEST_SKIP() << skipReason_;
        ASSERT_TRUE(compileError_.empty()) << compileError_;
    }

    // Runs fpconv on input (a file's contents) and returns what it wrote.
    std::string Fpc(const std::string& mode, const std::string& input) {
        std::string base = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::path in = dir_ / "work" / (base + "." + mode + ".in");
        fs::path out = dir_ / "work" / (base + "." + mode + ".out");
        WriteFile(in, input);
        fs::remove(out);
        std::string cmd = tool_.string() + " " + mode + " " + in.string() + " " + out.string() +
                          " 2> " + (dir_ / "work" / (base + ".err")).string();
        int rc = std::system(cmd.c_str());
        EXPECT_EQ(rc, 0) << "fpconv " << mode << " failed: "
                         << ReadFile(dir_ / "work" / (base + ".err"));
        return ReadFile(out);
    }

    std::string FpcGenerate() {
        fs::path out = dir_ / "work" / "generated.bin";
        std::string cmd = tool_.string() + " gen " + out.string();
        EXPECT_EQ(std::system(cmd.c_str()), 0);
        return ReadFile(out);
    }

    static std::string Corpus(const std::string& name) {
        return ReadFile(SourceDir() / "tests" / "interop" / "corpus" / name);
    }

    static inline std::string skipReason_;
    static inline std::string compileError_;
    static inline fs::path dir_;
    static inline fs::path tool_;
};

// Text that both converters handle: every value form of Free Pascal's text converter.
const char* const SharedCorpus[] = {"common.txt", "form.txt"};

TEST_F(FreePascalInterop, FreePascalReadsTheValuesWeWrite) {
    for (const char* name : {"common.txt", "form.txt", "platform.txt"}) {
        SCOPED_TRACE(name);
        std::string ours = OurConvert("t2b", Corpus(name));
        EXPECT_EQ(Fpc("dump", ours), OurDump(ours));
    }
}

TEST_F(FreePascalInterop, WeReadTheComponentStreamsFreePascalWrites) {
    std::string theirs = FpcGenerate();
    ASSERT_FALSE(theirs.empty());
    std::string dump = Fpc("dump", theirs);
    EXPECT_EQ(OurDump(theirs), dump);
    // Nested objects, string lists, collections, defined and binary properties and children
    // all came through.
    for (const char* part : {"prop Look.Size", "prop Lines.Strings", "vaCollection", "prop Blob",
                             "vaSingle", "vaCurrency 123456", "vaDate", "vaWString", "vaInt64",
                             "vaNull", "object 0 0 TWidget Grand"})
        EXPECT_NE(dump.find(part), std::string::npos) << part;
}

TEST_F(FreePascalInterop, FreePascalStreamsRoundTripThroughOurText) {
    std::string theirs = FpcGenerate();
    std::string text = OurConvert("b2t", theirs);
    EXPECT_EQ(OurConvert("t2b", text), theirs);
}

TEST_F(FreePascalInterop, FreePascalParsesOurTextToTheSameBytes) {
    for (const char* name : SharedCorpus) {
        SCOPED_TRACE(name);
        std::string binary = OurConvert("t2b", Corpus(name));
        std::string ourText = OurConvert("b2t", binary);
        EXPECT_EQ(ourText, Corpus(name));
        EXPECT_EQ(Fpc("t2b", ourText), binary);
    }
}

TEST_F(FreePascalInterop, WeParseFreePascalTextAsFreePascalDoes) {
    for (const char* name : SharedCorpus) {
        SCOPED_TRACE(name);
        std::string binary = OurConvert("t2b", Corpus(name));
        std::string theirText = Fpc("b2t", binary);
        ASSERT_FALSE(theirText.empty());
        EXPECT_EQ(OurConvert("t2b", theirText), Fpc("t2b", theirText));
    }
}

TEST_F(FreePascalInterop, TextLayoutMatchesFreePascalWhereTheFormsAgree) {
    // Short strings, integers, identifiers, sets, binary data and nesting come out line for
    // line as Free Pascal writes them (apart from its line ends).
    std::string text = "object Form1: TForm1\r\n"
                       "  Left = 192\r\n"
                       "  Caption = 'It''s'#13#10'x'\r\n"
                       "  Style = [fsBold, fsItalic]\r\n"
                       "  Visible = True\r\n"
                       "  Align = alClient\r\n"
                       "  Wide = 'A'#1046\r\n"
                       "  object Panel1: TPanel\r\n"
                       "    Tag = -3\r\n"
                       "  end\r\n"
                       "  inherited B1: TButton[3]\r\n"
                       "  end\r\n"
                       "end\r\n";
    std::string binary = OurConvert("t2b", text);
    EXPECT_EQ(Lf(OurConvert("b2t", binary)), Fpc("b2t", binary));
}

TEST_F(FreePascalInterop, ResourceFormsAgree) {
    for (const char* name : SharedCorpus) {
        SCOPED_TRACE(name);
        std::string text = Corpus(name);
        std::string ours = OurConvert("t2r", text);
        EXPECT_EQ(ours, Fpc("t2r", text));
        // Free Pascal writes the bytes above 127 of a string as character codes, which both
        // sides then read as a wide string: compare with its own reading of its text.
        std::string theirText = Fpc("r2t", ours);
        EXPECT_EQ(OurConvert("t2b", theirText), Fpc("t2b", theirText));
        EXPECT_EQ(OurDump(OurConvert("t2r", theirText).substr(ours.find("TPF0"))),
                  Fpc("dump", Fpc("t2b", theirText)));
    }
}

TEST_F(FreePascalInterop, SeveralObjectsBackToBack) {
    std::string text = Corpus("form.txt") + Corpus("common.txt") + Corpus("form.txt");
    std::string ours = OurConvert("t2b", text);
    EXPECT_EQ(ours, Fpc("t2b", text));
    EXPECT_EQ(Fpc("dump", ours), OurDump(ours));
    EXPECT_EQ(OurConvert("b2t", ours), text);
}

} // namespace
