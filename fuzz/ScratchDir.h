// Where a fuzz target writes the files of its executions: in memory where the machine has a
// tmpfs, so that a run measures the code under test and not the disk's flushes.
#pragma once

#include <filesystem>
#include <unistd.h>

inline std::filesystem::path FuzzScratchDir() {
    return access("/dev/shm", W_OK) == 0 ? std::filesystem::path("/dev/shm")
                                         : std::filesystem::temp_directory_path();
}
