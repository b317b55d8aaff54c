// The foundation's classes: a look-ahead reader and a delimited-string reader over any stream,
// a stream over a memory-mapped file or named shared region, memory streams with their own
// allocation, and lists of objects and interfaces kept sorted and unique by identifier.
#pragma once

#include "foundation/AppUtils.h"
#include "rtl/IniFiles.h"
#include "rtl/Lists.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace zelvane {

using rtl::Exception;

// ---------------------------------------------------------------------------------------------
// Search table and named strings

// A string list that compares either by the locale's rules (AnsiComparing, the default) or by
// plain ASCII rules without regard to case (CompareText); sorting and finding follow.
class TSearchTable : public rtl::TStringList {
    RTL_CLASS(TSearchTable, rtl::TStringList)
public:
    TSearchTable() = default;

    bool AnsiComparing() const { return ansiComparing_; }
    // On a change, sorts again if the list is sorted.
    void SetAnsiComparing(bool value);

protected:
    int CompareStrings(const std::string& s1, const std::string& s2) const override;

private:
    bool ansiComparing_ = true;
};

// A list of "name=value" lines that can switch into a quick-search mode, in which a sorted
// table maps names to line numbers. The name of a line is the text before its first "=", which
// must stand at position 2 or later.
//
// In quick-search mode the table follows Add and Insert, but not every other change: Delete,
// Exchange and Move touch the table only where a line's whole text equals a name, and a value
// set for a new name is not found until the table is prepared anew. So the mode is meant for a
// list that is built first and then read.
class TNamedStrings : public rtl::TStringList {
    RTL_CLASS(TNamedStrings, rtl::TStringList)
public:
    TNamedStrings();

    // The line of the name; false for an empty or unknown name.
    bool FindByName(const std::string& name, int& line);
    std::string GetNamedValue(const std::string& name);
    void SetNamedValue(const std::string& name, const std::string& value);
    bool GetQuickSearch() const { return searchTable_->Sorted(); }
    void SetQuickSearch(bool value);
    void EnterQuickSearchMode() { SetQuickSearch(true); }
    void LeaveQuickSearchMode() { SetQuickSearch(false); }
    // Builds the table from the lines and sorts it, which turns quick-search mode on.
    void PrepareSearchTable();
    // Empties the table and turns quick-search mode off.
    void UnPrepareSearchTable();
    bool GetNamesAnsiComparing() const { return searchTable_->AnsiComparing(); }
    void SetNamesAnsiComparing(bool value) { searchTable_->SetAnsiComparing(value); }
    // A dump of the table: for each entry CR LF and "name[line]".
    std::string GetSearchText() const;
    TSearchTable* SearchTable() const { return searchTable_.get(); }

    void Assign(rtl::TPersistent* source) override;
    int Add(const std::string& s) override;
    int AddObject(const std::string& s, rtl::TObject* obj) override;
    void Insert(int index, const std::string& s) override;
    void Delete(int index) override;
    void Clear() override;
    void Exchange(int index1, int index2) override;
    void Move(int curIndex, int newIndex) override;

private:
    void AddToTable(const std::string& line, int index);
    void RenumberLine(int index);
    std::unique_ptr<TSearchTable> searchTable_;
    // Set while an inherited operation works through Delete and Insert, which must not touch
    // the table then.
    bool inMove_ = false;
};

// ---------------------------------------------------------------------------------------------
// Ini strings

// An INI document in memory, fed from a string list or a file. Lines are taken as they stand,
// without trimming:
// - empty lines, and lines whose first character is ";", are ignored;
// - "[name]" opens a section named by what stands between the brackets, blanks included; a
//   name may occur twice, and lookups reach only the first such section;
// - lines before the first section are ignored;
// - any other line belongs to the current section: with "=" at position 2 or later, the text
//   before the first "=" is the key and the rest the value; otherwise the whole line is a key
//   with an empty value. With SkipBareLines a line without a value, bare or "key=", is dropped.
// Written back, a key with an empty value is a bare line, and each section ends with an empty
// line; comments are not kept. Lookups are case-insensitive, and binary where a list is sorted.
//
// The sections list holds a key list per section as its object; a key list holds each value in
// a cell, its object. Both own what they hold. Writing never touches the file: UpdateFile does.
class TIniStrings : public rtl::TCustomIniFile {
    RTL_CLASS(TIniStrings, rtl::TCustomIniFile)
public:
    // A document in memory.
    TIniStrings();
    // A document of the file, loaded at once.
    explicit TIniStrings(const std::string& fileName);
    ~TIniStrings() override;

