#include "workbench/model/FormFile.h"

#include "rtl/CodePage.h"
#include "rtl/Filer.h"
#include "rtl/Graphics.h"
#include "rtl/ObjectText.h"
#include "workbench/model/Files.h"

#include <cmath>
#include <cstdio>

#include "rtl/TypInfo.h"

namespace workbench {

RTL_IMPLEMENT_CLASS(EFormFileError)

using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {

// A string in the text form: runs of printable units quoted, the others as #n. What printable
// is differs between narrow strings, whose bytes of the code page stand as they are, and wide
// ones, whose characters past ASCII are written by number, as the runtime's converter does.
template <class Char, class Printable>
std::string QuoteUnits(std::basic_string_view<Char> s, Printable printable) {
    if (s.empty()) return "''";
    std::string r;
    bool quoted = false;
    for (Char c : s) {
        bool plain = printable(c);
        if (plain != quoted) r += '\'';
        quoted = plain;
        if (!plain)
            r += "#" + std::to_string(uint32_t(c));
        else if (c == '\'')
            r += "''";
        else
            r += static_cast<char>(c);
    }
    if (quoted) r += '\'';
    return r;
}

} // namespace

std::string QuoteFormString(const std::string& s) {
    return QuoteUnits(std::string_view(s),
                      [](char c) { return static_cast<unsigned char>(c) >= 32; });
}

std::string QuoteWideFormString(std::u16string_view s) {
    return QuoteUnits(s, [](char16_t c) { return c >= 32 && c < 127; });
}

namespace {

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

    // Whether a float read so far, at any depth, is infinite or not a number.
    bool ReadNonFinite() const { return nonFinite_; }

