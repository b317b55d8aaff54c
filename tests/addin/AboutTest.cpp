// The about box from its scrambled form: the bytes the package holds are not the form, and the
// box made from them shows the product, its version and the OK button.
#include "about/About.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>

#include <string>

namespace zelvane {
extern const unsigned char kAboutFormData[];
extern const size_t kAboutFormSize;
} // namespace zelvane

using namespace zelvane;

namespace {

TEST(AboutBox, TheFormIsHeldScrambledAndReadsBackWhole) {
    std::string held(reinterpret_cast<const char*>(kAboutFormData), kAboutFormSize);
    EXPECT_EQ(held.find("TPF0"), std::string::npos);
    EXPECT_EQ(held.find("Zelvane"), std::string::npos);

    std::unique_ptr<QDialog> box = CreateAboutForm(nullptr);
    EXPECT_EQ(box->objectName(), QStringLiteral("AboutForm"));
    EXPECT_EQ(box->windowTitle(), QStringLiteral("About Zelvane"));
    auto* product = box->findChild<QLabel*>(QStringLiteral("ProductLabel"));
    auto* version = box->findChild<QLabel*>(QStringLiteral("VersionLabel"));
    auto* copyright = box->findChild<QLabel*>(QStringLiteral("CopyrightLabel"));
    ASSERT_TRUE(product && version && copyright);
    EXPECT_EQ(product->text(), QStringLiteral("Zelvane Wizard Pack"));
    EXPECT_EQ(version->text(), QStringLiteral("Version 1.0"));
    EXPECT_TRUE(copyright->text().contains(QChar(0xA9)));
    auto* ok = box->findChild<QPushButton*>(QStringLiteral("OKButton"));
    ASSERT_NE(ok, nullptr);
    EXPECT_TRUE(ok->isDefault());
    ok->click();
    EXPECT_EQ(box->result(), QDialog::Accepted);
    EXPECT_EQ(box->size(), QSize(360, 176));
}

} // namespace
