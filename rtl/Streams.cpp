#include "rtl/Streams.h"

#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace rtl {

RTL_IMPLEMENT_CLASS(TStream)
RTL_IMPLEMENT_CLASS(TCustomMemoryStream)
RTL_IMPLEMENT_CLASS(TMemoryStream)
RTL_IMPLEMENT_CLASS(TStringStream)

void RaiseFileOpenError(bool create, const std::string& fileName, int err) {
    std::string msg = std::string(create ? "Cannot create file \"" : "Cannot open file \"") +
                      fileName + "\". " + std::strerror(err);
    if (create) throw EFCreateError(msg);
    throw EFOpenError(msg);
}

namespace {
int64_t SeekTarget(int64_t offset, TSeekOrigin origin, int64_t position, int64_t size) {
    switch (origin) {
    case soBeginning: return offset;
    case soCurrent: return position + offset;
    default: return size + offset;
    }
}

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;
} // namespace

// ---------------------------------------------------------------------------------------------

int64_t TStream::GetSize() {
    int64_t pos = Seek(0, soCurrent);
    int64_t size = Seek(0, soEnd);
    Seek(pos, soBeginning);
    return size;
}

void TStream::SetSize(int64_t) { throw EStreamError("Stream size cannot be changed"); }

void TStream::ReadBuffer(void* buffer, int64_t count) {
    if (count != 0 && Read(buffer, count) != count) throw EReadError("Stream read error");
}

void TStream::WriteBuffer(const void* buffer, int64_t count) {
    if (count != 0 && Write(buffer, count) != count) throw EWriteError("Stream write error");
}

int64_t TStream::CopyFrom(TStream* source, int64_t count) {
    if (count < 0) return 0;
    if (count == 0) {
        source->SetPosition(0);
        count = source->GetSize();
    }
    constexpr int64_t kMaxBuffer = 0xF000;
    std::unique_ptr<char[]> buffer(new char[static_cast<size_t>(std::min(count, kMaxBuffer)) + 1]);
    int64_t result = count;
    while (count > 0) {
        int64_t n = std::min(count, kMaxBuffer);
        source->ReadBuffer(buffer.get(), n);
        WriteBuffer(buffer.get(), n);
        count -= n;
    }
    return result;
}

// ---------------------------------------------------------------------------------------------

int64_t TCustomMemoryStream::Read(void* buffer, int64_t count) {
    if (position_ < 0 || count <= 0) return 0;
    int64_t n = std::min(count, size_ - position_);
    if (n <= 0) return 0;
    std::memcpy(buffer, memory_ + position_, static_cast<size_t>(n));
    position_ += n;
    return n;
}

int64_t TCustomMemoryStream::Seek(int64_t offset, TSeekOrigin origin) {
    position_ = SeekTarget(offset, origin, position_, size_);
    return position_;
}

void TCustomMemoryStream::SaveToStream(TStream* stream) {
    if (size_ != 0) stream->WriteBuffer(memory_, size_);
}

void TCustomMemoryStream::SaveToFile(const std::string& fileName) {
    FilePtr f(std::fopen(fileName.c_str(), "wb"));
    if (!f) RaiseFileOpenError(true, fileName, errno);
    if (size_ != 0 && std::fwrite(memory_, 1, static_cast<size_t>(size_), f.get()) !=
                          static_cast<size_t>(size_))
        throw EWriteError("Stream write error");
    if (std::fclose(f.release()) != 0) throw EWriteError("Stream write error");
}

// ---------------------------------------------------------------------------------------------

TMemoryStream::~TMemoryStream() {
    int64_t zero = 0;
    if (capacity_ != 0) Realloc(zero);
}

