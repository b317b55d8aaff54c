// The widgets of these tests need an application; they run on the offscreen platform.
#include <QApplication>

#include <gtest/gtest.h>

namespace {

class TQtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "designer_tests";
        static char* argv[] = {name, nullptr};
        app_ = new QApplication(argc, argv);
    }
    void TearDown() override { delete app_; }

private:
    QApplication* app_ = nullptr;
};

const auto* const qtEnvironment = ::testing::AddGlobalTestEnvironment(new TQtEnvironment);

} // namespace
