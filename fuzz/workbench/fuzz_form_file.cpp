// Feeds arbitrary bytes to the form file reader. Whatever the bytes, reading either gives a tree
// or raises the runtime's exception. A tree that was read writes in binary form, and in text
// form unless it holds a value text cannot hold, which is refused with the form file error; what
// it writes reads back to a tree that writes the same bytes again.
#include "workbench/model/FormFile.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace workbench;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string input(reinterpret_cast<const char*>(data), size);
    TFormFile form;
    try {
        form = ReadFormFile(input, "fuzz.dfm");
    } catch (const rtl::Exception&) {
        return 0;
    }
    if (!form.Root) std::abort();
    for (TFormFileFormat format : {TFormFileFormat::Binary, TFormFileFormat::Text}) {
        std::string written, again;
        try {
            try {
                written = WriteFormFile(*form.Root, format);
            } catch (const EFormFileError&) {
                if (format == TFormFileFormat::Text) continue;
                throw;
            }
            TFormFile back = ReadFormFile(written, "again.dfm");
            again = WriteFormFile(*back.Root, format);
        } catch (const rtl::Exception& e) {
            // A tree that was read must write and read back.
            std::fprintf(stderr, "%s\n", e.Message().c_str());
            std::abort();
        }
        if (written != again) std::abort();
    }
    return 0;
}
