// A language module for the tests: a few of the add-in's texts in German, among them one menu
// item's caption and not the next one's.
#include "locale/LanguageModule.h"

namespace {

const zelvane::TResStringEntry kTexts[] = {
    {51120, "Experteneinstellungen"},
    {51123, "Besondere Einstellungen"},
    {51040, "Formulare anzeigen..."},
    {50550, "Die neue Dateigr\xF6\xDF"
            "e darf nicht negativ sein."},
};

} // namespace

ZELVANE_LANGUAGE_MODULE(kTexts)
