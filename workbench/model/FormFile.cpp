#include "workbench/model/FormFile.h"

#include "rtl/Filer.h"
#include "rtl/ObjectText.h"
#include "workbench/model/Files.h"

#include <cstdio>

#include "rtl/TypInfo.h"

namespace workbench {

RTL_IMPLEMENT_CLASS(EFormFileError)

using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {

// A string as the text form writes it: printable runs quoted, control characters as #n.
std::string QuoteString(const std::string& s) {
    if (s.empty()) return "''";
    std::string r;
    bool quoted = false;
    for (char c : s) {
        bool control = static_cast<unsigned char>(c) < 32;
        if (control && quoted) r += '\'';
        if (!control && !quoted) r += '\'';
        quoted = !control;
        if (control)
            r += "#" + std::to_string(int(c));
        else
            r += c == '\'' ? std::string("''") : std::string(1, c);
    }
    if (quoted) r += '\'';
    return r;
}

std::string Hex(const std::string& bytes) {
    std::string r;
    char buf[3];
    for (unsigned char c : bytes) {
        std::snprintf(buf, sizeof buf, "%02X", c);
        r += buf;
    }
    return r;
}

[[noreturn]] void Damaged(const std::string& what) {
    throw EFormFileError(what);
}

class TTreeReader {
public:
    TTreeReader(rtl::TStringStream& stream) : stream_(stream), reader_(&stream) {}

    std::unique_ptr<TDesignComponent> ReadRoot() {
        reader_.ReadSignature();
        return ReadComponent(0);
    }

    // The value at the reader's position into p.
    void ReadValue(TDesignProperty& p, int depth) {
        using namespace rtl;
        if (depth > MaxNestingDepth) Damaged("values are nested too deeply");
        TValueType t = reader_.NextValue();
        switch (t) {
        case vaInt8:
        case vaInt16:
        case vaInt32:
        case vaInt64:
            p.Kind = TDesignValueKind::Integer;
            p.Int = reader_.ReadInt64();
            p.Text = std::to_string(p.Int);
            break;
        case vaExtended:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(reader_.ReadFloat());
            break;
        case vaSingle:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(reader_.ReadSingle()) + "s";
            break;
        case vaCurrency:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(reader_.ReadCurrency()) + "c";
            break;
        case vaDate:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(reader_.ReadDate()) + "d";
            break;
        case vaString:
        case vaLString:
        case vaWString:
        case vaUTF8String:
            p.Kind = TDesignValueKind::String;
            p.Str = reader_.ReadString();
            p.Text = QuoteString(p.Str);
            break;
        case vaFalse:
        case vaTrue:
            p.Kind = TDesignValueKind::Boolean;
            p.Text = reader_.ReadIdent();
            p.Int = t == vaTrue;
            break;
        case vaIdent:
        case vaNil:
            p.Kind = TDesignValueKind::Ident;
            p.Str = reader_.ReadIdent();
            p.Text = p.Str;
            break;
        case vaSet: {
            reader_.ReadValue();
            p.Kind = TDesignValueKind::Set;
            p.Text = "[";
            for (bool first = true;; first = false) {
                std::string element = reader_.ReadStr();
                if (element.empty()) break;
                p.Text += (first ? "" : ", ") + element;
            }
            p.Text += "]";
            break;
        }
        case vaBinary: {
            reader_.ReadValue();
            uint8_t b[4];
            reader_.Read(b, 4);
            uint32_t size = b[0] | (b[1] << 8) | (b[2] << 16) | (uint32_t(b[3]) << 24);
            if (size > stream_.GetSize() - reader_.Position())
                Damaged("a binary value of " + std::to_string(size) +
                        " bytes runs past the end of the stream");
            p.Kind = TDesignValueKind::Binary;
            p.Str.assign(size, '\0');
            if (size) reader_.Read(p.Str.data(), size);
            p.Text = "{" + Hex(p.Str) + "}";
            break;
        }
        case vaList: {
            reader_.ReadValue();
            p.Kind = TDesignValueKind::List;
            p.Text = "(";
            for (bool first = true; !reader_.EndOfList(); first = false) {
                TDesignProperty item;
                ReadValue(item, depth + 1);
                p.Text += (first ? "" : " ") + item.Text;
            }
            reader_.ReadListEnd();
            p.Text += ")";
            break;
        }
        case vaCollection: {
            reader_.ReadValue();
            p.Kind = TDesignValueKind::Collection;
            p.Text = "<";
            while (!reader_.EndOfList()) {
                TValueType n = reader_.NextValue();
                p.Text += p.Text.size() > 1 ? " item" : "item";
                if (n == vaInt8 || n == vaInt16 || n == vaInt32)
                    p.Text += " [" + std::to_string(reader_.ReadInteger()) + "]";
                reader_.ReadListBegin();
                while (!reader_.EndOfList()) {
                    TDesignProperty field;
                    field.Name = reader_.ReadStr();
                    ReadValue(field, depth + 1);
                    p.Text += " " + field.Name + " = " + field.Text;
                }
                reader_.ReadListEnd();
                p.Text += " end";
            }
            reader_.ReadListEnd();
            p.Text += ">";
            break;
        }
        default:
            Damaged("a value has the unknown tag " + std::to_string(int(t)) + " at offset " +
                    std::to_string(reader_.Position()));
        }
    }

    std::unique_ptr<TDesignComponent> ReadComponent(int depth) {
        if (depth > rtl::MaxNestingDepth) Damaged("components are nested too deeply");
        auto c = std::make_unique<TDesignComponent>();
        rtl::TFilerFlags flags = 0;
        int32_t childPos = 0;
        reader_.ReadPrefix(flags, childPos);
        c->Inherited = flags & rtl::ffInherited;
        c->Inline = flags & rtl::ffInline;
        c->ClassName = reader_.ReadStr();
        c->Name = reader_.ReadStr();
        if (c->ClassName.empty())
            Damaged("a component without a class name at offset " +
                    std::to_string(reader_.Position()));
        while (!reader_.EndOfList()) {
            TDesignProperty p;
            p.Name = reader_.ReadStr();
            if (p.Name.empty()) Damaged("a property of " + c->Name + " has no name");
            int64_t start = reader_.Position();
            ReadValue(p, depth);
            p.Raw = stream_.DataString().substr(static_cast<size_t>(start),
                                                static_cast<size_t>(reader_.Position() - start));
            c->Properties.push_back(std::move(p));
        }
        reader_.ReadListEnd();
        while (!reader_.EndOfList())
            c->AddChild(ReadComponent(depth + 1));
        reader_.ReadListEnd();
        return c;
    }

private:
    rtl::TStringStream& stream_;
    rtl::TReader reader_;
};

void WriteShortString(std::string& out, const std::string& s, const char* what) {
    if (s.size() > 255)
        throw EFormFileError(std::string(what) + " \"" + s.substr(0, 40) +
                             "...\" is longer than 255 bytes");
    out += static_cast<char>(s.size());
    out += s;
}

void WriteComponent(std::string& out, const TDesignComponent& c) {
    uint8_t flags = (c.Inherited ? rtl::ffInherited : 0) | (c.Inline ? rtl::ffInline : 0);
    if (flags) out += static_cast<char>(0xF0 | flags);
    WriteShortString(out, c.ClassName, "The class name");
    WriteShortString(out, c.Name, "The component name");
    for (const auto& p : c.Properties) {
        WriteShortString(out, p.Name, "The property name");
        out += PropertyRawValue(p);
    }
    out += '\0';
    for (int i = 0; i < c.ChildCount(); ++i)
        WriteComponent(out, *c.Child(i));
    out += '\0';
}

} // namespace

TFormFile ReadFormFile(std::string_view bytes, const std::string& fileName) {
    TFormFile result;
    try {
        rtl::TStringStream input{std::string(bytes)};
        std::string binary;
        switch (rtl::TestStreamFormat(&input)) {
        case rtl::sofText: {
            rtl::TStringStream output;
            rtl::ObjectTextToBinary(&input, &output);
            binary = output.DataString();
            result.Format = TFormFileFormat::Text;
            break;
        }
        case rtl::sofBinary:
            if (!bytes.empty() && static_cast<unsigned char>(bytes[0]) == 0xFF)
                rtl::ReadResHeader(&input);
            binary = std::string(bytes.substr(static_cast<size_t>(input.GetPosition())));
            result.Format = TFormFileFormat::Binary;
            break;
        default:
            Damaged("it is not an object stream, neither binary nor text");
        }
        rtl::TStringStream stream(std::move(binary));
        result.Root = TTreeReader(stream).ReadRoot();
    } catch (const rtl::Exception& e) {
        throw EFormFileError("Form file \"" + fileName + "\" is damaged: " + e.Message());
    } catch (const std::exception& e) {
        throw EFormFileError("Form file \"" + fileName + "\" is damaged: " + e.what());
    }
    return result;
}

TFormFile LoadFormFile(const std::string& fileName) {
    return ReadFormFile(ReadFileBytes(fileName), fileName);
}

std::string WriteFormFile(const TDesignComponent& root, TFormFileFormat format) {
    std::string binary(rtl::FilerSignature, 4);
    WriteComponent(binary, root);
    if (format == TFormFileFormat::Binary) return binary;
    rtl::TStringStream input(binary), output;
    rtl::ObjectBinaryToText(&input, &output);
    return output.DataString();
}

TDesignProperty ParseDesignProperty(const std::string& name, const std::string& valueText) {
    std::string text = "object A: TA\r\n  " + name + " = " + valueText + "\r\nend\r\n";
    TFormFile f;
    try {
        f = ReadFormFile(text, name);
    } catch (const EFormFileError&) {
        throw EFormFileError("\"" + valueText + "\" is not a value of property " + name);
    }
    if (f.Root->Properties.size() != 1 || f.Root->ChildCount() != 0)
        throw EFormFileError("\"" + valueText + "\" is not a value of property " + name);
    return f.Root->Properties.front();
}

std::string PropertyRawValue(const TDesignProperty& property) {
    if (!property.Raw.empty()) return property.Raw;
    return ParseDesignProperty(property.Name, property.Text).Raw;
}

} // namespace workbench
