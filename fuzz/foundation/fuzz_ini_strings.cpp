// Drives TIniStrings with random text: reading it, writing it back and reading that again, and
// the lookups on every section and key found and edits on the first keys of each section.
#include "FuzzInput.h"
#include "foundation/Classes.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    zelvane::TIniStrings ini;
    // The first byte picks the modes.
    ini.SkipBareLines = data[0] & 1;
    if (data[0] & 2) ini.SetSectionSorted(true);
    if (data[0] & 4) ini.SetKeySorted(true);
    rtl::TStringList text;
    FuzzLines(data + 1, size - 1, &text);
    ini.SetStrings(&text);

    // Written back and read again, the text settles after one pass: a key with an empty value
    // becomes a bare line, which may then read as a section heading ("[x]=") or, with
    // SkipBareLines, vanish; after that, writing and reading change nothing.
    auto pass = [&](rtl::TStrings* in, rtl::TStrings* out) {
        zelvane::TIniStrings copy;
        copy.SkipBareLines = ini.SkipBareLines;
        copy.SetSectionSorted(ini.GetSectionSorted());
        copy.SetKeySorted(ini.KeySorted());
        copy.SetStrings(in);
        copy.GetStrings(out);
    };
    rtl::TStringList written, second, third;
    ini.GetStrings(&written);
    pass(&written, &second);
    pass(&second, &third);
    if (!third.Equals(&second)) std::abort();

    rtl::TStringList sections, keys, values;
    ini.ReadSections(&sections);
    for (int s = 0; s < sections.Count(); ++s) {
        const std::string section = sections.Strings(s);
        if (!ini.HasSection(section)) std::abort();
        ini.ReadSection(section, &keys);
        ini.ReadSectionValues(section, &values);
        for (int k = 0; k < keys.Count(); ++k) {
            const std::string key = keys.Strings(k);
            if (!ini.HasKey(section, key)) std::abort();
            std::string value = ini.ReadString(section, key, "\x01");
            // Each edit of a sorted section sorts it again: the first keys are edited, so that
            // a long input costs time in proportion to its length.
            if (k >= 4) continue;
            ini.WriteString(section, key, value + "x");
            ini.ReplaceString(section, key, key + "_");
            ini.AddString(section, key);
        }
        ini.ReadInteger(section, section, 0);
        ini.DeleteKey(section, section);
        // The lists shared the document's cells; they must not outlive a change of it.
        keys.Clear();
        if (s % 2) ini.EraseSection(section);
    }
    ini.Sort();
    ini.UnSort();
    ini.Clear();
    return 0;
}