    // The value at the reader's position into p. Its depth counts as the runtime's converters
    // count it, so that whatever reads here also converts to the other form: a property of a
    // component one deeper than the component, a list's item one deeper than the list, an item
    // field of a collection two deeper than the collection.
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
            p.Text = FormatStreamFloat(Noted(reader_.ReadFloat()));
            break;
        case vaSingle:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(Noted(reader_.ReadSingle())) + "s";
            break;
        case vaCurrency:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(Noted(reader_.ReadCurrency())) + "c";
            break;
        case vaDate:
            p.Kind = TDesignValueKind::Float;
            p.Text = FormatStreamFloat(Noted(reader_.ReadDate())) + "d";
            break;
        case vaString:
        case vaLString:
            p.Kind = TDesignValueKind::String;
            p.Str = reader_.ReadString();
            p.Text = QuoteFormString(p.Str);
            break;
        case vaWString:
        case vaUTF8String: {
            // Str has the host's code page for those who read it; Text keeps every character.
            std::u16string wide = reader_.ReadWideString();
            p.Kind = TDesignValueKind::String;
            p.Str = rtl::Utf16ToCp1251(wide);
            p.Text = QuoteWideFormString(wide);
            break;
        }
        case vaFalse:
        case vaTrue:
            p.Kind = TDesignValueKind::Boolean;
            p.Text = reader_.ReadIdent();
            p.Int = t == vaTrue;
            break;
        case vaIdent:
        case vaNil:
            p.Kind = TDesignValueKind::Ident;
            p.Str = Checked(reader_.ReadIdent(), true, false, "the identifier");
            p.Text = p.Str;
            break;
        case vaSet: {
            reader_.ReadValue();
            p.Kind = TDesignValueKind::Set;
            p.Text = "[";
            for (bool first = true;; first = false) {
                std::string element = Checked(reader_.ReadStr(), false, true, "the set element");
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
                    field.Name = Checked(reader_.ReadStr(), true, false, "the property name");
                    ReadValue(field, depth + 2);
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

    // A name that has no text form: the file can't be written back as it was read.
    std::string Checked(std::string name, bool dotted, bool mayBeEmpty, const char* what) {
        if (!rtl::IsStreamName(name, dotted, mayBeEmpty))
            Damaged(std::string(what) + " \"" + name + "\" ending at offset " +
                    std::to_string(reader_.Position()) + " is not an identifier");
        return name;
    }

    std::unique_ptr<TDesignComponent> ReadComponent(int depth) {
        if (depth > rtl::MaxNestingDepth) Damaged("components are nested too deeply");
        auto c = std::make_unique<TDesignComponent>();
        rtl::TFilerFlags flags = 0;
        int32_t childPos = 0;
        reader_.ReadPrefix(flags, childPos);
        c->Inherited = flags & rtl::ffInherited;
        c->Inline = flags & rtl::ffInline;
        if (flags & rtl::ffChildPos) c->ChildPos = childPos;
        c->ClassName = Checked(reader_.ReadStr(), false, true, "the class name");
        c->Name = Checked(reader_.ReadStr(), false, true, "the component name");
        if (c->ClassName.empty())
            Damaged("a component without a class name at offset " +
                    std::to_string(reader_.Position()));
        while (!reader_.EndOfList()) {
            TDesignProperty p;
            p.Name = Checked(reader_.ReadStr(), true, true, "the property name");
            if (p.Name.empty()) Damaged("a property of " + c->Name + " has no name");
            int64_t start = reader_.Position();
            ReadValue(p, depth + 1);
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
    // A float as read, noting whether it is infinite or not a number.
    template <typename T>
    T Noted(T v) {
        if (!std::isfinite(static_cast<long double>(v))) nonFinite_ = true;
        return v;
    }

    rtl::TStringStream& stream_;
    rtl::TReader reader_;
    bool nonFinite_ = false;
};

// A short string of the stream (class, component and property names): the filer's WriteStr
// would cut a longer one, which would make a stream that reads back wrong.
void CheckShortString(const std::string& s, const char* what) {
    if (s.size() > 255)
        throw EFormFileError(std::string(what) + " \"" + s.substr(0, 40) +
                             "...\" is longer than 255 bytes");
}

void WriteShortString(rtl::TWriter& writer, const std::string& s, const char* what) {
    CheckShortString(s, what);
    writer.WriteStr(s);
}

// One value through the filer. A value read from a stream goes back as it was stored, so that
// the string kind, the integer width and the float form survive; a value set in the designer
// is written from its kind, and the kinds with an inner structure from their text form.
void WriteValue(rtl::TWriter& writer, const TDesignProperty& p) {
    if (!p.Raw.empty()) {
        writer.Write(p.Raw.data(), static_cast<int64_t>(p.Raw.size()));
        return;
    }
    switch (p.Kind) {
    case TDesignValueKind::Integer:
        writer.WriteInteger(p.Int);
        return;
    case TDesignValueKind::String:
        writer.WriteString(p.Str);
        return;
    case TDesignValueKind::Ident:
        writer.WriteIdent(p.Str);
        return;
    case TDesignValueKind::Boolean:
        writer.WriteBoolean(p.Int != 0);
        return;
    case TDesignValueKind::Null:
        writer.WriteValue(rtl::vaNull);
        return;
    default: {
        std::string raw = ParseDesignProperty(p.Name, p.Text).Raw;
        writer.Write(raw.data(), static_cast<int64_t>(raw.size()));
    }
    }
}

void WriteComponent(rtl::TWriter& writer, const TDesignComponent& c, int depth) {
    if (depth > rtl::MaxNestingDepth) throw EFormFileError("components are nested too deeply");
    rtl::TFilerFlags flags = (c.Inherited ? rtl::ffInherited : 0) | (c.Inline ? rtl::ffInline : 0) |
                             (c.ChildPos >= 0 ? rtl::ffChildPos : 0);
    CheckShortString(c.ClassName, "The class name");
    writer.WritePrefix(flags, c.ChildPos, c.ClassName);
    WriteShortString(writer, c.Name, "The component name");
    for (const auto& p : c.Properties) {
        if (p.Name.empty()) throw EFormFileError("A property of " + c.Name + " has no name");
        WriteShortString(writer, p.Name, "The property name");
        WriteValue(writer, p);
    }
    writer.WriteListEnd();
    for (int i = 0; i < c.ChildCount(); ++i)
        WriteComponent(writer, *c.Child(i), depth + 1);
    writer.WriteListEnd();
}

// The name in a resource header that has been checked: it starts at byte 3 and ends at a zero.
std::string ResourceNameOf(std::string_view bytes) {
    size_t end = bytes.find('\0', 3);
    return std::string(bytes.substr(3, end == std::string_view::npos ? 0 : end - 3));
}

// The text form of a file saved as UTF-8 with its byte order mark, with the characters past ASCII
// in its quoted strings written by number: the strings read as wide strings, and the form reads
// and writes back the same whatever character set its fonts name.
std::string Utf8TextToCodes(std::string_view text) {
    std::string r;
    r.reserve(text.size());
    bool quoted = false;
    for (size_t i = 0; i < text.size();) {
        char c = text[i];
        if (!quoted || static_cast<unsigned char>(c) < 0x80) {
            if (c == '\'') quoted = !quoted;
            r += c;
            ++i;
            continue;
        }
        size_t end = i;
        while (end < text.size() && static_cast<unsigned char>(text[end]) >= 0x80)
            ++end;
        r += '\'';
        for (char16_t unit : rtl::Utf8ToUtf16(text.substr(i, end - i)))
            r += "#" + std::to_string(uint32_t(unit));
        r += '\'';
        i = end;
    }
    return r;
}

} // namespace

TFormFile ReadFormFile(std::string_view bytes, const std::string& fileName) {
    TFormFile result;
    std::string fromUtf8;
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") {
        fromUtf8 = Utf8TextToCodes(bytes.substr(3));
        bytes = fromUtf8;
    }
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
            if (!bytes.empty() && static_cast<unsigned char>(bytes[0]) == 0xFF) {
                rtl::ReadResHeader(&input);
                result.ResourceName = ResourceNameOf(bytes);
            }
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
    rtl::TStringStream binary;
    {
        rtl::TWriter writer(&binary);
        writer.WriteSignature();
        WriteComponent(writer, root, 0);
        writer.FlushBuffer();
    }
    if (format == TFormFileFormat::Binary) return binary.DataString();
    // A float that is infinite or not a number is written in text as INF or NAN, which reads
    // back as an identifier or not at all: such a form is refused rather than written in a text
    // file that does not open again as it was.
    binary.SetPosition(0);
    TTreeReader check(binary);
    check.ReadRoot();
    if (check.ReadNonFinite())
        throw EFormFileError("The form holds a float that is infinite or not a number, which its "
                             "text form cannot hold");
    binary.SetPosition(0);
    rtl::TStringStream output;
    rtl::ObjectBinaryToText(&binary, &output);
    return output.DataString();
}

std::string WriteFormFile(const TFormFile& form) {
    if (!form.Root) throw EFormFileError("There is no form to write");
    std::string bytes = WriteFormFile(*form.Root, form.Format);
    if (form.Format != TFormFileFormat::Binary || form.ResourceName.empty()) return bytes;
    rtl::TStringStream output;
    int64_t fixup = 0;
    rtl::WriteResourceHeader(&output, form.ResourceName, fixup);
    output.Write(bytes.data(), static_cast<int64_t>(bytes.size()));
    rtl::FixupResourceHeader(&output, fixup);
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

int FormCodePage(const TDesignComponent& component) {
    for (const TDesignComponent* c = &component; c; c = c->Parent()) {
        if (const TDesignProperty* p = c->FindProperty("Font.Charset")) {
            int32_t charset = rtl::DEFAULT_CHARSET;
            if (p->Kind == TDesignValueKind::Integer)
                charset = static_cast<int32_t>(p->Int);
            else if (!rtl::IdentToCharset(p->Str, charset))
                charset = rtl::DEFAULT_CHARSET;
            return rtl::CharsetCodePage(charset);
        }
        // A font of its own that names no character set has the default one.
        if (const TDesignProperty* p = c->FindProperty("ParentFont");
            p && p->Kind == TDesignValueKind::Boolean && p->Int == 0)
            break;
    }
    return rtl::HostCodePage;
}

bool IsWideDesignString(const TDesignProperty& p) {
    auto tag = p.Raw.empty() ? uint8_t(rtl::vaString) : static_cast<uint8_t>(p.Raw[0]);
    return p.Kind == TDesignValueKind::String &&
           (tag == rtl::vaWString || tag == rtl::vaUTF8String);
}

std::u16string DesignString(const TDesignProperty& p, int codePage) {
    if (p.Kind != TDesignValueKind::String) return {};
    if (!IsWideDesignString(p)) return rtl::CodePageToUtf16(p.Str, codePage);
    rtl::TStringStream stream(p.Raw);
    rtl::TReader reader(&stream);
    return reader.ReadWideString();
}

std::string FormStringValue(std::u16string_view s, int codePage, bool wide) {
    std::string narrow;
    if (!wide && rtl::Utf16ToCodePage(s, codePage, narrow)) return QuoteFormString(narrow);
    return QuoteWideFormString(s);
}

} // namespace workbench
