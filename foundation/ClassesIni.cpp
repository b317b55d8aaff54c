// TIniStrings.
#include "foundation/Classes.h"

#include "rtl/TypInfo.h"

namespace zelvane {

RTL_IMPLEMENT_CLASS(TIniStrings)

TIniStrings::TIniStrings() : TIniStrings(std::string()) {}

TIniStrings::TIniStrings(const std::string& fileName)
    : rtl::TCustomIniFile(fileName), sections_(std::make_unique<rtl::TStringList>(true)) {
    if (!fileName.empty()) LoadValues();
}

TIniStrings::~TIniStrings() {
    Clear();
}

void TIniStrings::Clear() {
    sections_->Clear();
}

void TIniStrings::LoadValues() {
    if (FileName().empty() || !rtl::FileExists(FileName())) {
        Clear();
        return;
    }
    rtl::TStringList lines;
    lines.LoadFromFile(FileName());
    SetStrings(&lines);
}

void TIniStrings::UpdateFile() {
    rtl::TStringList lines;
    GetStrings(&lines);
    // As the runtime's ini files write theirs: a crash leaves the old file or the new one.
    rtl::ReplaceFileAtomically(FileName(), lines.GetText());
}

const std::string& TIniStrings::ValueAt(const rtl::TStringList* keys, int index) {
    return static_cast<TValueCell*>(keys->Objects(index))->Value;
}

void TIniStrings::GetStrings(rtl::TStrings* list) {
    list->BeginUpdate();
    try {
        for (int s = 0; s < sections_->Count(); ++s) {
            list->Add("[" + sections_->Strings(s) + "]");
            auto* keys = static_cast<rtl::TStringList*>(sections_->Objects(s));
            for (int k = 0; k < keys->Count(); ++k) {
                const std::string& value = ValueAt(keys, k);
                list->Add(value.empty() ? keys->Strings(k) : keys->Strings(k) + "=" + value);
            }
            list->Add("");
        }
    } catch (...) {
        list->EndUpdate();
        throw;
    }
    list->EndUpdate();
}

void TIniStrings::SetStrings(rtl::TStrings* list) {
    // The lists stay in the order of the text while it is read.
    const bool sectionSorted = GetSectionSorted();
    const bool keySorted = keySorted_;
    SetSectionSorted(false);
    keySorted_ = false;
    Clear();
    rtl::TStringList* current = nullptr;
    for (int i = 0; i < list->Count(); ++i) {
        const std::string line = list->Strings(i);
        if (line.empty() || line[0] == ';') continue;
        if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
            current = AddSection(line.substr(1, line.size() - 2));
            continue;
        }
        if (current) DoAddString(current, line);
    }
    SetSectionSorted(sectionSorted);
    SetKeySorted(keySorted);
}

rtl::TStringList* TIniStrings::AddSection(const std::string& name) {
    auto keys = std::make_unique<rtl::TStringList>(true);
    int index = sections_->AddObject(name, keys.get());
    // A sorted sections list that ignores a duplicate keeps the section it has.
    if (sections_->Objects(index) != keys.get())
        return static_cast<rtl::TStringList*>(sections_->Objects(index));
    return keys.release();
}

rtl::TStringList* TIniStrings::GetSection(const std::string& name) const {
    int index = sections_->IndexOf(name);
    return index < 0 ? nullptr : static_cast<rtl::TStringList*>(sections_->Objects(index));
}

bool TIniStrings::HasSection(const std::string& name) const {
    return GetSection(name);
}

bool TIniStrings::HasKey(const std::string& section, const std::string& key) const {
    rtl::TStringList* keys = GetSection(section);
    return keys && keys->IndexOf(key) >= 0;
}

void TIniStrings::DoAddString(rtl::TStringList* keys, const std::string& line) {
    size_t p = line.find('=');
    std::string key, value;
    if (p != std::string::npos && p > 0) {
        key = line.substr(0, p);
        value = line.substr(p + 1);
    } else {
        key = line;
    }
    // A line without a value, bare or "key=", isn't kept when the switch asks so.
    if (SkipBareLines && value.empty()) return;
    auto cell = std::make_unique<TValueCell>(std::move(value));
    int index = keys->AddObject(key, cell.get());
    // A sorted key list that ignores a duplicate doesn't take the cell.
    if (keys->Objects(index) == cell.get()) cell.release();
}

std::string TIniStrings::ReadString(const std::string& section, const std::string& key,
                                    const std::string& def) {
    rtl::TStringList* keys = GetSection(section);
    if (!keys) return def;
    int index = keys->IndexOf(key);
    return index < 0 ? def : ValueAt(keys, index);
}

void TIniStrings::WriteString(const std::string& section, const std::string& key,
                              const std::string& value) {
    rtl::TStringList* keys = GetSection(section);
    if (!keys) {
        keys = AddSection(section);
        keys->SetSorted(keySorted_);
    }
    int index = keys->IndexOf(key);
    if (index >= 0)
        static_cast<TValueCell*>(keys->Objects(index))->Value = value;
    else
        DoAddString(keys, key + "=" + value);
}

void TIniStrings::AddString(const std::string& section, const std::string& line) {
    if (rtl::TStringList* keys = GetSection(section)) DoAddString(keys, line);
}

void TIniStrings::ReplaceString(const std::string& section, const std::string& key,
                                const std::string& newKey) {
    rtl::TStringList* keys = GetSection(section);
    if (!keys) return;
    int index = keys->IndexOf(key);
    if (index < 0) return;
    const bool sorted = keys->Sorted();
    keys->SetSorted(false);
    keys->SetStrings(index, newKey);
    keys->SetSorted(sorted);
}

void TIniStrings::DeleteKey(const std::string& section, const std::string& key) {
    rtl::TStringList* keys = GetSection(section);
    if (!keys) return;
    int index = keys->IndexOf(key);
    if (index >= 0) keys->Delete(index);
}

void TIniStrings::EraseSection(const std::string& section) {
    int index = sections_->IndexOf(section);
    if (index >= 0) sections_->Delete(index);
}

void TIniStrings::ReadSection(const std::string& section, rtl::TStrings* list) {
    list->Clear();
    if (rtl::TStringList* keys = GetSection(section)) list->Assign(keys);
}

void TIniStrings::ReadSections(rtl::TStrings* list) {
    list->Assign(sections_.get());
}

void TIniStrings::ReadSectionValues(const std::string& section, rtl::TStrings* list) {
    list->Clear();
    rtl::TStringList* keys = GetSection(section);
    if (!keys) return;
    list->BeginUpdate();
    for (int k = 0; k < keys->Count(); ++k) {
        const std::string& value = ValueAt(keys, k);
        list->Add(value.empty() ? keys->Strings(k) : keys->Strings(k) + "=" + value);
    }
    list->EndUpdate();
}

void TIniStrings::SetKeySorted(bool value) {
    if (value == keySorted_) return;
    keySorted_ = value;
    for (int s = 0; s < sections_->Count(); ++s)
        static_cast<rtl::TStringList*>(sections_->Objects(s))->SetSorted(value);
}

void TIniStrings::Sort() {
    SetSectionSorted(true);
    SetKeySorted(true);
}

void TIniStrings::UnSort() {
    SetSectionSorted(false);
    SetKeySorted(false);
}

} // namespace zelvane
