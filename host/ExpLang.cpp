// Language selection, the manager's side: the language submenu built from LocaleModules and the
// modules found in the language directory, the choice of a language, and the dialog that edits
// the list of modules. The choice and the list are kept in the add-in's key-value store.
#include "host/ExpMenu.h"
#include "host/ExpMng.h"

#include "locale/Locale.h"
#include "locale/LocaleSet.h"
#include "rtl/Lists.h"
#include "rtl/SysUtils.h"

#include <QAction>

#include <memory>

namespace zelvane {

using namespace rtl;

namespace {

// The text that names the languages, one "name=display" line each, in the current language.
constexpr int SLanguageNames = 50514;
// The name of the package's own language.
constexpr int SPackageLanguage = 50501;

std::unique_ptr<TStringList> CommaList(const std::string& text) {
    auto list = std::make_unique<TStringList>();
    list->SetCommaText(text);
    return list;
}

// The Checked and Caption of a menu item or an action; anything else counts as checked.
bool SenderChecked(TObject* sender, std::string& caption) {
    if (auto* action = Is<TExpAction>(sender)) {
        caption = action->Caption();
        return action->Checked();
    }
    if (auto* item = Is<TExpMenuItem>(sender)) {
        caption = item->Caption();
        return item->Action() ? item->Action()->Checked() : item->Entry()->isChecked();
    }
    return true;
}

} // namespace

std::string TExpManager::TranslateLangName(const std::string& name) {
    TStringList names;
    names.SetText(LocaleStr(SLanguageNames));
    std::string display = names.Values(name);
    return display.empty() ? name : display;
}

std::string TExpManager::RetranslateLangName(const std::string& display) {
    TStringList names;
    names.SetText(LocaleStr(SLanguageNames));
    for (int i = 0; i < names.Count(); ++i)
        if (names.ValueFromIndex(i) == display) return names.Names(i);
    return display;
}

std::string TExpManager::LanguageDir() const {
    return localeDir_.empty() ? PackageDir() : IncludeTrailingPathDelimiter(localeDir_);
}

void TExpManager::CreateLangSubMenu(TExpMenuItem* parent) {
    if (!parent) return;
    ClearItems(parent, langActions_);
    auto item = [&](const std::string& caption, const TNotifyEvent& proc) {
        return CreateNewItem(caption, proc, parent, langActions_);
    };
    item("Default (" + TranslateLangName(DefaultLocaleStr(SPackageLanguage)) + ")",
         TNotifyEvent::Of<&TExpManager::SelectDefaultLanguage>(this));
    item("-", nullptr);

    auto modules = CommaList(localeModules_);
    TStringList languages;
    for (int i = 0; i < modules->Count(); ++i)
        if (FileExists(LanguageDir() + modules->ValueFromIndex(i)))
            languages.Add(TranslateLangName(modules->Names(i)));
    languages.Sort();
    for (int i = 0; i < languages.Count(); ++i)
        item(languages[i], TNotifyEvent::Of<&TExpManager::SelectLanguage>(this));

    if (!parent->Item(parent->Count() - 1)->IsLine()) item("-", nullptr);
    item("Modules...", TNotifyEvent::Of<&TExpManager::EditLangModules>(this));
    SetActiveLanguageItem(parent);
}

void TExpManager::SetActiveLanguageItem(TExpMenuItem* parent) {
    auto check = [](TExpMenuItem* item) {
        if (item->Action()) item->Action()->SetChecked(true);
    };
    if (currentLocale_.empty()) {
        if (parent->Count() > 0) check(parent->Item(0));
        return;
    }
    std::string fileName = ExtractFileName(currentLocale_);
    auto modules = CommaList(localeModules_);
    for (int i = 0; i < modules->Count(); ++i) {
        if (!SameText(modules->ValueFromIndex(i), fileName)) continue;
        std::string display = TranslateLangName(modules->Names(i));
        for (int j = 2; j < parent->Count() - 1; ++j)
            if (SameText(parent->Item(j)->Caption(), display)) {
                check(parent->Item(j));
                return;
            }
        return;
    }
}

void TExpManager::SelectLanguage(TObject* Sender) {
    std::string caption;
    if (SenderChecked(Sender, caption)) return;
    std::string file = CommaList(localeModules_)->Values(RetranslateLangName(caption));
    if (file.empty()) return;
    std::string path = LanguageDir() + file;
    if (!FileExists(path)) return;
    currentLocale_ = path;
    LoadNewLanguage(path);
    SaveLocalization();
    DoRecreateExperts();
}

void TExpManager::SelectDefaultLanguage(TObject* Sender) {
    std::string caption;
    if (SenderChecked(Sender, caption)) return;
    currentLocale_.clear();
    LoadNewLanguage("");
    SaveLocalization();
    DoRecreateExperts();
}

// The dialog's result does not matter: closing it takes the list as it stands.
void TExpManager::EditLangModules(TObject* Sender) {
    TLocaleForm form;
    form.WorkDir = ExcludeTrailingPathDelimiter(LanguageDir());
    auto modules = CommaList(localeModules_);
    std::vector<std::pair<std::string, std::string>> rows;
    for (int i = 0; i < modules->Count(); ++i)
        rows.emplace_back(modules->Names(i), modules->ValueFromIndex(i));
    form.SetModules(rows);
    form.exec();

    TStringList result;
    for (const auto& [name, file] : form.Modules())
        result.Add(name + "=" + file);
    localeModules_ = result.GetCommaText();
    localeDir_ = IncludeTrailingPathDelimiter(form.WorkDir);
    CreateLangSubMenu(langItem_);
    SaveLocalization();
}

} // namespace zelvane
