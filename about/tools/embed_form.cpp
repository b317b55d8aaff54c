// Build step of the about box: reads a text form file, turns it into the binary form, scrambles
// it with the key the about box unscrambles it with, and writes a C++ source that holds the
// bytes.
//
//     embed_form FORM.dfm OUT.cpp
#include "about/AboutKey.h"
#include "foundation/AppUtils.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: embed_form FORM.dfm OUT.cpp\n";
        return 2;
    }
    try {
        std::ifstream in(argv[1], std::ios::binary);
        if (!in) throw std::runtime_error(std::string("can't read ") + argv[1]);
        std::stringstream text;
        text << in.rdbuf();
        rtl::TStringStream source(text.str()), binary;
        rtl::ObjectTextToBinary(&source, &binary);
        std::string bytes = binary.DataString();
        zelvane::EncodeData(bytes.data(), bytes.size(), zelvane::AboutFormKey);

        std::ostringstream out;
        out << "// Made by embed_form from " << argv[1] << ": the about box's form, scrambled.\n"
            << "#include <cstddef>\n\nnamespace zelvane {\n\n"
            << "extern const unsigned char kAboutFormData[] = {";
        for (size_t i = 0; i < bytes.size(); ++i)
            out << (i % 16 ? " " : "\n    ") << unsigned(static_cast<unsigned char>(bytes[i]))
                << ',';
        out << "\n};\nextern const size_t kAboutFormSize = " << bytes.size()
            << ";\n\n} // namespace zelvane\n";
        std::ofstream(argv[2], std::ios::binary) << out.str();
    } catch (const std::exception& e) {
        std::cerr << "embed_form: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
