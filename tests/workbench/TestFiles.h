// Test helpers: the example project and the test projects, copied into a directory of the test's
// own so that tests may change and save its files, and small file writers.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace testfiles {

inline std::filesystem::path SourceDir() {
    const char* dir = std::getenv("ZELVANE_SOURCE_DIR");
    return dir ? std::filesystem::path(dir) : std::filesystem::current_path();
}

inline std::filesystem::path ExamplesDir() {
    return SourceDir() / "examples";
}

// A fresh directory that removes itself.
class TTempDir {
public:
    TTempDir() {
        static int counter = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("zelvane-test-" + std::to_string(::getpid()) + "-" + std::to_string(++counter));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TTempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    const std::filesystem::path& Path() const { return path_; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

// The test projects of tests/data: forms in several code pages, glyphs and image lists.
inline std::filesystem::path DataDir() {
    return SourceDir() / "tests" / "data";
}

// The files of a directory, copied into a directory of their own.
class TFilesCopy : public TTempDir {
public:
    explicit TFilesCopy(const std::filesystem::path& from) {
        for (const auto& e : std::filesystem::directory_iterator(from))
            std::filesystem::copy_file(e.path(), Path() / e.path().filename());
    }
};

// The example project in a directory of its own.
class TExampleCopy : public TFilesCopy {
public:
    TExampleCopy() : TFilesCopy(ExamplesDir()) {}
};

inline void WriteFile(const std::string& name, const std::string& bytes) {
    std::ofstream out(name, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string ReadFile(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace testfiles
