// A test environment that gives a GoogleTest executable the application its widgets need, on the
// offscreen platform unless QT_QPA_PLATFORM names another. A suite registers one:
//
//   const auto* const qtEnvironment =
//       ::testing::AddGlobalTestEnvironment(new testqt::TQtEnvironment("designer_tests"));
#pragma once

#include <QApplication>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace testqt {

class TQtEnvironment : public ::testing::Environment {
public:
    explicit TQtEnvironment(std::string name) : name_(std::move(name)) {}
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        // The application keeps argc and argv for its life: they live in the environment.
        argv_[0] = name_.data();
        app_ = new QApplication(argc_, argv_);
    }
    void TearDown() override { delete app_; }

private:
    std::string name_;
    int argc_ = 1;
    char* argv_[2] = {nullptr, nullptr};
    QApplication* app_ = nullptr;
};

} // namespace testqt