void* TMemoryStream::Realloc(int64_t& newCapacity) {
    // Grow in blocks of 8 KiB, as the platform does, so that many small writes stay cheap.
    constexpr int64_t kDelta = 0x2000;
    if (newCapacity > INT64_MAX - kDelta) throw EStreamError(SMemoryStreamError);
    if (newCapacity > 0 && newCapacity != size_)
        newCapacity = (newCapacity + (kDelta - 1)) & ~(kDelta - 1);
    if (newCapacity == capacity_) return memory_;
    if (newCapacity == 0) {
        std::free(memory_);
        return nullptr;
    }
    void* p = std::realloc(memory_, static_cast<size_t>(newCapacity));
    if (!p) throw EStreamError("Out of memory while expanding memory stream");
    return p;
}

void TMemoryStream::SetCapacity(int64_t newCapacity) {
    void* p = Realloc(newCapacity);
    memory_ = static_cast<char*>(p);
    capacity_ = p ? newCapacity : 0;
}

void TMemoryStream::SetSize(int64_t newSize) {
    if (newSize < 0) throw EStreamError("Invalid stream size");
    int64_t oldPosition = position_;
    SetCapacity(newSize);
    size_ = newSize;
    if (oldPosition > newSize) Seek(0, soEnd);
}

void TMemoryStream::Clear() {
    SetCapacity(0);
    size_ = 0;
    position_ = 0;
}

int64_t TMemoryStream::Write(const void* buffer, int64_t count) {
    if (position_ < 0 || count <= 0 || count > INT64_MAX - position_) return 0;
    int64_t end = position_ + count;
    if (end > size_) {
        if (end > capacity_) SetCapacity(end);
        if (position_ > size_) std::memset(memory_ + size_, 0, static_cast<size_t>(position_ - size_));
        size_ = end;
    }
    std::memcpy(memory_ + position_, buffer, static_cast<size_t>(count));
    position_ = end;
    return count;
}

void TMemoryStream::LoadFromStream(TStream* stream) {
    stream->SetPosition(0);
    int64_t count = stream->GetSize();
    SetSize(count);
    if (count != 0) stream->ReadBuffer(memory_, count);
    position_ = 0;
}

void TMemoryStream::LoadFromFile(const std::string& fileName) {
    FilePtr f(std::fopen(fileName.c_str(), "rb"));
    if (!f) RaiseFileOpenError(false, fileName, errno);
    std::string data;
    char buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f.get())) > 0) data.append(buf, n);
    if (std::ferror(f.get())) throw EReadError("Stream read error");
    SetSize(static_cast<int64_t>(data.size()));
    if (!data.empty()) std::memcpy(memory_, data.data(), data.size());
    position_ = 0;
}

// ---------------------------------------------------------------------------------------------

int64_t TStringStream::Read(void* buffer, int64_t count) {
    int64_t size = GetSize();
    if (position_ < 0 || count <= 0 || position_ >= size) return 0;
    int64_t n = std::min(count, size - position_);
    std::memcpy(buffer, data_.data() + position_, static_cast<size_t>(n));
    position_ += n;
    return n;
}

int64_t TStringStream::Write(const void* buffer, int64_t count) {
    if (position_ < 0 || count <= 0 || count > INT64_MAX - position_) return 0;
    size_t pos = static_cast<size_t>(position_);
    if (pos > data_.size()) data_.resize(pos, '\0');
    data_.replace(pos, std::min(data_.size() - pos, static_cast<size_t>(count)),
                  static_cast<const char*>(buffer), static_cast<size_t>(count));
    position_ += count;
    return count;
}

int64_t TStringStream::Seek(int64_t offset, TSeekOrigin origin) {
    position_ = SeekTarget(offset, origin, position_, GetSize());
    return position_;
}

void TStringStream::SetSize(int64_t newSize) {
    if (newSize < 0) throw EStreamError("Invalid stream size");
    data_.resize(static_cast<size_t>(newSize));
    if (position_ > newSize) position_ = newSize;
}

std::string TStringStream::ReadString(int64_t count) {
    if (position_ < 0) return {};
    int64_t n = std::max<int64_t>(0, std::min(count, GetSize() - position_));
    std::string r = n > 0 ? data_.substr(static_cast<size_t>(position_), static_cast<size_t>(n)) : "";
    position_ += n;
    return r;
}

} // namespace rtl