    // Re-reads the file; an empty name or a missing file clears the document.
    void LoadValues();
    // Writes the document to the file, replacing it atomically; a failure raises
    // EIniFileException and leaves the old file.
    void UpdateFile() override;
    // Adds the document's lines to the list, without clearing it.
    void GetStrings(rtl::TStrings* list);
    // Replaces the document by the lines.
    void SetStrings(rtl::TStrings* list);
    void Clear();

    // A new key list for the name, without a check for duplicates.
    rtl::TStringList* AddSection(const std::string& name);
    // The key list of the section, or nullptr.
    rtl::TStringList* GetSection(const std::string& name) const;
    bool HasSection(const std::string& name) const;
    bool HasKey(const std::string& section, const std::string& key) const;

    // The value; the default when the section or the key is missing. A key with an empty value
    // gives the empty value.
    std::string ReadString(const std::string& section, const std::string& key,
                           const std::string& def) override;
    void WriteString(const std::string& section, const std::string& key,
                     const std::string& value) override;
    // Adds the line to an existing section by the line rules, even if its key exists.
    void AddString(const std::string& section, const std::string& line);
    // Changes the key's text in place; the value stays.
    void ReplaceString(const std::string& section, const std::string& key,
                       const std::string& newKey);
    void DeleteKey(const std::string& section, const std::string& key) override;
    void EraseSection(const std::string& section) override;
    // Clears the list and assigns the section's key list to it: the list then shares the value
    // cells, which stay the document's.
    void ReadSection(const std::string& section, rtl::TStrings* list) override;
    // Assigns the sections list to the list.
    void ReadSections(rtl::TStrings* list) override;
    // Clears the list and fills it with the section's lines as GetStrings writes them.
    void ReadSectionValues(const std::string& section, rtl::TStrings* list) override;
    bool ValueExists(const std::string& section, const std::string& key) override {
        return HasKey(section, key);
    }

    bool GetSectionSorted() const { return sections_->Sorted(); }
    void SetSectionSorted(bool value) { sections_->SetSorted(value); }
    bool KeySorted() const { return keySorted_; }
    // On a change, sets the sorted flag of every key list, and keeps the mode for sections that
    // WriteString makes.
    void SetKeySorted(bool value);
    // Both modes on, or both off.
    void Sort();
    void UnSort();
    // Adds the line to the key list by the line rules.
    void DoAddString(rtl::TStringList* keys, const std::string& line);

    rtl::TStringList* Sections() const { return sections_.get(); }
    bool SkipBareLines = false;

    // The cell that holds a value, the object of its key's line.
    class TValueCell : public rtl::TObject {
    public:
        explicit TValueCell(std::string value) : Value(std::move(value)) {}
        std::string Value;
    };
    // The value of a key list's line.
    static const std::string& ValueAt(const rtl::TStringList* keys, int index);

private:
    std::unique_ptr<rtl::TStringList> sections_;
    bool keySorted_ = false;
};

// ---------------------------------------------------------------------------------------------
// Readers

// A look-ahead buffer over a stream. It starts at the stream's position; Position is the
// logical position in the source, which runs ahead of it by what the buffer holds unread.
class TSimpleReader : public rtl::TObject {
    RTL_CLASS(TSimpleReader, rtl::TObject)
public:
    TSimpleReader(rtl::TStream* stream, int bufSize);

    // Copies up to count bytes; a read across the end of the source gives what there was, and
    // at most a buffer's worth is given at once.
    int Read(void* buffer, int count);
    // Keeps the last `keep` unread bytes, moved to the start of the buffer, and fills the rest
    // from the source. Returns the number of bytes in the buffer.
    int ReadBuffer(int keep);
    // Moves within the buffer when the target lies in it, else seeks the source.
    void SetPosition(int64_t position);
    // Sets the source to the logical position and empties the buffer.
    void FlushBuffer();
    // The next unread bytes, at most count of them, left unread: when the buffer holds fewer
    // than count it is refilled first, as Read does.
    std::string_view Peek(int count) {
        if (count > bufEnd_ - bufPos_) ReadBuffer(bufEnd_ - bufPos_);
        return {buffer_.get() + bufPos_, static_cast<size_t>(std::min(count, bufEnd_ - bufPos_))};
    }
    // Passes over count of the unread bytes, which Peek has shown.
    void Skip(int count) {
        bufPos_ += count;
        position_ += count;
    }

