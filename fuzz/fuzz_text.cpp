// Feeds arbitrary bytes to the text parser through ObjectTextToBinary. Whatever the bytes, the
// conversion either succeeds or raises the runtime's exception; and what it produced converts
// to text and back to the same text again.
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
    TStringStream in(input), binary;
    try {
        ObjectTextToBinary(&in, &binary);
    } catch (const Exception&) {
        return 0;
    }
    if (in.GetPosition() > in.GetSize()) std::abort();
    binary.SetPosition(0);
    TStringStream text;
    try {
        ObjectBinaryToText(&binary, &text);
    } catch (const Exception&) {
        std::abort(); // what the parser wrote must read
    }
    const std::string& t = text.DataString();
    if (t.find("NAN") != std::string::npos || t.find("INF") != std::string::npos) return 0;
    TStringStream textIn(t), binary2, text2;
    try {
        ObjectTextToBinary(&textIn, &binary2);
        binary2.SetPosition(0);
        ObjectBinaryToText(&binary2, &text2);
    } catch (const Exception&) {
        std::abort();
    }
    if (text2.DataString() != t) std::abort();
    return 0;
}
