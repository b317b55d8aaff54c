// Helpers shared by the foundation's tests: scratch files, and string lists written as one text
// with their lines joined by "|".
#pragma once

#include "rtl/Lists.h"
#include "tests/interop/FileBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

namespace foundationtest {

// A scratch file's name of its own for this test program.
inline std::string TempName(const std::string& name) {
    return ::testing::TempDir() + "zelv_" + std::to_string(getpid()) + "_" + name;
}

using interop::ReadFile;
using interop::WriteFile;

// The lines of a list joined by "|".
inline std::string Joined(rtl::TStrings* l) {
    std::string r;
    for (int i = 0; i < l->Count(); ++i)
        r += (i ? "|" : "") + l->Strings(i);
    return r;
}

// Fills the list with the lines given joined by "|"; "" is no line at all.
inline void Fill(rtl::TStrings* l, const std::string& joined) {
    l->Clear();
    for (size_t from = 0, to = 0; !joined.empty() && to != std::string::npos; from = to + 1) {
        to = joined.find('|', from);
        l->Add(joined.substr(from, to - from));
    }
}

} // namespace foundationtest