    int64_t Position() const { return position_; }
    int BufSize() const { return bufSize_; }
    rtl::TStream* Stream() const { return stream_; }

private:
    rtl::TStream* stream_;
    int bufSize_;
    int bufPos_ = 0;
    int bufEnd_ = 0;
    int64_t position_ = 0;
    std::unique_ptr<char[]> buffer_;
};

class TMappedFileStream;

// Reads strings ended by a delimiter (CR LF by default) from a stream or a mapped file.
class TStringReader : public rtl::TObject {
    RTL_CLASS(TStringReader, rtl::TObject)
public:
    TStringReader() = default;
    explicit TStringReader(rtl::TStream* target) { SetTargetStream(target); }
    explicit TStringReader(const std::string& fileName) { SetTargetFile(fileName); }
    ~TStringReader() override;

    // The next string without its delimiter. False at the end of the source; a last string
    // without a delimiter is given first.
    bool ReadString(std::string& s);
    // Reads from this stream through the look-ahead buffer (a new one for this stream).
    void SetReader(rtl::TStream* stream);
    void SetStringDelimiter(const std::string& delimiter);
    // Maps the file read-only, owns it, and reads it without the buffer.
    void SetTargetFile(const std::string& fileName);
    // Takes the stream without owning it; with UseBuffer a new look-ahead buffer is made.
    void SetTargetStream(rtl::TStream* stream);
    // Sets the source to the logical position, so that it can be read from directly.
    void Synchronize();

    const std::string& Delimiter() const { return delimiter_; }
    const std::string& TargetFile() const { return targetFile_; }
    rtl::TStream* Target() const { return target_; }
    bool UseBuffer = true;
    int ChunkSize = 100;
    int BufSize = 4096;

private:
    void FreeTarget();
    int ReadChunk(char* dest, int count);

    std::unique_ptr<TSimpleReader> reader_;
    std::string delimiter_ = "\r\n";
    std::string targetFile_;
    rtl::TStream* target_ = nullptr;
    // The target when the reader opened it itself (a file); empty for a stream it was given.
    std::unique_ptr<rtl::TStream> ownedTarget_;
};

// ---------------------------------------------------------------------------------------------
// Streams

RTL_EXCEPTION(EMFStreamError, Exception)

// A stream over a memory-mapped view of a file, or of a named region of shared memory. Reads
// and writes are plain copies from and to the view; the stream never grows.
class TMappedFileStream : public rtl::TStream {
    RTL_CLASS(TMappedFileStream, rtl::TStream)
public:
    // Over an open file (a descriptor), which the stream doesn't own. newSize is the size of
    // the mapping: 0 maps the whole file, more grows the file to it.
    TMappedFileStream(int fileHandle, bool mapped, int64_t newSize, bool readOnly);
    // Opens the file, or creates it when it is missing (not read-only, newSize above 0).
    TMappedFileStream(const std::string& fileName, bool mapped, int64_t newSize, bool readOnly);
    // A region of shared memory named mapName (an empty name makes a private one), of size
    // bytes, without a file.
    static std::unique_ptr<TMappedFileStream> CreateSys(const std::string& mapName, bool mapped,
                                                        int64_t size, bool readOnly);
    ~TMappedFileStream() override;

    void SetMapped(bool value);
    bool Mapped() const { return mapped_; }
    int64_t Read(void* buffer, int64_t count) override;
    int64_t Write(const void* buffer, int64_t count) override;
    int64_t Seek(int64_t offset, rtl::TSeekOrigin origin) override {
        position_ = origin == rtl::soBeginning ? offset
                    : origin == rtl::soCurrent ? position_ + offset
                                               : size_ + offset;
        return position_;
    }
    int64_t GetSize() override { return size_; }
    void SaveToStream(rtl::TStream* stream);
    void SaveToFile(const std::string& fileName);
    void FlushView();

    void* Memory() const { return memory_; }
    const std::string& MapName() const { return mapName_; }
    bool ReadOnly() const { return readOnly_; }
    int64_t MapSize() const { return mapSize_; }
    int FileHandle() const { return fileHandle_; }

private:
    TMappedFileStream() = default;
    void Init(int fileHandle, bool mapped, int64_t newSize, bool readOnly);

