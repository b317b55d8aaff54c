// What a language module is: a shared object with a string table by number, in the shape of the
// platform's LoadString. It exports
//
//     extern "C" int ZelvaneLoadString(int id, char* buffer, int bufferSize);
//
// which copies the text of the number (cut to the buffer and ended with a zero) and gives its
// length, 0 when it has none. The texts are in the module's code page, which it may tell through
//
//     extern "C" int ZelvaneCodePage();
//
// 1251 (Windows-1251, the add-in's own) when it doesn't, or 65001 (UTF-8): a language whose
// letters Windows-1251 lacks keeps them in its module, and the add-in takes from them what its
// code page can show (see locale/Locale.h). A module is one line over a table of its texts:
//
//     static const zelvane::TResStringEntry kTexts[] = {{51120, "..."}, ...};
//     ZELVANE_LANGUAGE_MODULE(kTexts)                  // Windows-1251
//     ZELVANE_LANGUAGE_MODULE_CP(kTexts, CodePageUtf8) // UTF-8
#pragma once

#include "foundation/ResStrings.h"

#include <cstring>
#include <span>

namespace zelvane {

inline constexpr const char* LoadStringProcName = "ZelvaneLoadString";
using TLoadStringProc = int (*)(int id, char* buffer, int bufferSize);
inline constexpr const char* CodePageProcName = "ZelvaneCodePage";
using TCodePageProc = int (*)();

inline constexpr int CodePage1251 = 1251;
inline constexpr int CodePageUtf8 = 65001;

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

#define ZELVANE_LANGUAGE_MODULE_CP(table, codePage)                                                \
    ZELVANE_LANGUAGE_MODULE(table)                                                                 \
    extern "C" __attribute__((visibility("default"))) int ZelvaneCodePage() { return codePage; }
