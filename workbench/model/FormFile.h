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

// Reads a form file's bytes. Anything that is not a well-formed object stream raises
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

// The binary encoding of a property's value, as the stream stores it.
std::string PropertyRawValue(const ToolsAPI::TDesignProperty& property);

} // namespace workbench