    int fileHandle_ = -1;
    int mapHandle_ = -1; // the shared-memory object of a named region
    std::string mapName_;
    bool mapped_ = false;
    char* memory_ = nullptr;
    int64_t position_ = 0;
    bool readOnly_ = false;
    bool ownsFile_ = false;
    bool ownsRegionName_ = false; // made the named region, and removes its name at the end
    int64_t size_ = 0;
    int64_t mapSize_ = 0;
};

class THeap;

// Heap flags of the platform, kept in THeapStream::Flags.
constexpr uint32_t HEAP_GENERATE_EXCEPTIONS = 0x04;
constexpr uint32_t HEAP_ZERO_MEMORY = 0x08;

// A memory stream whose block comes from a heap: the process's, or a private one of its own.
// Capacities are whole multiples of 4096.
class THeapStream : public rtl::TMemoryStream {
    RTL_CLASS(THeapStream, rtl::TMemoryStream)
public:
    // On the process's heap.
    explicit THeapStream(bool zeroMemory = false);
    // On a private heap of initialSize bytes that may grow to maximumSize (0: no limit).
    THeapStream(int64_t initialSize, int64_t maximumSize, bool zeroMemory);
    ~THeapStream() override;

    // Gives free memory back to the system and answers the largest free block (for the process's
    // heap, what stays free in it). A private heap with nothing left to give raises the system's
    // error.
    int64_t Compact();

    bool SharedHeap() const { return !heap_; }
    uint32_t Flags() const { return flags_; }
    THeap* Heap() const { return heap_.get(); }

protected:
    void* Realloc(int64_t& newCapacity) override;

private:
    std::unique_ptr<THeap> heap_;
    uint32_t flags_;
};

// A memory stream whose capacities are whole multiples of 4096.
class TMemStream : public rtl::TMemoryStream {
    RTL_CLASS(TMemStream, rtl::TMemoryStream)
public:
    TMemStream() = default;
    ~TMemStream() override;

protected:
    void* Realloc(int64_t& newCapacity) override;
};

// A saved view of a memory stream.
struct TBufInfo {
    void* Memory = nullptr;
    int64_t Size = 0;
    int64_t Position = 0;
};

// Saves the memory, size and position of a stream.
void MemStreamToBuf(rtl::TCustomMemoryStream* stream, TBufInfo& info);
// Sets them on another stream, without copying: the stream then reads the same memory, and
// doesn't own it. A TMemoryStream target must be a TMemStream or THeapStream, which copy the
// memory into a block of their own before they first grow it.
void BufToMemStream(const TBufInfo& info, rtl::TCustomMemoryStream* stream);

// ---------------------------------------------------------------------------------------------
// Identifier lists

// An item that names itself.
class IIdentIntf : public rtl::IInterface {
public:
    static const rtl::TGUID IID; // {53251D11-A916-11D4-B1D7-000000000000}
    virtual std::string GetIdent() = 0;
    virtual void SetIdent(const std::string& ident) = 0;

protected:
    ~IIdentIntf() = default;
};

RTL_EXCEPTION(EIdentListError, Exception)

// Objects kept sorted by their identifier (CompareText), none sharing one. The list doesn't own
// them.
class TIdentList : public rtl::TObject {
    RTL_CLASS(TIdentList, rtl::TObject)
public:
    TIdentList() = default;

    int Add(rtl::TObject* item);
    void Clear() { items_.Clear(); }
    void Delete(int index) { items_.Delete(index); }
    // A binary search; index is the item's place, or where it would go.
    virtual bool Find(const std::string& ident, int& index);
    int GetCount() const { return items_.Count(); }
    rtl::TObject* GetItem(int index) const;
    // The index of the item of the same identifier, or -1.
    int IndexOf(rtl::TObject* item);
    int Remove(rtl::TObject* item);

private:
    static IIdentIntf* IdentOf(rtl::TObject* item);
    rtl::TList items_;
};

// Interfaces kept sorted by their identifier, each counted by the list while it holds it.
class TIdentIntfList : public rtl::TObject {
    RTL_CLASS(TIdentIntfList, rtl::TObject)
public:
    TIdentIntfList() = default;
    ~TIdentIntfList() override;

    int Add(IIdentIntf* item);
    void Clear();
    void Delete(int index);
    bool Find(const std::string& ident, int& index);
    int GetCount() const { return static_cast<int>(items_.size()); }
    IIdentIntf* GetItem(int index) const;
    int IndexOf(IIdentIntf* item);
    int Remove(IIdentIntf* item);

private:
    std::vector<IIdentIntf*> items_;
    std::mutex lock_;
};

} // namespace zelvane
