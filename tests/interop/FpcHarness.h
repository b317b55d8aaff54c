// The Free Pascal side of the object stream interoperability tests, shared by the suites that
// exchange streams with Free Pascal's Classes unit: the converter tests/interop/fpconv.pas,
// compiled at test time, and the listing of a binary stream's values that its "dump" mode gives,
// made with our TReader for comparison.
#pragma once

#include "tests/interop/FileBytes.h"

#include "rtl/Filer.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace interop {

using namespace rtl;
namespace fs = std::filesystem;

inline fs::path SourceDir() {
    if (const char* s = std::getenv("ZELVANE_SOURCE_DIR")) return s;
    return fs::path(__FILE__).parent_path().parent_path().parent_path();
}

inline fs::path BinaryDir() {
    if (const char* s = std::getenv("ZELVANE_BINARY_DIR")) return s;
    // The test executable lives in <build>/tests.
    return fs::canonical("/proc/self/exe").parent_path().parent_path();
}

inline std::string Hex(const void* data, size_t n) {
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
        while (!r_.EndOfList())
            Object(ind + "  ");
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
            while (!r_.EndOfList())
                Value(ind + "  ");
            r_.ReadListEnd();
            Add(ind + "end");
            break;
        case vaInt8:
        case vaInt16:
        case vaInt32:
        case vaInt64:
            Add(ind + tag + " " + std::to_string(r_.ReadInt64()));
            break;
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
        case vaWString: {
            std::u16string w = r_.ReadWideString();
            Add(ind + tag + " " + Hex(w.data(), w.size() * 2));
            break;
        }
        case vaIdent:
            Add(ind + tag + " " + r_.ReadIdent());
            break;
        case vaUTF8String: // a length of four bytes and the bytes, as binary data
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
            for (std::string s; !(s = r_.ReadStr()).empty();)
                names += (names.empty() ? "" : ",") + s;
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
        default:
            FAIL() << "unexpected tag " << int(v);
        }
    }

    TReader& r_;
};

inline std::string OurDump(const std::string& binary) {
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
inline std::string OurConvert(const std::string& mode, const std::string& data) {
    TStringStream in(data), out;
    while (in.GetPosition() < in.GetSize()) {
        if (mode == "b2t")
            ObjectBinaryToText(&in, &out);
        else if (mode == "t2b")
            ObjectTextToBinary(&in, &out);
        else if (mode == "r2t")
            ObjectResourceToText(&in, &out);
        else
            ObjectTextToResource(&in, &out);
    }
    return out.DataString();
}

inline std::string Lf(std::string s) {
    std::string r;
    for (char c : s)
        if (c != '\r') r += c;
    return r;
}

// fpconv, compiled once per test suite into a directory of the build tree of its own.
class FpcConverter {
public:
    // Compiles the converter into <build>/<dirName>. Without fpc, SkipReason says so; when it
    // doesn't compile, CompileError holds the compiler's output.
    void Prepare(const std::string& dirName) {
        if (std::system("command -v fpc >/dev/null 2>&1") != 0) {
            SkipReason = "Free Pascal (fpc) is not installed; the interoperability cases "
                         "with its Classes unit are skipped";
            return;
        }
        dir_ = BinaryDir() / dirName;
        fs::create_directories(dir_ / "work");
        fs::path src = SourceDir() / "tests" / "interop" / "fpconv.pas";
        tool_ = dir_ / "fpconv";
        std::string cmd = "fpc -O2 -v0 -FU" + dir_.string() + " -FE" + dir_.string() + " -o" +
                          tool_.string() + " " + src.string() + " > " +
                          (dir_ / "fpc.log").string() + " 2>&1";
        if (std::system(cmd.c_str()) != 0 || !fs::exists(tool_))
            CompileError =
                "fpc could not compile " + src.string() + ":\n" + ReadFile(dir_ / "fpc.log");
    }

    // Runs fpconv on input (a file's contents) and returns what it wrote.
    std::string Run(const std::string& mode, const std::string& input) {
        std::string base = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::path in = dir_ / "work" / (base + "." + mode + ".in");
        fs::path out = dir_ / "work" / (base + "." + mode + ".out");
        WriteFile(in, input);
        fs::remove(out);
        std::string cmd = tool_.string() + " " + mode + " " + in.string() + " " + out.string() +
                          " 2> " + (dir_ / "work" / (base + ".err")).string();
        int rc = std::system(cmd.c_str());
        EXPECT_EQ(rc, 0) << "fpconv " << mode
                         << " failed: " << ReadFile(dir_ / "work" / (base + ".err"));
        return ReadFile(out);
    }

    // The component tree that fpconv's "gen" writes with Free Pascal's TWriter.
    std::string Generate() {
        fs::path out = dir_ / "work" / "generated.bin";
        std::string cmd = tool_.string() + " gen " + out.string();
        EXPECT_EQ(std::system(cmd.c_str()), 0);
        return ReadFile(out);
    }

    std::string SkipReason;
    std::string CompileError;

private:
    fs::path dir_;
    fs::path tool_;
};

} // namespace interop
