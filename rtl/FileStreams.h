// Streams over operating-system files: THandleStream over a POSIX file descriptor and
// TFileStream, which opens a file by name with the platform's open modes and share flags.
#pragma once

#include "rtl/Streams.h"

#include <cstdint>
#include <string>

namespace rtl {

// Open modes: one access mode, or'ed with one share flag; or fmCreate alone.
inline constexpr uint16_t fmCreate = 0xFFFF;
inline constexpr uint16_t fmOpenRead = 0x0000;
inline constexpr uint16_t fmOpenWrite = 0x0001;
inline constexpr uint16_t fmOpenReadWrite = 0x0002;
inline constexpr uint16_t fmShareCompat = 0x0000;
inline constexpr uint16_t fmShareExclusive = 0x0010;
inline constexpr uint16_t fmShareDenyWrite = 0x0020;
inline constexpr uint16_t fmShareDenyRead = 0x0030;
inline constexpr uint16_t fmShareDenyNone = 0x0040;

// A stream over a file descriptor it doesn't own. Read and Write answer the bytes transferred
// (0 on an error); Seek answers the new position, or -1 when the descriptor can't seek there.
class THandleStream : public TStream {
    RTL_CLASS(THandleStream, TStream)
public:
    explicit THandleStream(int handle) : handle_(handle) {}

    int64_t Read(void* buffer, int64_t count) override;
    int64_t Write(const void* buffer, int64_t count) override;
    int64_t Seek(int64_t offset, TSeekOrigin origin) override;
    int64_t GetSize() override;
    // Truncates or extends the file; raises EOSError when the system refuses.
    void SetSize(int64_t newSize) override;

    int Handle() const { return handle_; }

protected:
    int handle_;
};

// A stream over a named file, which it opens and closes.
//
// fmCreate creates the file or empties an existing one, for reading and writing. Otherwise the
// access is fmOpenRead, fmOpenWrite or fmOpenReadWrite and the file must exist. Failures raise
// EFCreateError or EFOpenError naming the file and the system's reason.
//
// Share flags are advisory locks (flock) on the open file, so they hold between the streams of
// this and other processes that take them, not against programs that ignore them:
//   - fmShareExclusive, fmCreate, and write access with fmShareDenyWrite take an exclusive
//     lock: they fail while any other stream has the file open, and keep others out;
//   - every other mode takes a shared lock: it fails while another stream holds the file
//     exclusively, and coexists with other shared holders.
// Linux has no lock that denies only writing or only reading to others while letting them do the
// other, so two things are not enforced: a writer opened with fmShareDenyNone or fmShareCompat is
// not kept out by a read-only fmShareDenyWrite holder, and fmShareDenyRead is taken as
// fmShareDenyNone.
class TFileStream : public THandleStream {
    RTL_CLASS(TFileStream, THandleStream)
public:
    TFileStream(const std::string& fileName, uint16_t mode, uint32_t rights = 0666);
    ~TFileStream() override;

    const std::string& FileName() const { return fileName_; }

private:
    std::string fileName_;
};

} // namespace rtl
