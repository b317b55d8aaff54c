// Forms in other code pages and with pictures, from the test project tests/data/intl: the
// designer and the inspector show each string as the form stores it (narrow strings in the code
// page of the form's character set, wide strings as they are), an edited value is saved with
// all its characters, and button glyphs, tab icons and a tab sheet's border are drawn.
#include "tests/designer/InspectorFixture.h"
#include "workbench/designer/Pictures.h"
#include "workbench/model/Files.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace workbench;
using namespace workbench::designer;
using designertest::U;
using ToolsAPI::TDesignComponent;

namespace {

// How many pixels of a widget's picture have the colour.
int PixelsOf(QWidget* w, QColor color) {
    QImage image = w->grab().toImage();
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            n += image.pixelColor(x, y) == color;
    return n;
}

class IntlFormsTest : public designertest::InspectorFixture {
protected:
    IntlFormsTest() : InspectorFixture(testfiles::DataDir() / "intl", "Intl.dpr") {}
    // The designer window of the unit's form, shown in the inspector too.
    TDesignerWindow* Show(const std::string& unit) {
        editor = Open(unit + ".pas");
        return window;
    }
    TFormEditor* editor = nullptr;
};

// The text a widget of the designer shows.
QString Shown(TDesignerWindow* w, const char* name) {
    if (!*name) return w->windowTitle();
    QWidget* widget = w->findChild<QWidget*>(name);
    if (auto* label = qobject_cast<QLabel*>(widget)) return label->text();
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) return edit->text();
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) return button->text();
    if (auto* box = qobject_cast<QComboBox*>(widget)) {
        QStringList all{box->currentText()};
        for (int i = 0; i < box->count(); ++i)
            all << box->itemText(i);
        return all.join('|');
    }
    if (auto* list = qobject_cast<QListWidget*>(widget)) {
        QStringList all;
        for (int i = 0; i < list->count(); ++i)
            all << list->item(i)->text();
        return all.join('|');
    }
    return "(no widget " + QString(name) + ")";
}

struct TShownCase {
    const char* unit;
    const char* component; // empty for the form
    const char* property;
    const char* text; // UTF-8
};

// Narrow strings of Windows-1252 (Portuguese), GBK (Chinese) and Windows-1256 (Persian) by the
// character set each form names, and wide strings beside them.
const TShownCase kShown[] = {
    {"Portuguese", "", "Caption", "Configurações"},
    {"Portuguese", "OptionsLabel", "Caption", "Opções de impressão"},
    {"Portuguese", "MessageEdit", "Text", "Não é possível — tente de novo"},
    {"Portuguese", "ChoiceList", nullptr, "Impressão|Configurações ≡"},
    {"Chinese", "", "Caption", "设置"},
    {"Chinese", "FontLabel", "Caption", "字体"},
    {"Chinese", "SizeBox", nullptr, "大小|大|小"},
    {"Persian", "", "Caption", "تنظیمات"},
    {"Persian", "FileLabel", "Caption", "پرونده"},
    {"Persian", "PrintButton", "Caption", "چاپ"},
    {"Persian", "MenuButton", "Caption", "≡"},
};

} // namespace

TEST_F(IntlFormsTest, TheDesignerAndTheInspectorShowEachStringAsTheFormStoresIt) {
    for (const TShownCase& c : kShown) {
        TDesignerWindow* w = Show(c.unit);
        ASSERT_NE(w, nullptr) << c.unit;
        EXPECT_EQ(Shown(w, c.component), U(c.text)) << c.unit << " " << c.component;
        if (!c.property) continue;
        Select(editor, c.component);
        EXPECT_EQ(inspector.ValueText(c.property), U(c.text)) << c.unit << " " << c.component;
    }
    // A font's name is a string of its form too.
    EXPECT_EQ(Show("Chinese")->findChild<QLabel*>("FontLabel")->font().family(), U("宋体"));
}

