// Form files (.dfm, .xfm) read into design component trees and written back.
//
// A form file holds one object stream, binary ("TPF0", possibly behind a resource header) or in
// text form. Both are read with the runtime's filer, value by value, so a form needs no C++
// class for any of its components: the tree keeps the class names, the properties as values
// and the children.
#pragma once

#include "rtl/SysUtils.h"
#include "toolsapi/DesignComponent.h"

#include <memory>
#include <string>
#include <string_view>

namespace workbench {

using rtl::Exception;

RTL_EXCEPTION(EFormFileError, Exception)

enum class TFormFileFormat { Binary, Text };

struct TFormFile {
    std::unique_ptr<ToolsAPI::TDesignComponent> Root;
    TFormFileFormat Format = TFormFileFormat::Binary;
    // The name of the resource header in front of a binary form, empty when it has none.
    std::string ResourceName;
};

// Reads a form file's bytes. A text form saved as UTF-8 behind a byte order mark has its
// strings read as wide strings. Anything that is not a well-formed object stream raises
// EFormFileError naming the file and what is wrong.
TFormFile ReadFormFile(std::string_view bytes, const std::string& fileName);
TFormFile LoadFormFile(const std::string& fileName);

// The bytes of a form file for the tree, written with the runtime's filer: a binary object
// stream, or its text form. Raises EFormFileError for a tree that no stream can hold (a name
// longer than 255 bytes, a value whose text does not parse).
std::string WriteFormFile(const ToolsAPI::TDesignComponent& root, TFormFileFormat format);
// The bytes of the form in the form it was read in, with its resource header if it had one.
std::string WriteFormFile(const TFormFile& form);

// A property from its name and its value as the text form writes it ("'Hello'", "clRed",
// "[akLeft, akTop]", "12"); raises EFormFileError for a value that does not parse.
ToolsAPI::TDesignProperty ParseDesignProperty(const std::string& name,
                                              const std::string& valueText);

// A string as the text form writes it: printable runs quoted, control characters as #n.
std::string QuoteFormString(const std::string& s);
// A wide string as the text form writes it: runs of printable ASCII quoted, every other
// character as #n, so that it reads back as a wide string with all its characters.
std::string QuoteWideFormString(std::u16string_view s);

// The code page of a component's narrow strings: the one of the character set its font names
// (Font.Charset), or, while it keeps its parent's font, the nearest parent's. DEFAULT_CHARSET,
// and a form that names none, stand for the system's code page, the host's.
int FormCodePage(const ToolsAPI::TDesignComponent& component);
// A string value stored as a wide or a UTF-8 string.
bool IsWideDesignString(const ToolsAPI::TDesignProperty& p);
// A string value as the form stores it: wide and UTF-8 strings as they are, narrow ones read
// in codePage. Empty for a value that is not a string.
std::u16string DesignString(const ToolsAPI::TDesignProperty& p, int codePage);
// The text form of a string value that keeps every character: a narrow string in codePage when
// the code page holds them all and wide is not asked for, else a wide string.
std::string FormStringValue(std::u16string_view s, int codePage, bool wide);

// The binary encoding of a property's value, as the stream stores it.
std::string PropertyRawValue(const ToolsAPI::TDesignProperty& property);

} // namespace workbench
