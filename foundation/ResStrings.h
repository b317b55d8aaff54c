// The string table: the package's own texts by number, as the platform's LoadStr gives them.
//
// Each layer adds its block of texts by number once at start, with a static TResStringBlock in
// a source file that the layer's code uses anyway (so that the linker keeps it):
//
//     static const zelvane::TResStringEntry kTexts[] = {{50520, "..."}, {50521, "..."}};
//     static const zelvane::TResStringBlock kBlock(kTexts);
//
// A language module can put its own texts in front through a replaceable lookup; where it has
// nothing, the package's text is used. A number nobody registered gives an empty text.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace zelvane {

struct TResStringEntry {
    int Id;
    const char* Text; // Windows-1251
};

// Adds a block of texts. A number given again replaces the earlier text.
void RegisterResStrings(std::span<const TResStringEntry> block);

// Registers its block when constructed; meant for a static object of a layer.
struct TResStringBlock {
    explicit TResStringBlock(std::span<const TResStringEntry> block) { RegisterResStrings(block); }
};

// The lookup of a localisation layer: the text of a number, or an empty string when it has
// none.
using TResStrLookup = std::function<std::string(int id)>;

// Installs the lookup (an empty function removes it) and returns the one it replaces.
TResStrLookup SetResStrLookup(TResStrLookup lookup);

// The text of a number: the installed lookup's text if it gives one, else the package's own,
// else an empty string.
std::string ResStr(int id);

// The package's own text of a number, without the lookup.
std::string PackageResStr(int id);

// Every text the package holds, by ascending number: what a language module translates.
std::vector<std::pair<int, std::string>> PackageResStrings();

// Numbers of the foundation's texts.
constexpr int SNegativeFileSize = 50550;   // "New file size should not be less than zero."
constexpr int SZeroFileSize = 50551;       // "New file size should be higher than zero."
constexpr int SReadOnlyFileSize = 50552;   // "Can't change size of the file in read only mode."
constexpr int SZeroProjectedSize = 50553;  // "Projected area size must be above zero"
constexpr int SNoIdentIntf = 50564;        // "Object should support interface IIdentIntf"
constexpr int SIdentNotUnique = 50565;     // "Identifier value must be unique [%s]"
constexpr int SIdentNotAcceptable = 50566; // "Unacceptable value for identifier [%s]"

} // namespace zelvane