TEST_F(IntlFormsTest, AnEditedValueIsSavedWithEveryCharacterAndReadsBack) {
    struct Case {
        const char* unit;
        const char* component;
        const char* property;
        const char* typed;
        bool wide; // the form's code page can't hold it
    };
    const Case cases[] = {
        {"Portuguese", "SaveButton", "Caption", "Gravar ≡ 设置", true},
        {"Portuguese", "OptionsLabel", "Caption", "Opções gerais", false},
        {"Chinese", "FontLabel", "Caption", "字号", false},
        {"Persian", "PrintButton", "Caption", "چاپ کن", false},
        {"Persian", "", "Caption", "گزینه‌ها", true},
    };
    for (const Case& c : cases) {
        TDesignerWindow* w = Show(c.unit);
        Select(editor, c.component);
        ASSERT_TRUE(inspector.EditValue(c.property, U(c.typed))) << c.typed;
        EXPECT_EQ(inspector.ValueText(c.property), U(c.typed));
        QApplication::processEvents();
        EXPECT_EQ(Shown(w, c.component), U(c.typed));
        ASSERT_TRUE(module->Save(false, false));
        TFormFile again = LoadFormFile(copy.File(std::string(c.unit) + ".dfm"));
        TDesignComponent* saved =
            *c.component ? again.Root->FindComponent(c.component) : again.Root.get();
        const auto* p = saved->FindProperty(c.property);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(QString::fromStdU16String(DesignString(*p, FormCodePage(*saved))), U(c.typed));
        EXPECT_EQ(IsWideDesignString(*p), c.wide) << c.typed;
    }
}

TEST_F(IntlFormsTest, ButtonGlyphsArePaintedWithoutTheirTransparentColour) {
    TDesignerWindow* w = Show("Glyphs");
    const QColor fuchsia(255, 0, 255), olive(128, 128, 0), red(220, 0, 0), gray(128, 128, 128),
        green(0, 170, 0);
    // Two glyphs side by side: the first for the button, the second for the disabled one.
    auto* up = w->findChild<QToolButton*>("RedButton");
    ASSERT_NE(up, nullptr);
    EXPECT_EQ(up->iconSize(), QSize(16, 16));
    EXPECT_EQ(PixelsOf(up, red), 100);
    EXPECT_EQ(PixelsOf(up, fuchsia), 0);
    auto* disabled = w->findChild<QToolButton*>("GrayButton");
    EXPECT_EQ(PixelsOf(disabled, gray), 100);
    EXPECT_EQ(PixelsOf(disabled, red), 0);
    // A bit button's single glyph beside its caption.
    auto* next = w->findChild<QPushButton*>("NextButton");
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->text(), "Next");
    EXPECT_GT(PixelsOf(next, green), 20);
    EXPECT_EQ(PixelsOf(next, olive), 0);
}

TEST_F(IntlFormsTest, TabsShowTheirImagesFromTheImageListAndASheetKeepsItsBorder) {
    TDesignerWindow* w = Show("Glyphs");
    auto* pages = w->findChild<QTabWidget*>("Pages");
    ASSERT_NE(pages, nullptr);
    // Each sheet's ImageIndex picks its image; the list's mask leaves a two-pixel rim out.
    EXPECT_EQ(pages->iconSize(), QSize(16, 16));
    EXPECT_EQ(PixelsOf(pages->tabBar(), QColor(0, 0, 230)), 12 * 12);
    EXPECT_EQ(PixelsOf(pages->tabBar(), QColor(0, 170, 0)), 12 * 12);
    // The sheet's BorderWidth of 8 puts its client area, and what is aligned to fill it, inside.
    auto* inner = w->findChild<QWidget*>("InnerPanel");
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->geometry(), QRect(8, 8, 276, 116));
    EXPECT_EQ(inner->parentWidget(), w->findChild<QWidget*>("BlueSheet"));
}

TEST(Pictures, DamagedPictureDataGivesNoImage) {
    const std::string_view damaged[] = {"", "BM", std::string_view("\x04\0\0\0BM\0\0", 8),
                                        "IL\x01\x01", std::string_view("IL\x01\x01\x02\0", 6)};
    for (std::string_view d : damaged) {
        EXPECT_TRUE(BitmapData(d).isNull());
        EXPECT_TRUE(PictureData(d).isNull());
        EXPECT_TRUE(ImageListData(d).isEmpty());
    }
}
