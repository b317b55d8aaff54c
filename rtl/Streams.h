// Streams: the abstract TStream and the memory streams.
// File and handle streams live in rtl/FileStreams.h.
#pragma once

#include "rtl/System.h"

#include <cstdint>
#include <string>

namespace rtl {

enum TSeekOrigin : uint8_t { soBeginning = 0, soCurrent = 1, soEnd = 2 };
// The platform's numeric origins.
constexpr uint16_t soFromBeginning = 0;
constexpr uint16_t soFromCurrent = 1;
constexpr uint16_t soFromEnd = 2;

class TStream : public TObject {
    RTL_CLASS(TStream, TObject)
public:
    // Reads up to count bytes; returns how many were read.
    virtual int64_t Read(void* buffer, int64_t count) = 0;
    // Writes up to count bytes; returns how many were written.
    virtual int64_t Write(const void* buffer, int64_t count) = 0;
    virtual int64_t Seek(int64_t offset, TSeekOrigin origin) = 0;

    int64_t GetPosition() { return Seek(0, soCurrent); }
    void SetPosition(int64_t pos) { Seek(pos, soBeginning); }
    virtual int64_t GetSize();
    virtual void SetSize(int64_t newSize);

    // Read or write exactly count bytes, or raise EReadError "Stream read error" /
    // EWriteError "Stream write error".
    void ReadBuffer(void* buffer, int64_t count);
    void WriteBuffer(const void* buffer, int64_t count);
    // Copies count bytes from source at its position; with count 0 the whole source from its
    // start. Returns the number copied.
    int64_t CopyFrom(TStream* source, int64_t count);

    // Conveniences for the filer and the tools.
    template <class T> void WriteValue(const T& v) { WriteBuffer(&v, sizeof v); }
    template <class T> T ReadValue() {
        T v;
        ReadBuffer(&v, sizeof v);
        return v;
    }
};

// A stream over a block of memory.
class TCustomMemoryStream : public TStream {
    RTL_CLASS(TCustomMemoryStream, TStream)
public:
    int64_t Read(void* buffer, int64_t count) override;
    int64_t Seek(int64_t offset, TSeekOrigin origin) override;
    int64_t GetSize() override { return size_; }

    void* Memory() const { return memory_; }
    void SaveToStream(TStream* stream);
    void SaveToFile(const std::string& fileName);

protected:
    void SetPointer(void* ptr, int64_t size) {
        memory_ = static_cast<char*>(ptr);
        size_ = size;
    }
    char* memory_ = nullptr;
    int64_t size_ = 0;
    int64_t position_ = 0;
};

// A growing stream in memory. Realloc may be replaced by a descendant that manages the memory
// itself.
class TMemoryStream : public TCustomMemoryStream {
    RTL_CLASS(TMemoryStream, TCustomMemoryStream)
public:
    TMemoryStream() = default;
    ~TMemoryStream() override;

    int64_t Write(const void* buffer, int64_t count) override;
    void SetSize(int64_t newSize) override;
    void Clear();
    void LoadFromStream(TStream* stream);
    void LoadFromFile(const std::string& fileName);
    int64_t Capacity() const { return capacity_; }

protected:
    // Returns a block of at least newCapacity bytes holding the old contents, or frees the block
    // and returns nullptr for 0. Raises EStreamError "Out of memory while expanding memory
    // stream" when it can't.
    virtual void* Realloc(int64_t& newCapacity);

private:
    void SetCapacity(int64_t newCapacity);
    int64_t capacity_ = 0;
};

// A stream whose contents are a string.
class TStringStream : public TStream {
    RTL_CLASS(TStringStream, TStream)
public:
    explicit TStringStream(std::string data = {}) : data_(std::move(data)) {}
    int64_t Read(void* buffer, int64_t count) override;
    int64_t Write(const void* buffer, int64_t count) override;
    int64_t Seek(int64_t offset, TSeekOrigin origin) override;
    void SetSize(int64_t newSize) override;
    int64_t GetSize() override { return static_cast<int64_t>(data_.size()); }

    const std::string& DataString() const { return data_; }
    // Reads count bytes from the position as a string.
    std::string ReadString(int64_t count);
    void WriteString(const std::string& s) { Write(s.data(), static_cast<int64_t>(s.size())); }

private:
    std::string data_;
    int64_t position_ = 0;
};

} // namespace rtl

namespace rtl {
// Raises EFCreateError "Cannot create file "name". reason" or EFOpenError "Cannot open file
// "name". reason" for the errno value err; shared by every stream that opens files.
[[noreturn]] void RaiseFileOpenError(bool create, const std::string& fileName, int err);
} // namespace rtl
