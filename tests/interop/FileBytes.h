// A whole file as a string of bytes, and a string written as a whole file: shared by the tests
// that exchange files with Free Pascal and those that store objects in files.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace interop {

inline std::string ReadFile(const std::filesystem::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

inline void WriteFile(const std::filesystem::path& p, const std::string& data) {
    std::ofstream f(p, std::ios::binary);
    f << data;
}

} // namespace interop
