// TSimpleReader and TStringReader.
#include "foundation/Classes.h"

#include "rtl/TypInfo.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

namespace zelvane {

RTL_IMPLEMENT_CLASS(TSimpleReader)
RTL_IMPLEMENT_CLASS(TStringReader)

// ---------------------------------------------------------------------------------------------
// TSimpleReader

TSimpleReader::TSimpleReader(rtl::TStream* stream, int bufSize)
    : stream_(stream), bufSize_(bufSize) {
    if (!stream) throw rtl::EStreamError("A reader needs a stream");
    if (bufSize <= 0) throw rtl::EStreamError("Invalid buffer size " + std::to_string(bufSize));
    buffer_.reset(new char[static_cast<size_t>(bufSize)]);
    position_ = stream->GetPosition();
}

int TSimpleReader::Read(void* buffer, int count) {
    if (count <= 0) return 0;
    if (count > bufEnd_ - bufPos_) {
        ReadBuffer(bufEnd_ - bufPos_);
        count = std::min(count, bufEnd_);
    }
    std::memcpy(buffer, buffer_.get() + bufPos_, static_cast<size_t>(count));
    bufPos_ += count;
    position_ += count;
    return count;
}

int TSimpleReader::ReadBuffer(int keep) {
    keep = std::clamp(keep, 0, bufEnd_);
    if (keep > 0)
        std::memmove(buffer_.get(), buffer_.get() + bufEnd_ - keep, static_cast<size_t>(keep));
    int64_t n = stream_->Read(buffer_.get() + keep, bufSize_ - keep);
    bufEnd_ = keep + static_cast<int>(std::max<int64_t>(n, 0));
    bufPos_ = 0;
    return bufEnd_;
}

void TSimpleReader::SetPosition(int64_t position) {
    int64_t start = position_ - bufPos_; // the source position of the buffer's first byte
    if (position >= start && position <= start + bufEnd_) {
        bufPos_ = static_cast<int>(position - start);
        position_ = position;
        return;
    }
    stream_->SetPosition(position);
    bufPos_ = bufEnd_ = 0;
    position_ = position;
}

void TSimpleReader::FlushBuffer() {
    stream_->SetPosition(position_);
    bufPos_ = bufEnd_ = 0;
}

// ---------------------------------------------------------------------------------------------
// TStringReader

namespace {

// The first place of the delimiter in text, or npos: memchr finds its first byte, the others
// are compared there.
size_t FindDelimiter(std::string_view text, std::string_view delimiter, size_t from = 0) {
    const size_t n = delimiter.size();
    const char* data = text.data();
    const char* p = data + std::min(from, text.size());
    const char* end = data + text.size();
    while (static_cast<size_t>(end - p) >= n) {
        p = static_cast<const char*>(
            std::memchr(p, delimiter[0], static_cast<size_t>(end - p) - n + 1));
        if (!p) break;
        size_t i = 1;
        while (i < n && p[i] == delimiter[i])
            ++i;
        if (i == n) return static_cast<size_t>(p - data);
        ++p;
    }
    return std::string_view::npos;
}

// ReadString over the look-ahead buffer.
bool ReadBuffered(TSimpleReader& reader, int chunkSize, std::string_view delimiter,
                  std::string& s) {
    const size_t delimLen = delimiter.size();
    s.clear();
    for (;;) {
        // The chunk that ReadChunk would copy, where it lies in the buffer.
        std::string_view chunk = reader.Peek(chunkSize);
        if (chunk.empty()) return !s.empty();
        if (s.empty()) {
            size_t p = FindDelimiter(chunk, delimiter);
            if (p != std::string_view::npos) {
                s.assign(chunk.data(), p);
                reader.Skip(static_cast<int>(p + delimLen));
                return true;
            }
            s.assign(chunk);
            reader.Skip(static_cast<int>(chunk.size()));
            continue;
        }
        // The string runs over several chunks: a delimiter may straddle two.
        size_t len = s.size();
        size_t searchFrom = len >= delimLen ? len - delimLen + 1 : 0;
        s.append(chunk);
        reader.Skip(static_cast<int>(chunk.size()));
        size_t p = FindDelimiter(s, delimiter, searchFrom);
        if (p == std::string::npos) continue;
        int64_t unread = static_cast<int64_t>(s.size() - (p + delimLen));
        if (unread > 0) reader.SetPosition(reader.Position() - unread);
        s.resize(p);
        return true;
    }
}

// ReadString over the view of a mapped file.
bool ReadMapped(TMappedFileStream& file, std::string_view delimiter, std::string& s) {
    // Chunk after chunk, ReadChunk would take every byte of the view from the position on up
    // to the first delimiter after it, or to the end. The stream is a TMappedFileStream itself:
    // its own Seek is called directly.
    int64_t pos = file.TMappedFileStream::Seek(0, rtl::soCurrent);
    int64_t size = file.TMappedFileStream::GetSize();
    if (!file.Mapped() || pos < 0 || pos >= size) {
        s.clear();
        return false;
    }
    std::string_view rest(static_cast<const char*>(file.Memory()) + pos,
                          static_cast<size_t>(size - pos));
    // The view is read page after page: the page after next is asked for ahead of time, as
    // the processor doesn't fetch across pages by itself.
    constexpr size_t ahead = 8192;
    if (rest.size() > ahead) __builtin_prefetch(rest.data() + ahead);
    size_t p = FindDelimiter(rest, delimiter);
    if (p == std::string_view::npos) {
        s.assign(rest);
        file.TMappedFileStream::Seek(size, rtl::soBeginning);
        return true;
    }
    s.assign(rest.data(), p);
    file.TMappedFileStream::Seek(pos + static_cast<int64_t>(p + delimiter.size()),
                                 rtl::soBeginning);
    return true;
}

} // namespace

TStringReader::~TStringReader() {
    FreeTarget();
}

void TStringReader::FreeTarget() {
    reader_.reset();
    target_ = nullptr;
    ownedTarget_.reset();
    targetFile_.clear();
}

int TStringReader::ReadChunk(char* dest, int count) {
    if (UseBuffer && reader_) return reader_->Read(dest, count);
    return static_cast<int>(std::max<int64_t>(target_->Read(dest, count), 0));
}

bool TStringReader::ReadString(std::string& s) {
    if (!target_) throw rtl::EStreamError("The string reader has no source");
    if (ChunkSize <= 0) throw rtl::EStreamError("Invalid chunk size " + std::to_string(ChunkSize));
    // The look-ahead buffer and a mapped file's view are searched where the bytes lie. Each
    // reads the chunks from its source that ReadChunk would and leaves the source where the
    // loop below would.
    if (UseBuffer && reader_) return ReadBuffered(*reader_, ChunkSize, delimiter_, s);
    if (typeid(*target_) == typeid(TMappedFileStream))
        return ReadMapped(*static_cast<TMappedFileStream*>(target_), delimiter_, s);
    const size_t chunk = static_cast<size_t>(ChunkSize);
    const size_t delimLen = delimiter_.size();
    size_t len = 0; // bytes read into s so far
    s.resize(chunk);
    for (;;) {
        int n = ReadChunk(s.data() + len, ChunkSize);
        if (n <= 0) {
            s.resize(len);
            // Nothing at all: the end of the source. Otherwise a last string without delimiter.
            return len != 0;
        }
        size_t searchFrom = len >= delimLen ? len - delimLen + 1 : 0;
        len += static_cast<size_t>(n);
        s.resize(len);
        // Only the new bytes and the few before them that a delimiter may straddle need
        // looking at: the earlier text held no delimiter.
        size_t p = std::string_view(s).find(delimiter_, searchFrom);
        if (p == std::string::npos) {
            s.resize(len + chunk);
            continue;
        }
        int64_t unread = static_cast<int64_t>(len - (p + delimLen));
        if (unread > 0) {
            if (UseBuffer && reader_)
                reader_->SetPosition(reader_->Position() - unread);
            else
                target_->Seek(-unread, rtl::soCurrent);
        }
        s.resize(p);
        return true;
    }
}

void TStringReader::SetReader(rtl::TStream* stream) {
    reader_ = std::make_unique<TSimpleReader>(stream, BufSize);
}

void TStringReader::SetStringDelimiter(const std::string& delimiter) {
    if (delimiter.empty()) throw rtl::EStreamError("A string delimiter can't be empty");
    delimiter_ = delimiter;
}

void TStringReader::SetTargetFile(const std::string& fileName) {
    FreeTarget();
    ownedTarget_ = std::make_unique<TMappedFileStream>(fileName, true, 0, true);
    target_ = ownedTarget_.get();
    targetFile_ = fileName;
    UseBuffer = false;
}

void TStringReader::SetTargetStream(rtl::TStream* stream) {
    if (stream == target_) return;
    FreeTarget();
    target_ = stream;
    if (UseBuffer && stream) SetReader(stream);
}

void TStringReader::Synchronize() {
    if (reader_) reader_->FlushBuffer();
}

} // namespace zelvane
