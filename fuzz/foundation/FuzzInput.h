// Turns fuzzer bytes into lines of text: split at LF, with CR kept where it stands, so that
// every byte value reaches the code under test.
#pragma once

#include "rtl/Lists.h"

#include <cstddef>
#include <cstdint>
#include <string>

inline void FuzzLines(const uint8_t* data, size_t size, rtl::TStrings* lines) {
    std::string line;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\n') {
            lines->Add(line);
            line.clear();
        } else {
            line += static_cast<char>(data[i]);
        }
    }
    lines->Add(line);
}
