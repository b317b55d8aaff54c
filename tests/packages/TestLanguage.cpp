// A language module for the tests: a few of the add-in's texts in German, and one it lacks.
#include "locale/LanguageModule.h"

namespace {

const zelvane::TResStringEntry kTexts[] = {
    {51120, "Experteneinstellungen"},
    {51123, "Besondere Einstellungen"},
    {50550, "Die neue Dateigr\xF6\xDF" "e darf nicht negativ sein."},
};

} // namespace

ZELVANE_LANGUAGE_MODULE(kTexts)
