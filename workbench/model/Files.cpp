#include "workbench/model/Files.h"

#include "rtl/SysUtils.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unordered_map>

namespace fs = std::filesystem;

namespace workbench {

std::string ReadFileBytes(const std::string& fileName) {
    std::error_code ec;
    if (!fs::is_regular_file(fileName, ec))
        throw rtl::EFOpenError("Cannot open file \"" + fileName + "\"");
    std::ifstream in(fileName, std::ios::binary);
    if (!in) throw rtl::EFOpenError("Cannot open file \"" + fileName + "\"");
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::string& fileName, std::string_view bytes) {
    std::ofstream out(fileName, std::ios::binary | std::ios::trunc);
    if (out) out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw rtl::EFCreateError("Cannot create file \"" + fileName + "\"");
}

TFileStamp FileStamp(const fs::path& file) {
    std::error_code ec;
    TFileStamp stamp;
    stamp.Time = fs::last_write_time(file, ec);
    if (ec) return {};
    stamp.Size = fs::is_directory(file, ec) ? 0 : fs::file_size(file, ec);
    if (ec) return {};
    stamp.Settled = stamp.Time + std::chrono::seconds(2) < fs::file_time_type::clock::now();
    return stamp;
}

namespace {

// The entry of dir whose name equals name case-blind, or name itself. The directory's entries
// by their upper-case names are kept from one look-up to the next: a project's units are
// looked up in the same few directories.
std::string MatchEntry(const fs::path& dir, const std::string& name) {
    std::error_code ec;
    if (fs::exists(dir / name, ec)) return name;
    if (!fs::is_directory(dir, ec)) return name;
    using TNames = std::unordered_map<std::string, std::string>;
    static TFileCache<TNames> listings;
    auto list = [](const fs::path& d) {
        TNames names;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(d, error)) {
            std::string entryName = entry.path().filename().string();
            names.emplace(rtl::UpperCase(entryName), entryName);
        }
        return names;
    };
    return listings.With(dir, list, [&](const TNames& names) {
        auto it = names.find(rtl::UpperCase(name));
        return it == names.end() ? name : it->second;
    });
}

} // namespace

std::string ResolvePath(const std::string& dir, const std::string& path) {
    std::string p = path;
    std::replace(p.begin(), p.end(), '\\', '/');
    fs::path result =
        fs::path(p).is_absolute() ? fs::path("/") : fs::absolute(dir.empty() ? "." : dir);
    for (const auto& part : fs::path(p).relative_path()) {
        std::string s = part.string();
        if (s.empty() || s == ".") continue;
        if (s == "..") {
            result = result.parent_path();
            continue;
        }
        result /= MatchEntry(result, s);
    }
    return result.lexically_normal().string();
}

std::string FindCompanionFile(const std::string& fileName, const std::string& ext) {
    std::string candidate = ChangeFileExt(fileName, ext);
    if (FileExists(candidate)) return candidate;
    std::string dir = ExtractFilePath(candidate);
    std::string resolved = ResolvePath(dir, ExtractFileName(candidate));
    return FileExists(resolved) ? resolved : std::string();
}

} // namespace workbench
