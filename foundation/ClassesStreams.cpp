// TMappedFileStream, THeapStream, TMemStream and the buffer views of memory streams.
#include "foundation/Classes.h"

#include "rtl/TypInfo.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <map>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvane {

RTL_IMPLEMENT_CLASS(EMFStreamError)
RTL_IMPLEMENT_CLASS(TMappedFileStream)
RTL_IMPLEMENT_CLASS(THeapStream)
RTL_IMPLEMENT_CLASS(TMemStream)

namespace {

int64_t FileSizeOf(int fd) {
    struct stat st {};
    if (fstat(fd, &st) != 0) rtl::RaiseLastOSError(errno);
    return static_cast<int64_t>(st.st_size);
}

// The name of a shared-memory object for a region name: one leading "/", and no other.
std::string ShmName(const std::string& mapName) {
    std::string name = "/";
    for (char c : mapName)
        name += (c == '/' || c == '\\') ? '_' : c;
    return name;
}

constexpr int64_t kBlock = 4096;
int64_t RoundToBlock(int64_t n) {
    return (n + kBlock - 1) / kBlock * kBlock;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// TMappedFileStream

TMappedFileStream::TMappedFileStream(int fileHandle, bool mapped, int64_t newSize, bool readOnly) {
    Init(fileHandle, mapped, newSize, readOnly);
}

TMappedFileStream::TMappedFileStream(const std::string& fileName, bool mapped, int64_t newSize,
                                     bool readOnly) {
    int fd;
    if (access(fileName.c_str(), F_OK) == 0) {
        fd = open(fileName.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC);
    } else {
        if (readOnly) CreateException<EMFStreamError>(SReadOnlyFileSize);
        if (newSize <= 0) CreateException<EMFStreamError>(SZeroFileSize);
        fd = open(fileName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    }
    if (fd < 0) rtl::RaiseLastOSError(errno);
    try {
        Init(fd, mapped, newSize, readOnly);
    } catch (...) {
        SetMapped(false);
        close(fd);
        throw;
    }
    ownsFile_ = true;
}

void TMappedFileStream::Init(int fileHandle, bool mapped, int64_t newSize, bool readOnly) {
    if (newSize < 0) CreateException<EMFStreamError>(SNegativeFileSize);
    if (readOnly && newSize >= 1) CreateException<EMFStreamError>(SReadOnlyFileSize);
    fileHandle_ = fileHandle;
    mapSize_ = newSize;
    readOnly_ = readOnly;
    mapName_.clear();
    if (mapped) SetMapped(true);
}

std::unique_ptr<TMappedFileStream>
TMappedFileStream::CreateSys(const std::string& mapName, bool mapped, int64_t size, bool readOnly) {
    if (size < 1) CreateException<EMFStreamError>(SZeroProjectedSize);
    std::unique_ptr<TMappedFileStream> s(new TMappedFileStream());
    s->mapName_ = mapName;
    s->mapSize_ = size;
    s->readOnly_ = readOnly;
    if (mapped) s->SetMapped(true);
    return s;
}

TMappedFileStream::~TMappedFileStream() {
    SetMapped(false);
    if (ownsFile_ && fileHandle_ >= 0) close(fileHandle_);
}

void TMappedFileStream::SetMapped(bool value) {
    if (value == mapped_) return;
    const int prot = PROT_READ | (readOnly_ ? 0 : PROT_WRITE);
    if (!value) {
        if (memory_) munmap(memory_, static_cast<size_t>(size_));
        memory_ = nullptr;
        if (mapHandle_ >= 0) close(mapHandle_);
        mapHandle_ = -1;
        if (ownsRegionName_) shm_unlink(ShmName(mapName_).c_str());
        ownsRegionName_ = false;
        mapped_ = false;
        return;
    }
    int fd = fileHandle_;
    int64_t size = 0;
    if (fileHandle_ >= 0) {
        // Mapping grows the file to the size asked for.
        if (!readOnly_ && mapSize_ > FileSizeOf(fileHandle_) &&
            ftruncate(fileHandle_, static_cast<off_t>(mapSize_)) != 0)
            rtl::RaiseLastOSError(errno);
        size = FileSizeOf(fileHandle_);
    } else if (!mapName_.empty()) {
        std::string name = ShmName(mapName_);
        if (readOnly_) {
            fd = shm_open(name.c_str(), O_RDONLY, 0);
        } else {
            fd = shm_open(name.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
            if (fd >= 0)
                ownsRegionName_ = true;
            else if (errno == EEXIST)
                fd = shm_open(name.c_str(), O_RDWR, 0);
        }
        if (fd < 0) rtl::RaiseLastOSError(errno);
        mapHandle_ = fd;
        try {
            int64_t have = FileSizeOf(fd);
            if (!readOnly_ && have < mapSize_ && ftruncate(fd, static_cast<off_t>(mapSize_)) != 0)
                rtl::RaiseLastOSError(errno);
            // A read-only view can't reach beyond what the region holds.
            size = readOnly_ ? std::min(mapSize_, have) : mapSize_;
        } catch (...) {
            mapped_ = true;
            SetMapped(false);
            throw;
        }
    } else {
        size = mapSize_;
    }
    void* p = nullptr;
    if (size > 0) {
        p = fd >= 0
                ? mmap(nullptr, static_cast<size_t>(size), prot, MAP_SHARED, fd, 0)
                : mmap(nullptr, static_cast<size_t>(size), prot, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED) {
            int err = errno;
            mapped_ = true;
            SetMapped(false);
            rtl::RaiseLastOSError(err);
        }
    }
    memory_ = static_cast<char*>(p);
    size_ = size;
    mapped_ = true;
}

int64_t TMappedFileStream::Read(void* buffer, int64_t count) {
    if (!mapped_ || position_ < 0 || count < 0 || position_ >= size_) return 0;
    int64_t n = std::min(count, size_ - position_);
    std::memcpy(buffer, memory_ + position_, static_cast<size_t>(n));
    position_ += n;
    // Reads mostly go on where this one ended: the page after is asked for ahead of time, as
    // the processor doesn't fetch across pages by itself.
    if (size_ - position_ > 4096) __builtin_prefetch(memory_ + position_ + 4096);
    return n;
}

int64_t TMappedFileStream::Write(const void* buffer, int64_t count) {
    if (!mapped_ || readOnly_ || position_ < 0 || count < 0 || position_ >= size_) return 0;
    int64_t n = std::min(count, size_ - position_);
    std::memcpy(memory_ + position_, buffer, static_cast<size_t>(n));
    position_ += n;
    return n;
}

void TMappedFileStream::SaveToStream(rtl::TStream* stream) {
    if (size_ != 0 && memory_) stream->WriteBuffer(memory_, size_);
}

void TMappedFileStream::SaveToFile(const std::string& fileName) {
    std::FILE* f = std::fopen(fileName.c_str(), "wb");
    if (!f) rtl::RaiseFileOpenError(true, fileName, errno);
    bool ok = size_ == 0 || !memory_ ||
              std::fwrite(memory_, 1, static_cast<size_t>(size_), f) == static_cast<size_t>(size_);
    if (std::fclose(f) != 0) ok = false;
    if (!ok) throw rtl::EWriteError("Stream write error");
}

void TMappedFileStream::FlushView() {
    if (mapped_ && memory_ && msync(memory_, static_cast<size_t>(size_), MS_SYNC) != 0)
        rtl::RaiseLastOSError(errno);
}

// ---------------------------------------------------------------------------------------------
// THeap: a private heap. It reserves address space for its maximum size at once and makes
// pages usable as its blocks reach them; blocks are placed first-fit, and neighbouring free
// blocks merge.

class THeap {
public:
    THeap(int64_t initialSize, int64_t maximumSize, uint32_t flags);
    ~THeap();
    THeap(const THeap&) = delete;
    THeap& operator=(const THeap&) = delete;

    void* Alloc(size_t n);
    void* ReAlloc(void* p, size_t n);
    void Free(void* p);
    // Gives the pages of free blocks back to the system; the size of the largest free block in
    // the usable part.
    size_t Compact();

private:
    static size_t Align(size_t n) { return (n + 15) & ~size_t(15); }
    void Commit(size_t end);
    void AddFree(size_t offset, size_t size);
    [[noreturn]] void OutOfMemory();

    char* base_ = nullptr;
    size_t reserve_ = 0;
    size_t committed_ = 0;
    uint32_t flags_;
    std::map<size_t, size_t> free_; // offset -> size
    std::map<size_t, size_t> used_;
};

namespace {
size_t PageSize() {
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}
size_t RoundToPage(size_t n) {
    return (n + PageSize() - 1) / PageSize() * PageSize();
}
// A heap without a maximum may grow to this much.
constexpr size_t kGrowableReserve = size_t(4) << 30;
} // namespace

THeap::THeap(int64_t initialSize, int64_t maximumSize, uint32_t flags) : flags_(flags) {
    if (initialSize < 0 || maximumSize < 0) throw rtl::EOutOfMemory("Invalid heap size");
    reserve_ = maximumSize > 0
                   ? RoundToPage(static_cast<size_t>(std::max(maximumSize, initialSize)))
                   : kGrowableReserve;
    void* p =
        mmap(nullptr, reserve_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED) rtl::RaiseLastOSError(errno);
    base_ = static_cast<char*>(p);
    free_[0] = reserve_;
    Commit(static_cast<size_t>(initialSize));
}

THeap::~THeap() {
    munmap(base_, reserve_);
}

void THeap::OutOfMemory() {
    throw rtl::EOutOfMemory("Out of memory");
}

void THeap::Commit(size_t end) {
    if (end <= committed_) return;
    size_t newEnd = std::min(RoundToPage(end), reserve_);
    if (mprotect(base_ + committed_, newEnd - committed_, PROT_READ | PROT_WRITE) != 0)
        OutOfMemory();
    committed_ = newEnd;
}

void THeap::AddFree(size_t offset, size_t size) {
    auto next = free_.find(offset + size);
    if (next != free_.end()) {
        size += next->second;
        free_.erase(next);
    }
    auto it = free_.lower_bound(offset);
    if (it != free_.begin()) {
        auto prev = std::prev(it);
        if (prev->first + prev->second == offset) {
            prev->second += size;
            return;
        }
    }
    free_[offset] = size;
}

void* THeap::Alloc(size_t n) {
    n = Align(std::max<size_t>(n, 1));
    for (auto it = free_.begin(); it != free_.end(); ++it) {
        if (it->second < n) continue;
        size_t offset = it->first, size = it->second;
        free_.erase(it);
        if (size > n) free_[offset + n] = size - n;
        Commit(offset + n);
        used_[offset] = n;
        if (flags_ & HEAP_ZERO_MEMORY) std::memset(base_ + offset, 0, n);
        return base_ + offset;
    }
    OutOfMemory();
}

void* THeap::ReAlloc(void* p, size_t n) {
    size_t offset = static_cast<size_t>(static_cast<char*>(p) - base_);
    auto it = used_.find(offset);
    if (it == used_.end()) throw rtl::EInvalidPointer("Invalid pointer operation");
    size_t old = it->second;
    n = Align(std::max<size_t>(n, 1));
    if (n <= old) {
        it->second = n;
        if (n < old) AddFree(offset + n, old - n);
        return p;
    }
    auto next = free_.find(offset + old);
    if (next != free_.end() && next->second >= n - old) {
        size_t rest = next->second - (n - old);
        free_.erase(next);
        if (rest > 0) free_[offset + n] = rest;
        Commit(offset + n);
        it->second = n;
        if (flags_ & HEAP_ZERO_MEMORY) std::memset(base_ + offset + old, 0, n - old);
        return p;
    }
    void* q = Alloc(n);
    std::memcpy(q, p, old);
    Free(p);
    return q;
}

void THeap::Free(void* p) {
    size_t offset = static_cast<size_t>(static_cast<char*>(p) - base_);
    auto it = used_.find(offset);
    if (it == used_.end()) throw rtl::EInvalidPointer("Invalid pointer operation");
    size_t size = it->second;
    used_.erase(it);
    AddFree(offset, size);
}

size_t THeap::Compact() {
    size_t largest = 0;
    for (const auto& [offset, size] : free_) {
        size_t end = std::min(offset + size, committed_);
        if (end <= offset) continue;
        largest = std::max(largest, end - offset);
        size_t first = RoundToPage(offset), last = end / PageSize() * PageSize();
        if (last > first) madvise(base_ + first, last - first, MADV_DONTNEED);
    }
    return largest;
}

// ---------------------------------------------------------------------------------------------
// THeapStream

THeapStream::THeapStream(bool zeroMemory)
    : flags_(HEAP_GENERATE_EXCEPTIONS | (zeroMemory ? HEAP_ZERO_MEMORY : 0)) {}

THeapStream::THeapStream(int64_t initialSize, int64_t maximumSize, bool zeroMemory)
    : THeapStream(zeroMemory) {
    heap_ = std::make_unique<THeap>(initialSize, maximumSize, flags_);
}

THeapStream::~THeapStream() {
    // The block goes back to its heap here, before the heap itself goes.
    Clear();
}

void* THeapStream::Realloc(int64_t& newCapacity) {
    if (newCapacity > 0) newCapacity = RoundToBlock(newCapacity);
    if (newCapacity == Capacity()) return memory_;
    const bool owned = Capacity() != 0; // memory set by BufToMemStream is not ours
    if (newCapacity == 0) {
        if (owned) heap_ ? heap_->Free(memory_) : std::free(memory_);
        return nullptr;
    }
    const size_t n = static_cast<size_t>(newCapacity);
    void* p;
    if (owned) {
        if (heap_) {
            p = heap_->ReAlloc(memory_, n);
        } else {
            p = std::realloc(memory_, n);
            if (p && (flags_ & HEAP_ZERO_MEMORY) && newCapacity > Capacity())
                std::memset(static_cast<char*>(p) + Capacity(), 0,
                            static_cast<size_t>(newCapacity - Capacity()));
        }
    } else {
        if (heap_)
            p = heap_->Alloc(n);
        else
            p = (flags_ & HEAP_ZERO_MEMORY) ? std::calloc(1, n) : std::malloc(n);
        if (p && memory_)
            std::memcpy(p, memory_, static_cast<size_t>(std::min(size_, newCapacity)));
    }
    if (!p) throw rtl::EOutOfMemory("Out of memory");
    return p;
}

int64_t THeapStream::Compact() {
    if (!heap_) {
        // The process's heap gives its free memory back to the system, which cannot fail; the
        // answer is what stays free in it.
        malloc_trim(0);
        return static_cast<int64_t>(mallinfo2().fordblks);
    }
    size_t largest = heap_->Compact();
    if (largest == 0) rtl::RaiseLastOSError(ENOMEM);
    return static_cast<int64_t>(largest);
}

// ---------------------------------------------------------------------------------------------
// TMemStream

TMemStream::~TMemStream() {
    Clear();
}

void* TMemStream::Realloc(int64_t& newCapacity) {
    if (newCapacity > 0) newCapacity = RoundToBlock(newCapacity);
    if (newCapacity == Capacity()) return memory_;
    const bool owned = Capacity() != 0;
    if (newCapacity == 0) {
        if (owned) std::free(memory_);
        return nullptr;
    }
    void* p;
    if (owned) {
        p = std::realloc(memory_, static_cast<size_t>(newCapacity));
    } else {
        p = std::malloc(static_cast<size_t>(newCapacity));
        if (p && memory_)
            std::memcpy(p, memory_, static_cast<size_t>(std::min(size_, newCapacity)));
    }
    if (!p) throw rtl::EStreamError("Out of memory while expanding memory stream");
    return p;
}

// ---------------------------------------------------------------------------------------------
// Buffer views

namespace {
// Reaches the protected parts of a memory stream through member pointers taken in a
// descendant, which is what the language allows for them.
struct MemoryAccess : rtl::TCustomMemoryStream {
    static void Set(rtl::TCustomMemoryStream* s, void* memory, int64_t size, int64_t position) {
        auto setPointer = &MemoryAccess::SetPointer;
        auto pos = &MemoryAccess::position_;
        (s->*setPointer)(memory, size);
        s->*pos = position;
    }
};
} // namespace

void MemStreamToBuf(rtl::TCustomMemoryStream* stream, TBufInfo& info) {
    info.Memory = stream->Memory();
    info.Size = stream->GetSize();
    info.Position = stream->GetPosition();
}

void BufToMemStream(const TBufInfo& info, rtl::TCustomMemoryStream* stream) {
    if (auto* m = rtl::Is<rtl::TMemoryStream>(stream)) {
        if (!rtl::Is<TMemStream>(stream) && !rtl::Is<THeapStream>(stream))
            throw rtl::EStreamError("A " + stream->ClassName() +
                                    " can't take memory it doesn't own");
        m->Clear();
    }
    MemoryAccess::Set(stream, info.Memory, info.Size, info.Position);
}

} // namespace zelvane
