// Unit Locale: every text of the add-in by its number, in the language chosen.
//
// A language is a module (see locale/LanguageModule.h) holding texts by the same numbers; with
// none loaded, or where the module lacks a number, the text is the package's own, in English
// (foundation/ResStrings.h). The unit puts its lookup in front of the package's string table
// while the package is loaded, so that texts raised by the lower layers follow the language too.
#pragma once

#include "rtl/TypInfo.h"

#include <functional>
#include <string>
#include <string_view>

namespace zelvane {

class TfrLocale : public rtl::TObject {
    RTL_CLASS(TfrLocale, rtl::TObject)
public:
    TfrLocale();
    ~TfrLocale() override;

    // The language module (a dlopen handle), and whether one counts as loaded.
    void* Handle = nullptr;
    bool Loaded = false;
    // Asked first: a text it gives wins.
    std::function<void(int id, std::string& text)> OnGetString;
    // Whether the host program is the Delphi IDE (its file name, in upper case, "DELPHI32.EXE").
    bool IsDelphiHost = false;

    // The text of the number from the module, or from the package when module is nullptr. From
    // the package it always succeeds (a missing number gives an empty text); from a module only
    // with a text of at least one character.
    virtual bool LoadStr(void* module, int id, std::string& text);
    // Frees the module, if one is loaded.
    void Unload();
};

// A module's text in the add-in's code page (Windows-1251). Text in Windows-1251 stands as it is;
// UTF-8 text is converted, and a letter that Windows-1251 lacks is written as German writes it
// without its marks ("\u00FC" as "ue", "\u00DF" as "ss"), or as its base letter ("\u00E9" as "e"),
// or as "?" when it has none.
std::string HostText(std::string_view text, int codePage);

// The one instance, made when the package loads.
TfrLocale& frLocale();

// The text in the current language.
std::string LocaleStr(int id);
// The package's own text; "Not found" when it has none.
std::string DefaultLocaleStr(int id);
// Loads a language module in place of the one loaded; an empty name unloads. A module that
// fails to load still counts as loaded, with nothing in it: every text then comes from the
// package, and the choice is kept.
void LoadNewLanguage(const std::string& fileName);

} // namespace zelvane
