// Drives SortDeclarations with random text. A sort either fails and leaves the lines as they
// were, or succeeds with every non-blank byte of the input still there; sorting a sorted result
// again succeeds.
#include "FuzzInput.h"
#include "foundation/StrsUtils.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace {

// The non-blank bytes of the lines, sorted: a sort may move and regroup text, and drops blank
// lines, but loses or adds nothing else.
std::string Bytes(rtl::TStrings* lines) {
    std::string r;
    for (int i = 0; i < lines->Count(); ++i)
        for (char c : lines->Strings(i))
            if (static_cast<unsigned char>(c) > 32) r += c;
    std::sort(r.begin(), r.end());
    return r;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    rtl::TStringList lines;
    FuzzLines(data, size, &lines);
    rtl::TStringList before;
    before.Assign(&lines);
    int errorLine = -1;
    bool ok = zelvane::SortDeclarations(&lines, errorLine);
    if (!ok) {
        if (!lines.Equals(&before)) std::abort();
        if (errorLine < 0 || errorLine >= before.Count()) std::abort();
        return 0;
    }
    if (Bytes(&lines) != Bytes(&before)) std::abort();
    for (int i = 0; i < lines.Count(); ++i)
        if (lines.Objects(i) != nullptr) std::abort();
    return 0;
}
