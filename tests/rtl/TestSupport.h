// Helpers shared by the runtime library's tests: raw bytes, Windows-1251 text, object streams
// in both forms, files and a scratch directory.
#pragma once

#include "rtl/CodePage.h"
#include "rtl/Filer.h"
#include "rtl/Lists.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"
#include "tests/interop/FileBytes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace rtltest {

using V = std::vector<std::string>;

// Runs f and returns the message of the E it raises; a test failure when it raises none.
template <class E, class F> std::string MessageOf(F&& f) {
    try {
        f();
    } catch (const E& e) {
        return e.Message();
    }
    ADD_FAILURE() << "no exception raised";
    return {};
}

// A string of the given byte values.
inline std::string Bytes(std::initializer_list<int> b) {
    std::string s;
    for (int x : b)
        s.push_back(static_cast<char>(x));
    return s;
}

// Windows-1251 text from UTF-8 source.
inline std::string W(const char* utf8) {
    return rtl::Utf8ToCp1251(utf8);
}

// The lines of a string list.
inline V Lines(const rtl::TStrings& s) {
    V r;
    for (int i = 0; i < s.Count(); ++i)
        r.push_back(s[i]);
    return r;
}

// What f writes through a buffered writer.
template <class F> std::string Written(F f) {
    rtl::TStringStream s;
    {
        rtl::TWriter w(&s, 4096);
        f(w);
    }
    return s.DataString();
}

inline std::string ToText(const std::string& binary) {
    rtl::TStringStream in(binary), out;
    rtl::ObjectBinaryToText(&in, &out);
    return out.DataString();
}

inline std::string ToBinary(const std::string& text) {
    rtl::TStringStream in(text), out;
    rtl::ObjectTextToBinary(&in, &out);
    return out.DataString();
}

using interop::ReadFile;
using interop::WriteFile;

// The directory of object streams both this runtime and Free Pascal's convert.
inline std::filesystem::path CorpusDir() {
    if (const char* s = std::getenv("ZELVANE_SOURCE_DIR"))
        return std::filesystem::path(s) / "tests" / "interop" / "corpus";
    return std::filesystem::path(__FILE__).parent_path().parent_path() / "interop" / "corpus";
}

// A fresh directory under /tmp, removed with everything in it when the test ends.
class TempDirTest : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/rtl_test_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir = tmpl;
    }
    void TearDown() override {
        std::error_code ec;
        std::filesystem::permissions(dir, std::filesystem::perms::owner_all, ec);
        std::filesystem::remove_all(dir, ec);
    }
    std::string Path(const std::string& name) const { return dir + "/" + name; }
    std::string dir;
};

} // namespace rtltest
