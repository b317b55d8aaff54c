// Feeds arbitrary bytes to the binary reader through the converters: a binary object stream
// (or one in a resource header) becomes text. Whatever the bytes, the conversion either
// succeeds or raises the runtime's exception; and text that came out converts back to binary
// and to the same text again.
#include "rtl/Filer.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace rtl;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string input(reinterpret_cast<const char*>(data), size);
    TStringStream in(input), text;
    try {
        if (size > 0 && data[0] == 0xFF) ObjectResourceToText(&in, &text);
        else ObjectBinaryToText(&in, &text);
    } catch (const Exception&) {
        return 0;
    }
    // Floats that aren't finite have no text form that reads back as a float.
    const std::string& t = text.DataString();
    if (t.find("NAN") != std::string::npos || t.find("INF") != std::string::npos) return 0;
    TStringStream textIn(t), binary, again;
    try {
        ObjectTextToBinary(&textIn, &binary);
        binary.SetPosition(0);
        ObjectBinaryToText(&binary, &again);
    } catch (const EParserError&) {
        // Property and class names are written as they stand; one that isn't an identifier
        // makes text that doesn't parse.
        return 0;
    } catch (const Exception&) {
        std::abort();
    }
    if (again.DataString() != t) std::abort();
    return 0;
}
