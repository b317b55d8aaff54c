// objconv: converts object streams (form files such as .dfm) between the binary, resource and
// text forms, tells a stream's form, and checks that a file reads.
#include "rtl/Filer.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <sys/stat.h>

using namespace rtl;

namespace {

const char* const Usage =
    "Usage: objconv [OPTION]... INPUT [OUTPUT]\n"
    "Convert object streams (form files such as .dfm) between binary, resource and text form.\n"
    "\n"
    "  -t, --to=FORM      write FORM: binary, resource or text; without it a binary or\n"
    "                     resource input becomes text and a text input becomes binary\n"
    "  -o, --output=FILE  write to FILE (the same as giving OUTPUT)\n"
    "  -d, --detect       print the form of INPUT (binary, resource, text or unknown)\n"
    "  -c, --check        read every object of INPUT and report how many there are\n"
    "  -h, --help         show this help and exit\n"
    "\n"
    "INPUT and OUTPUT may be \"-\" for standard input and output; without OUTPUT the result\n"
    "goes to standard output. A file may hold several objects back to back; each is\n"
    "converted. Exit status: 0 on success, 1 when the input can't be read or converted,\n"
    "2 for a wrong command line.\n";

enum class Form { Unknown, Binary, Resource, Text };

const char* FormName(Form f) {
    switch (f) {
    case Form::Binary:
        return "binary";
    case Form::Resource:
        return "resource";
    case Form::Text:
        return "text";
    default:
        return "unknown";
    }
}

struct Failure {
    std::string message;
};

Form Detect(TStream* s) {
    int64_t pos = s->GetPosition();
    unsigned char first = 0;
    bool has = s->Read(&first, 1) == 1;
    s->SetPosition(pos);
    if (!has) return Form::Unknown;
    switch (TestStreamFormat(s)) {
    case sofBinary:
        return first == 0xFF ? Form::Resource : Form::Binary;
    case sofText:
        return Form::Text;
    default:
        return Form::Unknown;
    }
}

// Asks for large pages behind a large block that is about to be filled: a few faults instead
// of one for every 4 KiB page. Only advice; the block works the same without it.
void PreferLargePages(void* block, size_t size) {
    constexpr uintptr_t large = uintptr_t(1) << 21;
    uintptr_t begin = (reinterpret_cast<uintptr_t>(block) + large - 1) & ~(large - 1);
    uintptr_t end = (reinterpret_cast<uintptr_t>(block) + size) & ~(large - 1);
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

void LoadInput(const std::string& name, TMemoryStream& into) {
    std::FILE* f = name == "-" ? stdin : std::fopen(name.c_str(), "rb");
    if (!f) throw Failure{"cannot open " + name + ": " + std::strerror(errno)};
    // A regular file goes straight into a stream of its size; what else there is (a pipe, a
    // file that grew meanwhile) follows in blocks.
    struct stat st;
    if (fstat(fileno(f), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
        into.SetSize(st.st_size);
        PreferLargePages(into.Memory(), static_cast<size_t>(st.st_size));
        size_t got = std::fread(into.Memory(), 1, static_cast<size_t>(st.st_size), f);
        into.SetSize(static_cast<int64_t>(got));
        into.SetPosition(static_cast<int64_t>(got));
    }
    std::vector<char> buf(1 << 16);
    size_t n;
    while ((n = std::fread(buf.data(), 1, buf.size(), f)) > 0)
        into.WriteBuffer(buf.data(), static_cast<int64_t>(n));
    bool failed = std::ferror(f);
    if (f != stdin) std::fclose(f);
    if (failed) throw Failure{"cannot read " + name};
    into.SetPosition(0);
}

void SaveOutput(const std::string& name, const std::string& data) {
    std::FILE* f = name.empty() || name == "-" ? stdout : std::fopen(name.c_str(), "wb");
    if (!f) throw Failure{"cannot create " + name + ": " + std::strerror(errno)};
    size_t size = data.size();
    bool ok = std::fwrite(data.data(), 1, size, f) == size;
    ok = (f == stdout ? std::fflush(f) : std::fclose(f)) == 0 && ok;
    if (!ok) throw Failure{"cannot write " + (name.empty() ? std::string("-") : name)};
}

// Passes over one binary object (after its signature) without converting it.
void SkipObject(TReader& r, int depth) {
    if (depth > MaxNestingDepth) throw EReadError("Object stream nested too deeply");
    TFilerFlags flags;
    int32_t childPos;
    r.ReadPrefix(flags, childPos);
    r.ReadStr();
    r.ReadStr();
    while (!r.EndOfList())
        r.SkipProperty();
    r.ReadListEnd();
    while (!r.EndOfList())
        SkipObject(r, depth + 1);
    r.ReadListEnd();
}

// Copies one binary object as it stands.
void CopyBinaryObject(TStream* in, TStream* out) {
    int64_t start = in->GetPosition();
    int64_t end;
    {
        TReader r(in, 4096);
        r.ReadSignature();
        SkipObject(r, 0);
        r.FlushBuffer();
        end = in->GetPosition();
    }
    in->SetPosition(start);
    out->CopyFrom(in, end - start);
}

void ConvertOne(TStream* in, Form from, Form to, TStream* out) {
    if (from == Form::Resource) {
        ReadResHeader(in);
        from = Form::Binary;
    }
    if (from == to) {
        if (from == Form::Binary)
            CopyBinaryObject(in, out);
        else {
            TMemoryStream bin;
            ObjectTextToBinary(in, &bin);
            bin.SetPosition(0);
            ObjectBinaryToText(&bin, out);
        }
        return;
    }
    switch (to) {
    case Form::Text:
        ObjectBinaryToText(in, out);
        break;
    case Form::Binary:
        ObjectTextToBinary(in, out);
        break;
    case Form::Resource: {
        TMemoryStream text;
        if (from == Form::Binary) {
            ObjectBinaryToText(in, &text);
            text.SetPosition(0);
            ObjectTextToResource(&text, out);
        } else
            ObjectTextToResource(in, out);
        break;
    }
    default:
        break;
    }
}

bool ParseForm(std::string_view s, Form& f) {
    if (s == "binary" || s == "bin")
        f = Form::Binary;
    else if (s == "resource" || s == "res")
        f = Form::Resource;
    else if (s == "text" || s == "txt")
        f = Form::Text;
    else
        return false;
    return true;
}

int UsageError(const std::string& message) {
    std::fprintf(stderr, "objconv: %s\nTry 'objconv --help' for more information.\n",
                 message.c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    Form to = Form::Unknown;
    bool detect = false, check = false;
    std::string output;
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        std::string_view a = argv[i];
        auto value = [&](std::string_view longName, std::string_view shortName,
                         std::string& out) -> int {
            // 1: matched with its value, 0: no match, -1: value missing.
            if (a == shortName || a == longName) {
                if (i + 1 >= argc) return -1;
                out = argv[++i];
                return 1;
            }
            std::string prefix = std::string(longName) + "=";
            if (a.substr(0, prefix.size()) == prefix) {
                out = std::string(a.substr(prefix.size()));
                return 1;
            }
            return 0;
        };
        std::string v;
        int m;
        if (a == "-h" || a == "--help") {
            std::fputs(Usage, stdout);
            return 0;
        } else if (a == "-d" || a == "--detect")
            detect = true;
        else if (a == "-c" || a == "--check")
            check = true;
        else if ((m = value("--to", "-t", v)) != 0) {
            if (m < 0) return UsageError("option --to needs a form");
            if (!ParseForm(v, to)) return UsageError("unknown form '" + v + "'");
        } else if ((m = value("--output", "-o", v)) != 0) {
            if (m < 0) return UsageError("option --output needs a file name");
            output = v;
        } else if (a == "--") {
            for (++i; i < argc; ++i)
                files.emplace_back(argv[i]);
        } else if (a.size() > 1 && a[0] == '-') {
            return UsageError("unknown option '" + std::string(a) + "'");
        } else
            files.emplace_back(a);
    }
    if (files.empty()) return UsageError("no input file");
    if (files.size() > 2 || (files.size() == 2 && !output.empty()))
        return UsageError("too many file names");
    if (files.size() == 2) output = files[1];
    if (detect && check) return UsageError("--detect and --check exclude each other");

    const std::string& input = files[0];
    try {
        TMemoryStream in;
        LoadInput(input, in);
        Form from = Detect(&in);
        if (detect) {
            std::printf("%s\n", FormName(from));
            return 0;
        }
        if (from == Form::Unknown) throw Failure{"not an object stream"};
        if (to == Form::Unknown) to = from == Form::Text ? Form::Binary : Form::Text;
        if (check) to = from == Form::Text ? Form::Binary : Form::Text;
        // The output is kept in a string with room reserved for about twice the input (the
        // text of a binary stream is less than that as a rule): pages that stay unused cost
        // nothing, and the output is seldom copied as it grows.
        std::string room;
        room.reserve(static_cast<size_t>(in.GetSize()) * 2 + 65536);
        PreferLargePages(room.data(), room.capacity());
        TStringStream out(std::move(room));
        int count = 0;
        while (in.GetPosition() < in.GetSize()) {
            ConvertOne(&in, from, to, &out);
            ++count;
            if (from == Form::Text) {
                // Blank lines after the last object end the file.
                int64_t pos = in.GetPosition();
                const char* p = static_cast<const char*>(in.Memory());
                while (pos < in.GetSize() && static_cast<unsigned char>(p[pos]) <= ' ')
                    ++pos;
                in.SetPosition(pos);
            }
        }
        if (check) {
            std::fprintf(stderr, "%s: %d object%s in %s form\n", input.c_str(), count,
                         count == 1 ? "" : "s", FormName(from));
            return 0;
        }
        SaveOutput(output, out.DataString());
        return 0;
    } catch (const Failure& f) {
        std::fprintf(stderr, "objconv: %s: %s\n", input.c_str(), f.message.c_str());
    } catch (const Exception& e) {
        std::fprintf(stderr, "objconv: %s: %s: %s\n", input.c_str(), e.ClassName().c_str(),
                     e.Message().c_str());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "objconv: %s: %s\n", input.c_str(), e.what());
    }
    return 1;
}
