// File helpers of the model: whole-file reads and writes, and the resolution of the
// Windows-style relative paths that project files hold.
#pragma once

#include "rtl/SysUtils.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace workbench {

// The whole file; raises rtl::EFOpenError naming the file when it can't be read.
std::string ReadFileBytes(const std::string& fileName);
// Replaces the file; raises rtl::EFCreateError when it can't be written.
void WriteFileBytes(const std::string& fileName, std::string_view bytes);
// The runtime's names for the rest.
using rtl::ChangeFileExt;
using rtl::DirectoryExists;
using rtl::ExtractFileExt;
using rtl::ExtractFileName;
using rtl::ExtractFilePath;
using rtl::FileExists;
using rtl::LowerCase;
using rtl::SameText;

// An absolute, normalised path for a path written in a project file, relative to dir.
// Backslashes count as separators. Where the file does not exist under that spelling, a file
// whose name differs only in case is taken, as on the file system those projects came from.
std::string ResolvePath(const std::string& dir, const std::string& path);

// What tells whether a file or directory changed since it was last read: its time stamp and
// size. A stamp less than two seconds older than the reading is not trusted, since the file
// system's clock is coarse and a change in the same tick leaves the stamp as it was.
struct TFileStamp {
    std::filesystem::file_time_type Time{};
    std::uintmax_t Size = 0;
    bool Settled = false;
    // Whether the file is as it was when this stamp was taken.
    bool Matches(const TFileStamp& now) const {
        return Settled && now.Settled && Time == now.Time && Size == now.Size;
    }
};
// The stamp of the file as it is now; an unsettled one when it can't be read.
TFileStamp FileStamp(const std::filesystem::path& file);

// What was made from files, each kept while its file stays as it was.
template <class T> class TFileCache {
public:
    // The result of use on what make(file) gives for the file as it is now; make runs again
    // only when the file changed since it last ran.
    template <class Make, class Use>
    auto With(const std::filesystem::path& file, Make&& make, Use&& use) {
        std::lock_guard lock(mutex_);
        Entry& entry = entries_[file.string()];
        TFileStamp stamp = FileStamp(file);
        if (!entry.Stamp.Matches(stamp)) {
            entry.Value = make(file);
            entry.Stamp = stamp;
        }
        return use(std::as_const(entry.Value));
    }

private:
    struct Entry {
        TFileStamp Stamp;
        T Value{};
    };
    std::mutex mutex_;
    std::map<std::string, Entry> entries_;
};

// The file of that name with another extension beside it, found case-blind; empty if none.
std::string FindCompanionFile(const std::string& fileName, const std::string& ext);

} // namespace workbench
