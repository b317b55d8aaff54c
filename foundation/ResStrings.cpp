#include "foundation/ResStrings.h"

#include <map>
#include <mutex>

namespace zelvane {

namespace {

// The foundation's own texts. 0x92 is the typographic apostrophe of Windows-1251.
const TResStringEntry kFoundationTexts[] = {
    {SNegativeFileSize, "New file size should not be less than zero."},
    {SZeroFileSize, "New file size should be higher than zero."},
    {SReadOnlyFileSize, "Can\x92t change size of the file in read only mode."},
    {SZeroProjectedSize, "Projected area size must be above zero"},
    {SNoIdentIntf, "Object should support interface IIdentIntf"},
    {SIdentNotUnique, "Identifier value must be unique [%s]"},
    {SIdentNotAcceptable, "Unacceptable value for identifier [%s]"},
};

struct Table {
    std::mutex lock;
    std::map<int, std::string> texts;
    TResStrLookup lookup;

    Table() {
        for (const auto& e : kFoundationTexts)
            texts[e.Id] = e.Text;
    }
};

// Built on first use, so that blocks registered by static objects of other files find it
// whatever the order of static initialisation.
Table& TheTable() {
    static Table table;
    return table;
}

} // namespace

void RegisterResStrings(std::span<const TResStringEntry> block) {
    Table& t = TheTable();
    std::lock_guard guard(t.lock);
    for (const auto& e : block)
        t.texts[e.Id] = e.Text ? e.Text : "";
}

TResStrLookup SetResStrLookup(TResStrLookup lookup) {
    Table& t = TheTable();
    std::lock_guard guard(t.lock);
    std::swap(t.lookup, lookup);
    return lookup;
}

std::string PackageResStr(int id) {
    Table& t = TheTable();
    std::lock_guard guard(t.lock);
    auto it = t.texts.find(id);
    return it == t.texts.end() ? std::string() : it->second;
}

std::vector<std::pair<int, std::string>> PackageResStrings() {
    Table& t = TheTable();
    std::lock_guard guard(t.lock);
    return {t.texts.begin(), t.texts.end()};
}

std::string ResStr(int id) {
    TResStrLookup lookup;
    {
        Table& t = TheTable();
        std::lock_guard guard(t.lock);
        lookup = t.lookup;
    }
    // The lookup runs outside the lock: a language module may itself ask for package texts.
    if (lookup) {
        std::string text = lookup(id);
        if (!text.empty()) return text;
    }
    return PackageResStr(id);
}

} // namespace zelvane
