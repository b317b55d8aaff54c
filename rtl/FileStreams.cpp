#include "rtl/FileStreams.h"

#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rtl {

RTL_IMPLEMENT_CLASS(THandleStream)
RTL_IMPLEMENT_CLASS(TFileStream)

namespace {
// The largest transfer one system call is asked for.
constexpr int64_t kMaxChunk = 1 << 30;

// Moves count bytes from or to p with io(at, size), a read or a write of at most size bytes,
// chunk by chunk; a call cut short by a signal is made again. Stops at an error or at a call
// that moves nothing; returns the bytes moved.
template <class Byte, class IO> int64_t Transfer(Byte* p, int64_t count, IO io) {
    if (count <= 0) return 0;
    int64_t done = 0;
    while (done < count) {
        ssize_t n = io(p + done, static_cast<size_t>(std::min(count - done, kMaxChunk)));
        if (n < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (n == 0) break;
        done += n;
    }
    return done;
}
} // namespace

int64_t THandleStream::Read(void* buffer, int64_t count) {
    return Transfer(static_cast<char*>(buffer), count,
                    [this](char* at, size_t size) { return ::read(handle_, at, size); });
}

int64_t THandleStream::Write(const void* buffer, int64_t count) {
    return Transfer(static_cast<const char*>(buffer), count,
                    [this](const char* at, size_t size) { return ::write(handle_, at, size); });
}

int64_t THandleStream::Seek(int64_t offset, TSeekOrigin origin) {
    int whence = origin == soBeginning ? SEEK_SET : origin == soCurrent ? SEEK_CUR : SEEK_END;
    off_t r = ::lseek(handle_, static_cast<off_t>(offset), whence);
    return r < 0 ? -1 : static_cast<int64_t>(r);
}

int64_t THandleStream::GetSize() {
    struct stat st {};
    if (::fstat(handle_, &st) == 0 && S_ISREG(st.st_mode)) return static_cast<int64_t>(st.st_size);
    return TStream::GetSize();
}

void THandleStream::SetSize(int64_t newSize) {
    if (newSize < 0) throw EStreamError("Invalid stream size");
    if (::ftruncate(handle_, static_cast<off_t>(newSize)) != 0) RaiseLastOSError();
    if (GetPosition() > newSize) Seek(0, soEnd);
}

TFileStream::TFileStream(const std::string& fileName, uint16_t mode, uint32_t rights)
    : THandleStream(-1), fileName_(fileName) {
    const bool create = mode == fmCreate;
    int flags = O_CLOEXEC;
    int lock = LOCK_SH;
    if (create) {
        flags |= O_RDWR | O_CREAT;
        lock = LOCK_EX;
    } else {
        int access = mode & 3;
        int share = mode & 0xF0;
        if (access == 3 || (mode & ~0xF3) != 0 || share > fmShareDenyNone)
            RaiseFileOpenError(false, fileName, EINVAL);
        flags |= access == fmOpenRead ? O_RDONLY : access == fmOpenWrite ? O_WRONLY : O_RDWR;
        if (share == fmShareExclusive || (share == fmShareDenyWrite && access != fmOpenRead))
            lock = LOCK_EX;
    }
    if (fileName.empty()) RaiseFileOpenError(create, fileName, ENOENT);
    int fd;
    do {
        fd = ::open(fileName.c_str(), flags, static_cast<mode_t>(rights));
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) RaiseFileOpenError(create, fileName, errno);
    struct stat st {};
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        int err = S_ISDIR(st.st_mode) ? EISDIR : errno;
        ::close(fd);
        RaiseFileOpenError(create, fileName, err);
    }
    // Lock before emptying, so that creating over a file another stream holds leaves it alone.
    if (::flock(fd, lock | LOCK_NB) != 0) {
        int err = errno == EWOULDBLOCK ? EBUSY : errno;
        ::close(fd);
        RaiseFileOpenError(create, fileName, err);
    }
    if (create && ::ftruncate(fd, 0) != 0) {
        int err = errno;
        ::close(fd);
        RaiseFileOpenError(create, fileName, err);
    }
    handle_ = fd;
}

TFileStream::~TFileStream() {
    if (handle_ >= 0) ::close(handle_);
}

} // namespace rtl
