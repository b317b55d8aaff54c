// What a language module is: a shared object with a string table by number, in the shape of the
// platform's LoadString. It exports
//
//     extern "C" int ZelvaneLoadString(int id, char* buffer, int bufferSize);
//
// which copies the text of the number (Windows-1251, cut to the buffer and ended with a zero) and
// gives its length, 0 when it has none. A module is one line over a table of its texts:
//
//     static const zelvane::TResStringEntry kTexts[] = {{51120, "..."}, ...};
//     ZELVANE_LANGUAGE_MODULE(kTexts)
#pragma once

#include "foundation/ResStrings.h"

#include <cstring>
#include <span>

namespace zelvane {

inline constexpr const char* LoadStringProcName = "ZelvaneLoadString";
using TLoadStringProc = int (*)(int id, char* buffer, int bufferSize);

// The body of ZelvaneLoadString over a table.
inline int LoadStringFrom(std::span<const TResStringEntry> table, int id, char* buffer,
                          int bufferSize) {
    if (!buffer || bufferSize <= 0) return 0;
    for (const TResStringEntry& e : table) {
        if (e.Id != id || !e.Text) continue;
        int length = static_cast<int>(std::strlen(e.Text));
        if (length > bufferSize - 1) length = bufferSize - 1;
        std::memcpy(buffer, e.Text, static_cast<size_t>(length));
        buffer[length] = '\0';
        return length;
    }
    buffer[0] = '\0';
    return 0;
}

} // namespace zelvane

#define ZELVANE_LANGUAGE_MODULE(table)                                                             \
    extern "C" __attribute__((visibility("default"))) int ZelvaneLoadString(int id, char* buffer,  \
                                                                            int bufferSize) {      \
        return ::zelvane::LoadStringFrom(table, id, buffer, bufferSize);                           \
    }
