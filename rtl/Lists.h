// The platform's lists: TList of pointers, the abstract TStrings and TStringList.
#pragma once

#include "rtl/Persistent.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace rtl {

class TStream;
class TStringList;

RTL_EVENT(TNotifyEvent, void(TObject* Sender), "Sender: TObject")

// The largest number of items a list holds, as the platform's MaxListSize.
inline constexpr int MaxListSize = 0x7FFFFFFF / 16;

// Sorting compares; a result < 0, 0 or > 0. The sorts are merge sorts: stable, and safe with a
// compare that isn't a consistent order.
using TListSortCompare = std::function<int(void* item1, void* item2)>;
using TStringListSortCompare = std::function<int(TStringList* list, int index1, int index2)>;

// Calls take(line) with each line of text, split as TStrings::SetText splits: at CR, LF or
// CR LF; a break at the end doesn't add an empty line.
template <class Take> void ForEachTextLine(std::string_view text, Take&& take) {
    size_t i = 0;
    while (i < text.size()) {
        size_t start = i;
        while (i < text.size() && text[i] != '\r' && text[i] != '\n')
            ++i;
        take(std::string(text.substr(start, i - start)));
        if (i < text.size() && text[i] == '\r') ++i;
        if (i < text.size() && text[i] == '\n') ++i;
    }
}

enum TListNotification : uint8_t { lnAdded, lnExtracted, lnDeleted };

// A list of pointers. Descendants hear of added, extracted and deleted items through Notify; as
// C++ destructors don't dispatch to descendants, a descendant whose Notify frees items calls
// Clear in its own destructor. A bad index raises EListError SListIndexError with the index; a bad
// capacity or count SListCapacityError / SListCountError.
class TList : public TObject {
    RTL_CLASS(TList, TObject)
public:
    TList() = default;
    ~TList() override;

    int Add(void* item);
    void Insert(int index, void* item);
    void Delete(int index);
    // Removes the first occurrence; returns its index, or -1.
    int Remove(void* item);
    // Removes the first occurrence without deleting it (notifying lnExtracted); returns the item,
    // or nullptr when it isn't in the list.
    void* Extract(void* item);
    int IndexOf(void* item) const;
    void Exchange(int index1, int index2);
    void Move(int curIndex, int newIndex);
    void Sort(const TListSortCompare& compare);
    // Removes the nil items.
    void Pack();
    virtual void Clear();
    TList* Expand();

    int Count() const { return static_cast<int>(items_.size()); }
    // More items are nil; fewer are dropped (and notified).
    void SetCount(int newCount);
    int Capacity() const { return capacity_; }
    void SetCapacity(int newCapacity);
    void* Items(int index) const { return Get(index); }
    void SetItems(int index, void* item) { Put(index, item); }
    void* operator[](int index) const { return Get(index); }
    void* Get(int index) const;
    void Put(int index, void* item);
    void* First() const { return Get(0); }
    void* Last() const { return Get(Count() - 1); }
    // Copies the items of another list.
    void Assign(const TList* source);

    [[noreturn]] static void Error(const char* msg, int data);

protected:
    virtual void Grow();
    virtual void Notify(void* ptr, TListNotification action) {}

private:
    void CheckIndex(int index) const;
    std::vector<void*> items_;
    int capacity_ = 0;
};

// ---------------------------------------------------------------------------------------------

// An abstract list of strings with an object per string. Descendants supply the storage through
// Get, GetCount, Insert, Delete, Clear and, when they keep objects, GetObject and PutObject;
// every other operation is built on those.
//
// Strings compare with CompareStrings (AnsiCompareText here; TStringList can be made
// case-sensitive). Errors raise EStringListError with the platform's texts.
class TStrings : public TPersistent {
    RTL_CLASS(TStrings, TPersistent)
public:
    TStrings() = default;

    virtual int Add(const std::string& s);
    virtual int AddObject(const std::string& s, TObject* obj);
    void Append(const std::string& s) { Add(s); }
    virtual void AddStrings(TStrings* strings);
    void Assign(TPersistent* source) override;
    // The lines are stored as the defined property "Strings": a list of strings, written when
    // they differ from the ancestor's lines or, without an ancestor, when there are any.
    void DefineProperties(TFiler* filer) override;
    void BeginUpdate();
    void EndUpdate();
    virtual void Clear() = 0;
    virtual void Delete(int index) = 0;
    virtual void Exchange(int index1, int index2);
    virtual void Move(int curIndex, int newIndex);
    virtual void Insert(int index, const std::string& s) = 0;
    void InsertObject(int index, const std::string& s, TObject* obj);
    // Same count and the same strings, case-sensitive.
    bool Equals(TStrings* strings) const;
    virtual int IndexOf(const std::string& s) const;
    int IndexOfName(const std::string& name) const;
    int IndexOfObject(TObject* obj) const;

