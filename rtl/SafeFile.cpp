#include "rtl/SafeFile.h"

#include "rtl/SysUtils.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace rtl {

RTL_IMPLEMENT_CLASS(TSafeFileStream)

TSafeFileStream::TSafeFileStream(const std::string& fileName)
    : THandleStream(-1), fileName_(fileName) {
    if (fileName.empty()) RaiseFileOpenError(true, fileName, ENOENT);
    target_ = fileName;
    if (char* real = ::realpath(fileName.c_str(), nullptr)) {
        target_ = real;
        std::free(real);
    }
    dir_ = target_.find(PathDelim) == std::string::npos ? std::string(1, '.')
                                                        : ExtractFileDir(target_);
    if (dir_.empty()) dir_ = std::string(1, PathDelim);
    std::string tmpl =
        IncludeTrailingPathDelimiter(dir_) + "." + ExtractFileName(target_) + ".XXXXXX";
    std::vector<char> name(tmpl.begin(), tmpl.end());
    name.push_back('\0');
    int fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) RaiseFileOpenError(true, fileName, errno);
    handle_ = fd;
    open_ = true;
    tempName_ = name.data();
    // The new file gets the old one's permissions, or the usual ones for a new file.
    struct stat st {};
    mode_t mode;
    if (::stat(target_.c_str(), &st) == 0) {
        mode = st.st_mode & 07777;
    } else {
        mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }
    if (::fchmod(fd, mode) != 0) {
        int err = errno;
        Discard();
        RaiseFileOpenError(true, fileName, err);
    }
}

TSafeFileStream::~TSafeFileStream() {
    Discard();
}

void TSafeFileStream::Discard() {
    if (open_) {
        ::close(handle_);
        open_ = false;
        handle_ = -1;
    }
    if (!tempName_.empty()) {
        ::unlink(tempName_.c_str());
        tempName_.clear();
    }
}

void TSafeFileStream::Commit() {
    if (!open_) throw EWriteError(SWriteError);
    int fd = handle_;
    open_ = false;
    handle_ = -1;
    bool flushed = ::fsync(fd) == 0;
    if (::close(fd) != 0) flushed = false;
    if (!flushed) {
        Discard();
        throw EWriteError(SWriteError);
    }
    if (::rename(tempName_.c_str(), target_.c_str()) != 0) {
        int err = errno;
        Discard();
        RaiseFileOpenError(true, fileName_, err);
    }
    tempName_.clear();
    // Flush the directory too, so that the rename outlasts a crash.
    int dfd = ::open(dir_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dfd >= 0) {
        ::fsync(dfd);
        ::close(dfd);
    }
}

void WriteFileAtomically(const std::string& fileName, std::string_view contents) {
    TSafeFileStream file(fileName);
    file.WriteBuffer(contents.data(), static_cast<int64_t>(contents.size()));
    file.Commit();
}

} // namespace rtl
