// TSearchTable and TNamedStrings.
#include "foundation/Classes.h"

#include "rtl/TypInfo.h"

namespace zelvane {

RTL_IMPLEMENT_CLASS(TSearchTable)
RTL_IMPLEMENT_CLASS(TNamedStrings)

// ---------------------------------------------------------------------------------------------
// TSearchTable

void TSearchTable::SetAnsiComparing(bool value) {
    if (value == ansiComparing_) return;
    ansiComparing_ = value;
    if (Sorted()) {
        SetSorted(false);
        SetSorted(true);
    }
}

int TSearchTable::CompareStrings(const std::string& s1, const std::string& s2) const {
    return ansiComparing_ ? inherited::CompareStrings(s1, s2) : rtl::CompareText(s1, s2);
}

// ---------------------------------------------------------------------------------------------
// TNamedStrings

namespace {

// The name of a line: the text before its first "=", at position 2 or later; "" for none.
std::string LineName(const std::string& line) {
    size_t p = line.find('=');
    return p == std::string::npos || p == 0 ? std::string() : line.substr(0, p);
}

// Line numbers stand in the table in place of the entries' objects.
rtl::TObject* NumberObject(int n) {
    return reinterpret_cast<rtl::TObject*>(static_cast<intptr_t>(n));
}
int ObjectNumber(rtl::TObject* obj) {
    return static_cast<int>(reinterpret_cast<intptr_t>(obj));
}

} // namespace

TNamedStrings::TNamedStrings() : searchTable_(std::make_unique<TSearchTable>()) {
    searchTable_->Duplicates = rtl::dupError;
}

void TNamedStrings::PrepareSearchTable() {
    searchTable_->SetSorted(false);
    searchTable_->Clear();
    for (int i = 0; i < Count(); ++i) {
        std::string name = LineName(Strings(i));
        if (!name.empty()) searchTable_->AddObject(name, NumberObject(i));
    }
    // Sorting keeps names that occur twice.
    searchTable_->SetSorted(true);
}

void TNamedStrings::UnPrepareSearchTable() {
    searchTable_->SetSorted(false);
    searchTable_->Clear();
}

void TNamedStrings::SetQuickSearch(bool value) {
    if (value)
        PrepareSearchTable();
    else
        UnPrepareSearchTable();
}

bool TNamedStrings::FindByName(const std::string& name, int& line) {
    if (name.empty()) return false;
    int index = searchTable_->IndexOf(name);
    if (index < 0) return false;
    line = ObjectNumber(searchTable_->Objects(index));
    return true;
}

std::string TNamedStrings::GetNamedValue(const std::string& name) {
    if (!GetQuickSearch()) return Values(name);
    int line = 0;
    if (!FindByName(name, line)) return {};
    return rtl::Copy(Strings(line), static_cast<int64_t>(name.size()) + 2, INT32_MAX);
}

void TNamedStrings::SetNamedValue(const std::string& name, const std::string& value) {
    if (!GetQuickSearch()) {
        SetValue(name, value);
        return;
    }
    int line = 0;
    bool found = FindByName(name, line);
    if (!value.empty()) {
        // A new name goes in as an empty line, filled afterwards: the table doesn't learn it.
        if (!found) line = Add("");
        SetStrings(line, name + "=" + value);
    } else if (found) {
        Delete(line);
    }
}

std::string TNamedStrings::GetSearchText() const {
    std::string r;
    for (int i = 0; i < searchTable_->Count(); ++i)
        r += "\r\n" + rtl::Format("%s[%d]", {searchTable_->Strings(i),
                                             ObjectNumber(searchTable_->Objects(i))});
    return r;
}

void TNamedStrings::AddToTable(const std::string& line, int index) {
    if (!GetQuickSearch() || inMove_) return;
    std::string name = LineName(line);
    if (!name.empty()) searchTable_->AddObject(name, NumberObject(index));
}

// Where the whole text of a line is a name in the table, that entry takes the line's number.
void TNamedStrings::RenumberLine(int index) {
    int entry = 0;
    if (searchTable_->Find(Strings(index), entry))
        searchTable_->SetObjects(entry, NumberObject(index));
}

void TNamedStrings::Assign(rtl::TPersistent* source) {
    bool quick = GetQuickSearch();
    if (quick) UnPrepareSearchTable();
    inherited::Assign(source);
    if (quick) PrepareSearchTable();
}

int TNamedStrings::Add(const std::string& s) {
    return AddObject(s, nullptr);
}

int TNamedStrings::AddObject(const std::string& s, rtl::TObject* obj) {
    int index = inherited::AddObject(s, obj);
    AddToTable(s, index);
    return index;
}

void TNamedStrings::Insert(int index, const std::string& s) {
    inherited::Insert(index, s);
    // Numbers of later lines in the table are not shifted.
    AddToTable(s, index);
}

void TNamedStrings::Delete(int index) {
    if (GetQuickSearch() && !inMove_ && index >= 0 && index < Count()) {
        int entry = 0;
        if (searchTable_->Find(Strings(index), entry)) searchTable_->Delete(entry);
    }
    inherited::Delete(index);
}

void TNamedStrings::Clear() {
    inherited::Clear();
    searchTable_->Clear();
}

void TNamedStrings::Exchange(int index1, int index2) {
    inherited::Exchange(index1, index2);
    if (!GetQuickSearch()) return;
    RenumberLine(index1);
    RenumberLine(index2);
}

void TNamedStrings::Move(int curIndex, int newIndex) {
    // The inherited move deletes the line and inserts it anew.
    inMove_ = true;
    try {
        inherited::Move(curIndex, newIndex);
    } catch (...) {
        inMove_ = false;
        throw;
    }
    inMove_ = false;
    if (GetQuickSearch() && curIndex != newIndex) RenumberLine(newIndex);
}

} // namespace zelvane
