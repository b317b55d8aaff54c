// What tests of stored objects need around them: a recording message box that answers the
// load-error question, a scratch directory of each test's own, and whole files as strings.
// Shared by the persistence and the specification tests.
#pragma once

#include "tests/interop/FileBytes.h"

#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace scratch {

// Answers every message box with `answer` and records the texts and styles.
class DialogRecorder {
public:
    DialogRecorder() {
        zelvane::TWindowSystem ws;
        ws.MessageBox = [this](zelvane::HWND, const std::string& text, const std::string&,
                               uint32_t style) {
            texts.push_back(text);
            styles.push_back(style);
            return answer;
        };
        old_ = zelvane::SetWindowSystem(ws);
    }
    ~DialogRecorder() { zelvane::SetWindowSystem(old_); }
    DialogRecorder(const DialogRecorder&) = delete;
    DialogRecorder& operator=(const DialogRecorder&) = delete;

    int answer = zelvane::IDYES;
    std::vector<std::string> texts;
    std::vector<uint32_t> styles;

private:
    zelvane::TWindowSystem old_;
};

// A scratch directory named for the running test, removed with the object.
class TempDir {
public:
    TempDir() {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "." + test->name();
        std::replace(name.begin(), name.end(), '/', '_'); // parameterised tests
        path_ = std::filesystem::temp_directory_path() /
                ("zelvane-test-" + std::to_string(::getpid()) + "-" + name);
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    // The names of the entries in the directory, sorted.
    std::vector<std::string> Entries() const {
        std::vector<std::string> names;
        for (auto& e : std::filesystem::directory_iterator(path_))
            names.push_back(e.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

inline std::string ReadAll(const std::string& file) {
    return interop::ReadFile(file);
}

inline void WriteAll(const std::string& file, const std::string& data) {
    interop::WriteFile(file, data);
}

} // namespace scratch
