#include "rtl/Lists.h"

#include "rtl/FileStreams.h"
#include "rtl/Filer.h"

#include <algorithm>
#include <cstring>

namespace rtl {

RTL_IMPLEMENT_CLASS(TList)
RTL_IMPLEMENT_CLASS(TStrings)
RTL_IMPLEMENT_CLASS(TStringList)

namespace {

// A stable bottom-up merge sort that stays within the vector whatever the compare answers.
// rightFirst(r, l) tells whether the element r of the right run goes before l of the left run.
template <class T, class RightFirst> void MergeSort(std::vector<T>& v, RightFirst rightFirst) {
    const size_t n = v.size();
    if (n < 2) return;
    std::vector<T> buf(n);
    for (size_t width = 1; width < n; width *= 2) {
        for (size_t lo = 0; lo < n; lo += 2 * width) {
            size_t mid = std::min(lo + width, n), hi = std::min(lo + 2 * width, n);
            size_t i = lo, j = mid, k = lo;
            while (i < mid && j < hi) {
                if (rightFirst(v[j], v[i]))
                    buf[k++] = std::move(v[j++]);
                else
                    buf[k++] = std::move(v[i++]);
            }
            while (i < mid)
                buf[k++] = std::move(v[i++]);
            while (j < hi)
                buf[k++] = std::move(v[j++]);
        }
        v.swap(buf);
    }
}

} // namespace

// ---------------------------------------------------------------------------------------------
// TList

TList::~TList() {
    Clear();
}

void TList::Error(const char* msg, int data) {
    throw EListError(msg, {data});
}

void TList::CheckIndex(int index) const {
    if (index < 0 || index >= Count()) Error(SListIndexError, index);
}

void TList::Grow() {
    int delta = capacity_ > 64 ? capacity_ / 4 : capacity_ > 8 ? 16 : 4;
    SetCapacity(std::min(MaxListSize, capacity_ + delta));
}

int TList::Add(void* item) {
    int index = Count();
    if (index == capacity_) Grow();
    items_.push_back(item);
    if (item) Notify(item, lnAdded);
    return index;
}

void TList::Insert(int index, void* item) {
    if (index < 0 || index > Count()) Error(SListIndexError, index);
    if (Count() == capacity_) Grow();
    items_.insert(items_.begin() + index, item);
    if (item) Notify(item, lnAdded);
}

void TList::Delete(int index) {
    CheckIndex(index);
    void* item = items_[static_cast<size_t>(index)];
    items_.erase(items_.begin() + index);
    if (item) Notify(item, lnDeleted);
}

int TList::Remove(void* item) {
    int index = IndexOf(item);
    if (index >= 0) Delete(index);
    return index;
}

void* TList::Extract(void* item) {
    int index = IndexOf(item);
    if (index < 0) return nullptr;
    void* result = items_[static_cast<size_t>(index)];
    items_.erase(items_.begin() + index);
    Notify(result, lnExtracted);
    return result;
}

int TList::IndexOf(void* item) const {
    auto it = std::find(items_.begin(), items_.end(), item);
    return it == items_.end() ? -1 : static_cast<int>(it - items_.begin());
}

void TList::Exchange(int index1, int index2) {
    CheckIndex(index1);
    CheckIndex(index2);
    std::swap(items_[static_cast<size_t>(index1)], items_[static_cast<size_t>(index2)]);
}

void TList::Move(int curIndex, int newIndex) {
    if (curIndex == newIndex) return;
    CheckIndex(curIndex);
    CheckIndex(newIndex);
    void* item = items_[static_cast<size_t>(curIndex)];
    items_.erase(items_.begin() + curIndex);
    items_.insert(items_.begin() + newIndex, item);
}

void TList::Sort(const TListSortCompare& compare) {
    if (!compare) return;
    MergeSort(items_, [&](void* right, void* left) { return compare(right, left) < 0; });
}

void TList::Pack() {
    items_.erase(std::remove(items_.begin(), items_.end(), nullptr), items_.end());
}

void TList::Clear() {
    SetCount(0);
    SetCapacity(0);
}

TList* TList::Expand() {
    if (Count() == capacity_) Grow();
    return this;
}

void TList::SetCount(int newCount) {
    if (newCount < 0 || newCount > MaxListSize) Error(SListCountError, newCount);
    if (newCount > capacity_) SetCapacity(newCount);
    if (newCount > Count()) {
        items_.resize(static_cast<size_t>(newCount), nullptr);
    } else {
        for (int i = Count() - 1; i >= newCount; --i)
            Delete(i);
    }
}

void TList::SetCapacity(int newCapacity) {
    if (newCapacity < Count() || newCapacity > MaxListSize) Error(SListCapacityError, newCapacity);
    if (newCapacity == capacity_) return;
    if (newCapacity == 0) {
        std::vector<void*>().swap(items_);
    } else if (newCapacity > static_cast<int>(items_.capacity())) {
        items_.reserve(static_cast<size_t>(newCapacity));
    }
    capacity_ = newCapacity;
}

void* TList::Get(int index) const {
    CheckIndex(index);
    return items_[static_cast<size_t>(index)];
}

void TList::Put(int index, void* item) {
    CheckIndex(index);
    void* old = items_[static_cast<size_t>(index)];
    if (old == item) return;
    items_[static_cast<size_t>(index)] = item;
    if (old) Notify(old, lnDeleted);
    if (item) Notify(item, lnAdded);
}

void TList::Assign(const TList* source) {
    if (!source || source == this) return;
    Clear();
    SetCapacity(source->Capacity() < source->Count() ? source->Count() : source->Capacity());
    for (void* item : source->items_)
        Add(item);
}

// ---------------------------------------------------------------------------------------------
// TStrings

void TStrings::Error(const char* msg, int data) const {
    throw EStringListError(msg, {data});
}

int TStrings::Add(const std::string& s) {
    int index = GetCount();
    Insert(index, s);
    return index;
}

int TStrings::AddObject(const std::string& s, TObject* obj) {
    int index = Add(s);
    PutObject(index, obj);
    return index;
}

void TStrings::AddStrings(TStrings* strings) {
    if (!strings) return;
    BeginUpdate();
    try {
        int n = strings->GetCount();
        for (int i = 0; i < n; ++i)
            AddObject(strings->Get(i), strings->GetObject(i));
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

void TStrings::Assign(TPersistent* source) {
    if (auto* src = dynamic_cast<TStrings*>(source)) {
        if (src == this) return;
        BeginUpdate();
        try {
            Clear();
            Delimiter = src->Delimiter;
            QuoteChar = src->QuoteChar;
            NameValueSeparator = src->NameValueSeparator;
            AddStrings(src);
        } catch (...) {
            EndUpdate();
            throw;
        }
        EndUpdate();
        return;
    }
    TPersistent::Assign(source);
}

void TStrings::BeginUpdate() {
    if (updateCount_ == 0) SetUpdateState(true);
    ++updateCount_;
}

void TStrings::EndUpdate() {
    if (updateCount_ == 0) return;
    if (--updateCount_ == 0) SetUpdateState(false);
}

void TStrings::Exchange(int index1, int index2) {
    BeginUpdate();
    try {
        std::string s1 = Get(index1), s2 = Get(index2);
        TObject* o1 = GetObject(index1);
        TObject* o2 = GetObject(index2);
        Put(index1, s2);
        PutObject(index1, o2);
        Put(index2, s1);
        PutObject(index2, o1);
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

void TStrings::Move(int curIndex, int newIndex) {
    if (curIndex == newIndex) return;
    BeginUpdate();
    try {
        std::string s = Get(curIndex);
        TObject* obj = GetObject(curIndex);
        if (newIndex < 0 || newIndex >= GetCount()) Error(SListIndexError, newIndex);
        Delete(curIndex);
        InsertObject(newIndex, s, obj);
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

void TStrings::InsertObject(int index, const std::string& s, TObject* obj) {
    Insert(index, s);
    PutObject(index, obj);
}

bool TStrings::Equals(TStrings* strings) const {
    if (!strings) return false;
    int n = GetCount();
    if (n != strings->GetCount()) return false;
    for (int i = 0; i < n; ++i)
        if (Get(i) != strings->Get(i)) return false;
    return true;
}

int TStrings::IndexOf(const std::string& s) const {
    int n = GetCount();
    for (int i = 0; i < n; ++i)
        if (CompareStrings(Get(i), s) == 0) return i;
    return -1;
}

int TStrings::IndexOfName(const std::string& name) const {
    int n = GetCount();
    for (int i = 0; i < n; ++i) {
        std::string s = Get(i);
        size_t p = s.find(NameValueSeparator);
        if (p != std::string::npos && CompareStrings(s.substr(0, p), name) == 0) return i;
    }
    return -1;
}

int TStrings::IndexOfObject(TObject* obj) const {
    int n = GetCount();
    for (int i = 0; i < n; ++i)
        if (GetObject(i) == obj) return i;
    return -1;
}

void TStrings::Put(int index, const std::string& s) {
    TObject* obj = GetObject(index);
    Delete(index);
    InsertObject(index, s, obj);
}

int TStrings::CompareStrings(const std::string& s1, const std::string& s2) const {
    return AnsiCompareText(s1, s2);
}

std::string TStrings::Names(int index) const {
    std::string s = Get(index);
    size_t p = s.find(NameValueSeparator);
    return p == std::string::npos ? std::string() : s.substr(0, p);
}

std::string TStrings::Values(const std::string& name) const {
    int i = IndexOfName(name);
    return i < 0 ? std::string() : ValueFromIndex(i);
}

void TStrings::SetValue(const std::string& name, const std::string& value) {
    int i = IndexOfName(name);
    if (!value.empty()) {
        std::string line = name + NameValueSeparator + value;
        if (i < 0)
            Add(line);
        else
            Put(i, line);
    } else if (i >= 0) {
        Delete(i);
    }
}

std::string TStrings::ValueFromIndex(int index) const {
    std::string s = Get(index);
    size_t p = s.find(NameValueSeparator);
    return p == std::string::npos ? std::string() : s.substr(p + 1);
}

void TStrings::SetValueFromIndex(int index, const std::string& value) {
    if (value.empty()) {
        if (index >= 0) Delete(index);
        return;
    }
    if (index < 0) {
        Add(std::string(1, NameValueSeparator) + value);
        return;
    }
    Put(index, Names(index) + NameValueSeparator + value);
}

std::string TStrings::GetText() const {
    std::string r;
    int n = GetCount();
    for (int i = 0; i < n; ++i) {
        r += Get(i);
        r += "\r\n";
    }
    return r;
}

void TStrings::SetText(const std::string& text) {
    BeginUpdate();
    try {
        Clear();
        ForEachTextLine(text, [this](const std::string& line) { Add(line); });
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

std::string TStrings::JoinDelimited(char delimiter, char quoteChar) const {
    int n = GetCount();
    if (n == 1 && Get(0).empty()) return std::string(2, quoteChar);
    std::string r;
    for (int i = 0; i < n; ++i) {
        std::string s = Get(i);
        bool quote = false;
        for (char c : s)
            if (static_cast<unsigned char>(c) <= ' ' || c == quoteChar || c == delimiter) {
                quote = true;
                break;
            }
        if (i > 0) r += delimiter;
        r += quote ? AnsiQuotedStr(s, quoteChar) : s;
    }
    return r;
}

void TStrings::SplitDelimited(const std::string& value, char delimiter, char quoteChar) {
    // The platform reads the text as a C string: a NUL byte ends it.
    std::string text = value.substr(0, value.find('\0'));
    auto blank = [](char c) { return c != '\0' && static_cast<unsigned char>(c) <= ' '; };
    BeginUpdate();
    try {
        Clear();
        size_t i = 0;
        const size_t n = text.size();
        while (i < n && blank(text[i]))
            ++i;
        while (i < n) {
            std::string s;
            if (text[i] == quoteChar) {
                ++i;
                while (i < n) {
                    if (text[i] == quoteChar) {
                        if (i + 1 < n && text[i + 1] == quoteChar) {
                            s += quoteChar;
                            i += 2;
                            continue;
                        }
                        ++i;
                        break;
                    }
                    s += text[i++];
                }
            } else {
                size_t start = i;
                while (i<n&& static_cast<unsigned char>(text[i])> ' ' && text[i] != delimiter)
                    ++i;
                s = text.substr(start, i - start);
            }
            Add(s);
            while (i < n && blank(text[i]))
                ++i;
            if (i < n && text[i] == delimiter) {
                if (i + 1 == n) Add("");
                ++i;
                while (i < n && blank(text[i]))
                    ++i;
            }
        }
    } catch (...) {
        EndUpdate();
        throw;
    }
    EndUpdate();
}

std::string TStrings::GetDelimitedText() const {
    return JoinDelimited(Delimiter, QuoteChar);
}
void TStrings::SetDelimitedText(const std::string& text) {
    SplitDelimited(text, Delimiter, QuoteChar);
}
std::string TStrings::GetCommaText() const {
    return JoinDelimited(',', '"');
}
void TStrings::SetCommaText(const std::string& text) {
    SplitDelimited(text, ',', '"');
}

void TStrings::LoadFromStream(TStream* stream) {
    int64_t size = stream->GetSize() - stream->GetPosition();
    std::string data;
    if (size > 0) {
        data.resize(static_cast<size_t>(size));
        stream->ReadBuffer(data.data(), size);
    }
    SetText(data);
}

void TStrings::SaveToStream(TStream* stream) const {
    std::string text = GetText();
    stream->WriteBuffer(text.data(), static_cast<int64_t>(text.size()));
}

void TStrings::LoadFromFile(const std::string& fileName) {
    TFileStream stream(fileName, fmOpenRead | fmShareDenyWrite);
    LoadFromStream(&stream);
}

void TStrings::SaveToFile(const std::string& fileName) const {
    TFileStream stream(fileName, fmCreate);
    SaveToStream(&stream);
}

// ---------------------------------------------------------------------------------------------
// TStringList

TStringList::~TStringList() {
    OnChange = nullptr;
    OnChanging = nullptr;
    if (OwnsObjects)
        for (auto& item : list_)
            delete item.Obj;
}

void TStringList::CheckIndex(int index) const {
    if (index < 0 || index >= GetCount()) Error(SListIndexError, index);
}

void TStringList::Changed() {
    if (UpdateCount() == 0 && OnChange) OnChange(this);
}

void TStringList::Changing() {
    if (UpdateCount() == 0 && OnChanging) OnChanging(this);
}

void TStringList::SetUpdateState(bool updating) {
    if (updating)
        Changing();
    else
        Changed();
}

int TStringList::Add(const std::string& s) {
    return AddObject(s, nullptr);
}

int TStringList::AddObject(const std::string& s, TObject* obj) {
    int index;
    if (!sorted_) {
        index = GetCount();
    } else if (Find(s, index)) {
        switch (Duplicates) {
        case dupIgnore:
            return index;
        case dupError:
            Error(SDuplicateString, 0);
        default:
            break; // before the equal strings, where Find points
        }
    }
    InsertItem(index, s, obj);
    return index;
}

void TStringList::InsertItem(int index, const std::string& s, TObject* obj) {
    if (GetCount() >= MaxListSize) Error(SListCountError, GetCount() + 1);
    Changing();
    list_.insert(list_.begin() + index, Item{s, obj});
    Changed();
}

void TStringList::Insert(int index, const std::string& s) {
    if (sorted_) Error(SSortedListError, 0);
    if (index < 0 || index > GetCount()) Error(SListIndexError, index);
    InsertItem(index, s, nullptr);
}

void TStringList::Clear() {
    if (list_.empty()) return;
    Changing();
    std::vector<Item> old;
    old.swap(list_);
    if (OwnsObjects)
        for (auto& item : old)
            delete item.Obj;
    Changed();
}

void TStringList::Delete(int index) {
    CheckIndex(index);
    Changing();
    TObject* obj = list_[static_cast<size_t>(index)].Obj;
    list_.erase(list_.begin() + index);
    if (OwnsObjects) delete obj;
    Changed();
}

void TStringList::Move(int curIndex, int newIndex) {
    if (curIndex != newIndex && sorted_) Error(SSortedListError, 0);
    TStrings::Move(curIndex, newIndex);
}

void TStringList::Exchange(int index1, int index2) {
    CheckIndex(index1);
    CheckIndex(index2);
    Changing();
    std::swap(list_[static_cast<size_t>(index1)], list_[static_cast<size_t>(index2)]);
    Changed();
}

bool TStringList::Find(const std::string& s, int& index) const {
    bool found = false;
    int lo = 0, hi = GetCount() - 1;
    while (lo <= hi) {
        int mid = lo + (hi - lo) / 2;
        int c = CompareStrings(list_[static_cast<size_t>(mid)].Str, s);
        if (c < 0) {
            lo = mid + 1;
        } else {
            hi = mid - 1;
            if (c == 0) {
                found = true;
                // Without duplicates the first hit is the only one; with them, go on left to the
                // first equal string.
                if (Duplicates != dupAccept) lo = mid;
            }
        }
    }
    index = lo;
    return found;
}

int TStringList::IndexOf(const std::string& s) const {
    int index;
    if (sorted_) return Find(s, index) ? index : -1;
    // Compared in place: the general search copies every string out through Get.
    for (size_t i = 0; i < list_.size(); ++i)
        if (CompareStrings(list_[i].Str, s) == 0) return static_cast<int>(i);
    return -1;
}

std::string TStringList::Get(int index) const {
    CheckIndex(index);
    return list_[static_cast<size_t>(index)].Str;
}

TObject* TStringList::GetObject(int index) const {
    CheckIndex(index);
    return list_[static_cast<size_t>(index)].Obj;
}

void TStringList::Put(int index, const std::string& s) {
    if (sorted_) Error(SSortedListError, 0);
    CheckIndex(index);
    Changing();
    list_[static_cast<size_t>(index)].Str = s;
    Changed();
}

void TStringList::PutObject(int index, TObject* obj) {
    CheckIndex(index);
    Changing();
    list_[static_cast<size_t>(index)].Obj = obj;
    Changed();
}

void TStringList::SetCapacity(int newCapacity) {
    if (newCapacity < GetCount() || newCapacity > MaxListSize)
        Error(SListCapacityError, newCapacity);
    list_.reserve(static_cast<size_t>(newCapacity));
}

int TStringList::CompareStrings(const std::string& s1, const std::string& s2) const {
    return caseSensitive_ ? AnsiCompareStr(s1, s2) : AnsiCompareText(s1, s2);
}

void TStringList::CustomSort(const TStringListSortCompare& compare) {
    if (sorted_ || GetCount() < 2 || !compare) return;
    Changing();
    // Sort a permutation while the list stays as it is, so that the compare sees the indexes of
    // the unsorted list, then apply it.
    std::vector<int> order(list_.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<int>(i);
    try {
        MergeSort(order, [&](int right, int left) { return compare(this, right, left) < 0; });
    } catch (...) {
        Changed();
        throw;
    }
    std::vector<Item> sorted;
    sorted.reserve(list_.size());
    for (int i : order)
        sorted.push_back(std::move(list_[static_cast<size_t>(i)]));
    list_.swap(sorted);
    Changed();
}

void TStringList::Sort() {
    CustomSort([](TStringList* list, int i1, int i2) {
        return list->CompareStrings(list->list_[static_cast<size_t>(i1)].Str,
                                    list->list_[static_cast<size_t>(i2)].Str);
    });
}

void TStringList::SetSorted(bool value) {
    if (sorted_ == value) return;
    if (value) Sort();
    sorted_ = value;
}

void TStringList::SetCaseSensitive(bool value) {
    if (caseSensitive_ == value) return;
    caseSensitive_ = value;
    if (sorted_) {
        sorted_ = false;
        Sort();
        sorted_ = true;
    }
}

void TStrings::DefineProperties(TFiler* filer) {
    bool hasData;
    if (auto* ancestor = dynamic_cast<TStrings*>(filer->Ancestor))
        hasData = !Equals(ancestor);
    else
        hasData = filer->Ancestor ? true : Count() > 0;
    filer->DefineProperty(
        "Strings",
        [this](TReader* r) {
            r->ReadListBegin();
            BeginUpdate();
            try {
                Clear();
                while (!r->EndOfList()) Add(r->ReadString());
            } catch (...) {
                EndUpdate();
                throw;
            }
            EndUpdate();
            r->ReadListEnd();
        },
        [this](TWriter* w) {
            w->WriteListBegin();
            for (int i = 0; i < Count(); ++i) w->WriteString(Strings(i));
            w->WriteListEnd();
        },
        hasData);
}

} // namespace rtl
