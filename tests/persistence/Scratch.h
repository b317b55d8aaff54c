// What tests of stored objects need around them: a recording message box that answers the
// load-error question, a scratch directory of each test's own, whole files as strings, one
// object written and read as a root by the fit writer and reader, and the root objects of a
// binary object stream. Shared by the persistence and the specification tests.
#pragma once

#include "tests/interop/FileBytes.h"

#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"
#include "persistence/Storage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace scratch {

// Answers every message box with `answer` and records the texts.
class DialogRecorder {
public:
    DialogRecorder() {
        zelvane::TWindowSystem ws;
        ws.MessageBox = [this](zelvane::HWND, const std::string& text, const std::string&,
                               uint32_t) {
            texts.push_back(text);
            return answer;
        };
        old_ = zelvane::SetWindowSystem(ws);
    }
    ~DialogRecorder() { zelvane::SetWindowSystem(old_); }
    DialogRecorder(const DialogRecorder&) = delete;
    DialogRecorder& operator=(const DialogRecorder&) = delete;

    int answer = zelvane::IDYES;
    std::vector<std::string> texts;

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

// One object as a root of a fit writer's stream, without a name.
inline std::string FitSave(rtl::TPersistent* obj) {
    rtl::TStringStream stream;
    zelvane::TFitWriter writer(&stream);
    writer.WriteAsComponent(obj, "");
    writer.FlushBuffer();
    return stream.DataString();
}

// Reads one root object of data into obj with a fit reader; the root's name is returned.
inline std::string FitLoad(rtl::TPersistent* obj, const std::string& data,
                           bool ignoreErrors = true) {
    rtl::TStringStream stream(data);
    zelvane::TFitReader reader(&stream);
    reader.IgnoreErrors = ignoreErrors;
    std::string name;
    reader.ReadAsComponent(obj, name);
    return name;
}

// The root objects of a binary object stream: flags, class, name and property names.
struct Root {
    rtl::TFilerFlags Flags;
    std::string Class, Name;
    std::vector<std::string> Props;
};
inline std::vector<Root> Roots(const std::string& data) {
    rtl::TStringStream s(data);
    rtl::TReader r(&s);
    std::vector<Root> roots;
    while (r.Position() < s.GetSize()) {
        r.ReadSignature();
        Root root;
        int32_t childPos;
        r.ReadPrefix(root.Flags, childPos);
        root.Class = r.ReadStr();
        root.Name = r.ReadStr();
        while (!r.EndOfList()) {
            root.Props.push_back(r.ReadStr());
            r.SkipValue();
        }
        r.ReadListEnd();
        r.ReadListEnd();
        roots.push_back(root);
    }
    return roots;
}

} // namespace scratch