    int Count() const { return GetCount(); }
    std::string Strings(int index) const { return Get(index); }
    std::string operator[](int index) const { return Get(index); }
    void SetStrings(int index, const std::string& s) { Put(index, s); }
    TObject* Objects(int index) const { return GetObject(index); }
    void SetObjects(int index, TObject* obj) { PutObject(index, obj); }
    virtual int GetCapacity() const { return GetCount(); }
    virtual void SetCapacity(int) {}

    // "name=value" lines. Names(i) is the text before the first separator ("" when there is
    // none); Values(name) the text after it for the first line of that name ("" when there is
    // none). Setting a value "" deletes the line.
    std::string Names(int index) const;
    std::string Values(const std::string& name) const;
    void SetValue(const std::string& name, const std::string& value);
    // The text after the separator, "" for a line without one.
    std::string ValueFromIndex(int index) const;
    void SetValueFromIndex(int index, const std::string& value);

    // The lines, each ended by CR LF. Reading splits at CR, LF or CR LF; a break at the end
    // doesn't add an empty line.
    virtual std::string GetText() const;
    virtual void SetText(const std::string& text);
    std::string Text() const { return GetText(); }

    // The platform's delimited form: strings joined by Delimiter, each quoted with QuoteChar when
    // it holds a blank, a control byte, the quote or the delimiter (a single empty string is "").
    // Reading splits at the delimiter and, as the platform does, at blanks outside quotes.
    std::string GetDelimitedText() const;
    void SetDelimitedText(const std::string& text);
    // The delimited form with ',' and '"', whatever Delimiter and QuoteChar are.
    std::string GetCommaText() const;
    void SetCommaText(const std::string& text);

    char Delimiter = ',';
    char QuoteChar = '"';
    char NameValueSeparator = '=';

    virtual void LoadFromStream(TStream* stream);
    virtual void SaveToStream(TStream* stream) const;
    virtual void LoadFromFile(const std::string& fileName);
    virtual void SaveToFile(const std::string& fileName) const;

    int UpdateCount() const { return updateCount_; }

protected:
    virtual std::string Get(int index) const = 0;
    virtual int GetCount() const = 0;
    virtual TObject* GetObject(int index) const { return nullptr; }
    virtual void Put(int index, const std::string& s);
    virtual void PutObject(int index, TObject* obj) {}
    virtual void SetUpdateState(bool updating) {}
    virtual int CompareStrings(const std::string& s1, const std::string& s2) const;
    [[noreturn]] void Error(const char* msg, int data) const;

private:
    std::string JoinDelimited(char delimiter, char quoteChar) const;
    void SplitDelimited(const std::string& text, char delimiter, char quoteChar);
    int updateCount_ = 0;
};

RTL_ENUM(TDuplicates, dupIgnore, dupAccept, dupError)

// A list of strings in memory. When Sorted, Add and AddObject insert in order and treat equal
// strings by Duplicates (dupIgnore: keep the existing one and answer its index, dupAccept: add
// it before the equal ones, where Find points, dupError: raise SDuplicateString); Insert, Put and
// Move raise SSortedListError. With OwnsObjects the list frees the objects of the lines it deletes.
// OnChanging and OnChange fire around every change, once around a BeginUpdate..EndUpdate block.
class TStringList : public TStrings {
    RTL_CLASS(TStringList, TStrings)
public:
    TStringList() = default;
    explicit TStringList(bool ownsObjects) : OwnsObjects(ownsObjects) {}
    ~TStringList() override;

    int Add(const std::string& s) override;
    int AddObject(const std::string& s, TObject* obj) override;
    void Clear() override;
    void Delete(int index) override;
    void Exchange(int index1, int index2) override;
    void Move(int curIndex, int newIndex) override;
    void Insert(int index, const std::string& s) override;
    int IndexOf(const std::string& s) const override;
    // Binary search of a sorted list: true when found; index is the first equal string or the
    // place where s would be inserted.
    virtual bool Find(const std::string& s, int& index) const;
    virtual void Sort();
    virtual void CustomSort(const TStringListSortCompare& compare);
    int GetCapacity() const override { return static_cast<int>(list_.capacity()); }
    void SetCapacity(int newCapacity) override;

    bool Sorted() const { return sorted_; }
    void SetSorted(bool value);
    bool CaseSensitive() const { return caseSensitive_; }
    void SetCaseSensitive(bool value);

    TDuplicates Duplicates = dupIgnore;
    bool OwnsObjects = false;
    TNotifyEvent OnChange;
    TNotifyEvent OnChanging;

protected:
    std::string Get(int index) const override;
    int GetCount() const override { return static_cast<int>(list_.size()); }
    TObject* GetObject(int index) const override;
    void Put(int index, const std::string& s) override;
    void PutObject(int index, TObject* obj) override;
    void SetUpdateState(bool updating) override;
    int CompareStrings(const std::string& s1, const std::string& s2) const override;
    virtual void Changed();
    virtual void Changing();
    virtual void InsertItem(int index, const std::string& s, TObject* obj);

private:
    struct Item {
        std::string Str;
        TObject* Obj = nullptr;
    };
    void CheckIndex(int index) const;
    std::vector<Item> list_;
    bool sorted_ = false;
    bool caseSensitive_ = false;
};

} // namespace rtl
