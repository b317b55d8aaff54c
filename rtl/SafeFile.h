// Files that appear under their name only when they are complete.
//
// TSafeFileStream writes to a temporary file beside its target; Commit flushes it to the disk and
// renames it over the target in one step, so that a reader sees either the old file or the whole
// new one. A stream destroyed without Commit (because the save failed) removes its temporary
// file and leaves the target as it was.
#pragma once

#include "rtl/FileStreams.h"

#include <string>
#include <string_view>

namespace rtl {

class TSafeFileStream : public THandleStream {
    RTL_CLASS(TSafeFileStream, THandleStream)
public:
    // Creates the temporary file in the target's directory. A symbolic link as the target is
    // written through to the file it names, and an existing target's permissions are kept.
    // Raises EFCreateError naming the target when the file can't be made.
    explicit TSafeFileStream(const std::string& fileName);
    // Without Commit, removes the temporary file.
    ~TSafeFileStream() override;

    // Flushes the data to the disk, closes the file and renames it over the target. Raises
    // EWriteError when the data can't be flushed, EFCreateError when the rename fails; either
    // way the temporary file is gone and the target untouched. Called once.
    void Commit();

    // The target's name as given.
    const std::string& FileName() const { return fileName_; }

private:
    void Discard();

    std::string fileName_;
    std::string target_;
    std::string dir_;
    std::string tempName_;
    bool open_ = false;
};

// Replaces the file with the contents through a TSafeFileStream.
void WriteFileAtomically(const std::string& fileName, std::string_view contents);

} // namespace rtl
