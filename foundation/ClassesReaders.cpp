// TSimpleReader and TStringReader.
#include "foundation/Classes.h"

#include "rtl/TypInfo.h"

#include <algorithm>
#include <cstring>

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
