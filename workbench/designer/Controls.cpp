#include "workbench/designer/Controls.h"

#include "toolsapi/QtBridge.h"
#include "workbench/designer/Pictures.h"
#include "workbench/designer/VclValues.h"
#include "workbench/model/FormFile.h"
#include "workbench/model/ProjectFiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeWidget>

namespace workbench::designer {

using ToolsAPI::FromBytes;
using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {
// The class or an ancestor is cls; a tree read without its ancestry asks the library.
bool Inherits(const TDesignComponent& c, const char* cls) {
    if (c.InheritsFrom(cls)) return true;
    if (!c.Ancestors.empty()) return false;
    std::string name = c.ClassName;
    for (int depth = 0; depth < 64; ++depth) {
        name = LibraryClassParent(name);
        if (name.empty()) return false;
        if (rtl::SameText(name, cls)) return true;
    }
    return false;
}
} // namespace

TControlKind ControlKindOf(const TDesignComponent& c) {
    // The most derived library class first: a TRadioGroup is also a group box, a TMemo an edit.
    struct Row {
        const char* cls;
        TControlKind kind;
    };
    static const Row rows[] = {
        {"TCustomForm", TControlKind::Form},
        {"TCustomFrame", TControlKind::Frame},
        {"TCustomRadioGroup", TControlKind::RadioGroup},
        {"TCustomGroupBox", TControlKind::GroupBox},
        {"TCustomLabel", TControlKind::Label},
        {"TCustomStaticText", TControlKind::Label},
        {"TCustomMemo", TControlKind::Memo},
        {"TCustomEdit", TControlKind::Edit},
        {"TSpeedButton", TControlKind::SpeedButton},
        {"TToolButton", TControlKind::ToolButton},
        {"TCustomButton", TControlKind::Button},
        {"TCustomCheckBox", TControlKind::CheckBox},
        {"TRadioButton", TControlKind::RadioButton},
        {"TCustomListBox", TControlKind::ListBox},
        {"TCustomComboBox", TControlKind::ComboBox},
        {"TPageControl", TControlKind::PageControl},
        {"TTabSheet", TControlKind::TabSheet},
        {"TCustomTabControl", TControlKind::TabControl},
        {"TImage", TControlKind::Image},
        {"TShape", TControlKind::Shape},
        {"TBevel", TControlKind::Bevel},
        {"TScrollBox", TControlKind::ScrollBox},
        {"TSplitter", TControlKind::Splitter},
        {"TStatusBar", TControlKind::StatusBar},
        {"TToolBar", TControlKind::ToolBar},
        {"TCustomTreeView", TControlKind::TreeView},
        {"TCustomListView", TControlKind::ListView},
        {"TCustomGrid", TControlKind::Grid},
        {"TProgressBar", TControlKind::ProgressBar},
        {"TTrackBar", TControlKind::TrackBar},
        {"TCustomPanel", TControlKind::Panel},
    };
    for (const Row& r : rows)
        if (Inherits(c, r.cls)) return r.kind;
    if (Inherits(c, "TControl")) return TControlKind::Unknown;
    if (Inherits(c, "TComponent") || !c.IsControl()) return TControlKind::NonVisual;
    return TControlKind::Unknown;
}

bool IsContainer(TControlKind kind) {
    switch (kind) {
    case TControlKind::Form:
    case TControlKind::Frame:
    case TControlKind::Panel:
    case TControlKind::GroupBox:
    case TControlKind::RadioGroup:
    case TControlKind::PageControl:
    case TControlKind::TabSheet:
    case TControlKind::TabControl:
    case TControlKind::ScrollBox:
    case TControlKind::StatusBar:
    case TControlKind::ToolBar:
    case TControlKind::Unknown:
        return true;
    default:
        return false;
    }
}

const char* ControlKindName(TControlKind kind) {
    static const char* names[] = {
        "Form",       "Frame",    "Panel",       "GroupBox",    "RadioGroup",  "Label",
        "Edit",       "Memo",     "Button",      "SpeedButton", "CheckBox",    "RadioButton",
        "ListBox",    "ComboBox", "PageControl", "TabSheet",    "TabControl",  "Image",
        "Shape",      "Bevel",    "ScrollBox",   "Splitter",    "StatusBar",   "ToolBar",
        "ToolButton", "TreeView", "ListView",    "Grid",        "ProgressBar", "TrackBar",
        "NonVisual",  "Unknown"};
    return names[static_cast<int>(kind)];
}

namespace {

int Int(const TDesignComponent& c, const char* name, int fallback) {
    return static_cast<int>(c.IntProp(name, fallback));
}

bool Bool(const TDesignComponent& c, const char* name, bool fallback) {
    const TDesignProperty* p = c.FindProperty(name);
    if (!p || p->Kind != TDesignValueKind::Boolean) return fallback;
    return p->Int != 0;
}

// The widths and texts of a status bar's panels, from the collection's text form.
void StatusPanels(const TDesignComponent& c, QStringList& texts, QList<int>& widths) {
    const TDesignProperty* p = c.FindProperty("Panels");
    if (!p || p->Kind != TDesignValueKind::Collection) return;
    const std::string& t = p->Text;
    size_t pos = 0;
    while ((pos = t.find("item", pos)) != std::string::npos) {
        size_t end = t.find(" end", pos);
        if (end == std::string::npos) break;
        std::string item = t.substr(pos, end - pos);
        int width = 50;
        QString text;
        if (size_t w = item.find("Width = "); w != std::string::npos)
            width = std::atoi(item.c_str() + w + 8);
        if (size_t x = item.find("Text = "); x != std::string::npos) {
            std::string value = item.substr(x + 7);
            size_t stop = value.find(" ");
            while (stop != std::string::npos && value[0] == '\'' &&
                   std::count(value.begin(), value.begin() + long(stop), '\'') % 2)
                stop = value.find(" ", stop + 1);
            try {
                auto v = ParseDesignProperty("Text", value.substr(0, stop));
                text = FormString(c, v);
            } catch (const rtl::Exception&) {
            }
        }
        texts << text;
        widths << width;
        pos = end + 4;
    }
}

// A button's glyph as its icon, at the glyph's own size; whether it has one.
bool SetGlyph(QAbstractButton* b, const TDesignComponent& c) {
    QIcon glyph = ButtonGlyph(c);
    if (glyph.isNull()) return false;
    b->setIcon(glyph);
    b->setIconSize(glyph.availableSizes().value(0));
    return true;
}

void SetBackground(QWidget* w, const QColor& color) {
    QPalette pal = w->palette();
    pal.setColor(QPalette::Window, color);
    pal.setColor(QPalette::Base, color);
    pal.setColor(QPalette::Button, color);
    w->setPalette(pal);
    w->setAutoFillBackground(true);
}

void SetTextColor(QWidget* w, const QColor& color) {
    QPalette pal = w->palette();
    pal.setColor(QPalette::WindowText, color);
    pal.setColor(QPalette::Text, color);
    pal.setColor(QPalette::ButtonText, color);
    w->setPalette(pal);
}

} // namespace

TPaintedControl::TPaintedControl(TControlKind kind, const TDesignComponent& c, QWidget* parent)
    : QWidget(parent), kind_(kind) {
    shape_ = FromBytes(c.StrProp("Shape"));
    style_ = FromBytes(c.StrProp("Style"));
    brush_ = ColorProp(c, "Brush.Color", Qt::white);
    pen_ = ColorProp(c, "Pen.Color", Qt::black);
    switch (kind) {
    case TControlKind::NonVisual:
        text_ = FromBytes(c.ClassName);
        break;
    case TControlKind::Unknown:
        text_ = FromBytes(c.Name + ": " + c.ClassName);
        break;
    case TControlKind::StatusBar:
        if (Bool(c, "SimplePanel", false))
            text_ = TextProp(c, "SimpleText");
        else
            StatusPanels(c, panels_, panelWidths_);
        break;
    case TControlKind::Image:
        picture_ = PictureData(BinaryProp(c, "Picture.Data"));
        break;
    default:
        break;
    }
}

void TPaintedControl::paintEvent(QPaintEvent*) {
    QPainter p(this);
    QRect r = rect();
    const QColor shadow(0x80, 0x80, 0x80), light(Qt::white),
        face = palette().color(QPalette::Window);
    auto sunken = [&](QRect box) {
        p.setPen(shadow);
        p.drawLine(box.topLeft(), box.topRight());
        p.drawLine(box.topLeft(), box.bottomLeft());
        p.setPen(light);
        p.drawLine(box.bottomLeft(), box.bottomRight());
        p.drawLine(box.topRight(), box.bottomRight());
    };
    switch (kind_) {
    case TControlKind::Bevel: {
        bool raised = style_ == "bsRaised";
        QColor first = raised ? light : shadow, second = raised ? shadow : light;
        QString s = shape_.isEmpty() ? "bsBox" : shape_;
        if (s == "bsTopLine" || s == "bsBottomLine") {
            int y = s == "bsTopLine" ? 0 : r.height() - 2;
            p.setPen(first);
            p.drawLine(0, y, r.width() - 1, y);
            p.setPen(second);
            p.drawLine(0, y + 1, r.width() - 1, y + 1);
        } else if (s == "bsLeftLine" || s == "bsRightLine") {
            int x = s == "bsLeftLine" ? 0 : r.width() - 2;
            p.setPen(first);
            p.drawLine(x, 0, x, r.height() - 1);
            p.setPen(second);
            p.drawLine(x + 1, 0, x + 1, r.height() - 1);
        } else if (s == "bsFrame") {
            p.setPen(first);
            p.drawRect(r.adjusted(0, 0, -2, -2));
            p.setPen(second);
            p.drawRect(r.adjusted(1, 1, -1, -1));
        } else if (s != "bsSpacer") {
            p.setPen(first);
            p.drawLine(r.topLeft(), r.topRight());
            p.drawLine(r.topLeft(), r.bottomLeft());
            p.setPen(second);
            p.drawLine(r.bottomLeft(), r.bottomRight());
            p.drawLine(r.topRight(), r.bottomRight());
        }
        break;
    }
    case TControlKind::Shape: {
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(pen_);
        p.setBrush(brush_);
        QRect box = r.adjusted(0, 0, -1, -1);
        if (shape_.contains("Square") || shape_ == "stCircle") {
            int side = std::min(box.width(), box.height());
            box = QRect(box.x() + (box.width() - side) / 2, box.y() + (box.height() - side) / 2,
                        side, side);
        }
        if (shape_ == "stCircle" || shape_ == "stEllipse")
            p.drawEllipse(box);
        else if (shape_.startsWith("stRound"))
            p.drawRoundedRect(box, 8, 8);
        else
            p.drawRect(box);
        break;
    }
    case TControlKind::Splitter:
        p.fillRect(r, face);
        break;
    case TControlKind::StatusBar: {
        p.fillRect(r, face);
        QRect inner = r.adjusted(0, 2, 0, 0);
        p.setPen(palette().color(QPalette::WindowText));
        if (panels_.isEmpty()) {
            QRect box = inner.adjusted(0, 0, -1, -1);
            sunken(box);
            p.setPen(palette().color(QPalette::WindowText));
            p.drawText(box.adjusted(3, 0, -3, 0), Qt::AlignVCenter | Qt::AlignLeft, text_);
        } else {
            int x = 0;
            for (int i = 0; i < panels_.size(); ++i) {
                int w = i == panels_.size() - 1 ? r.width() - x : panelWidths_[i];
                QRect box(x, inner.y(), w - 2, inner.height() - 1);
                sunken(box);
                p.setPen(palette().color(QPalette::WindowText));
                p.drawText(box.adjusted(3, 0, -3, 0), Qt::AlignVCenter | Qt::AlignLeft, panels_[i]);
                x += w;
            }
        }
        // The size grip.
        for (int i = 0; i < 3; ++i) {
            int d = 4 * i + 3;
            p.setPen(shadow);
            p.drawLine(r.right() - d, r.bottom(), r.right(), r.bottom() - d);
            p.setPen(light);
            p.drawLine(r.right() - d + 1, r.bottom(), r.right(), r.bottom() - d + 1);
        }
        break;
    }
    case TControlKind::Image:
        if (!picture_.isNull()) {
            p.drawImage(0, 0, picture_);
        } else {
            // An empty picture is outlined at design time only.
            p.setPen(QPen(Qt::black, 1, Qt::DashLine));
            p.drawRect(r.adjusted(0, 0, -1, -1));
        }
        break;
    case TControlKind::NonVisual: {
        // A button face with the class's initials, as the palette's icon would stand there.
        p.fillRect(r, face);
        p.setPen(light);
        p.drawLine(r.topLeft(), r.topRight());
        p.drawLine(r.topLeft(), r.bottomLeft());
        p.setPen(QColor(0x40, 0x40, 0x40));
        p.drawLine(r.bottomLeft(), r.bottomRight());
        p.drawLine(r.topRight(), r.bottomRight());
        QString initials;
        for (int i = 1; i < text_.size() && initials.size() < 3; ++i)
            if (text_[i].isUpper()) initials += text_[i];
        QFont f = font();
        f.setPixelSize(10);
        f.setBold(true);
        p.setFont(f);
        p.setPen(QColor(0x00, 0x00, 0x80));
        p.drawText(r, Qt::AlignCenter, initials);
        break;
    }
    case TControlKind::Unknown:
    default:
        p.fillRect(r, face);
        p.setPen(QPen(QColor(0x80, 0x80, 0x80), 1, Qt::DashLine));
        p.drawRect(r.adjusted(0, 0, -1, -1));
        p.setPen(palette().color(QPalette::WindowText));
        p.drawText(r.adjusted(2, 2, -2, -2), Qt::AlignCenter | Qt::TextWordWrap, text_);
        break;
    }
}

QWidget* CreateControl(const TDesignComponent& c, QWidget* parent) {
    TControlKind kind = ControlKindOf(c);
    QWidget* w = nullptr;
    QString caption = TextProp(c, "Caption");
    switch (kind) {
    case TControlKind::Form:
    case TControlKind::Frame: {
        auto* f = new QFrame(parent);
        w = f;
        break;
    }
    case TControlKind::Panel: {
        auto* f = new QFrame(parent);
        std::string outer = c.StrProp("BevelOuter"), inner = c.StrProp("BevelInner");
        if (outer == "bvLowered")
            f->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        else if (outer != "bvNone")
            f->setFrameStyle(QFrame::Panel | QFrame::Raised);
        if (inner == "bvLowered" || inner == "bvRaised") f->setLineWidth(2);
        if (!caption.isEmpty()) {
            auto* l = new QLabel(caption, f);
            l->setObjectName("caption");
            l->setAlignment(VclAlignment(c, Qt::AlignCenter) | Qt::AlignVCenter);
            l->setGeometry(0, 0, Int(c, "Width", 185), Int(c, "Height", 41));
            l->setAttribute(Qt::WA_TransparentForMouseEvents);
        }
        w = f;
        break;
    }
    case TControlKind::GroupBox:
        w = new QGroupBox(caption, parent);
        break;
    case TControlKind::RadioGroup: {
        auto* g = new QGroupBox(caption, parent);
        QStringList items = StringsProp(c, "Items.Strings");
        int columns = std::max(1, Int(c, "Columns", 1));
        int index = Int(c, "ItemIndex", -1);
        int width = Int(c, "Width", 185), height = Int(c, "Height", 105);
        int rows = (int(items.size()) + columns - 1) / columns;
        int top = 16, rowHeight = rows ? std::max(17, (height - top - 4) / rows) : 17;
        for (int i = 0; i < items.size(); ++i) {
            auto* b = new QRadioButton(items[i], g);
            b->setAutoExclusive(false);
            b->setChecked(i == index);
            int col = i / std::max(1, rows), row = i % std::max(1, rows);
            int colWidth = (width - 16) / columns;
            b->setGeometry(8 + col * colWidth, top + row * rowHeight, colWidth, 17);
        }
        w = g;
        break;
    }
    case TControlKind::Label: {
        auto* l = new QLabel(caption, parent);
        l->setAlignment(VclAlignment(c, Qt::AlignLeft | Qt::AlignTop));
        l->setWordWrap(Bool(c, "WordWrap", false));
        if (!Bool(c, "Transparent", false) && c.FindProperty("Color"))
            SetBackground(l, ColorProp(c, "Color", l->palette().color(QPalette::Window)));
        w = l;
        break;
    }
    case TControlKind::Edit: {
        auto* e = new QLineEdit(TextProp(c, "Text"), parent);
        e->setAlignment(VclAlignment(c, Qt::AlignLeft) | Qt::AlignVCenter);
        e->setCursorPosition(0);
        w = e;
        break;
    }
    case TControlKind::Memo: {
        auto* m = new QPlainTextEdit(parent);
        m->setPlainText(StringsProp(c, "Lines.Strings").join("\n"));
        std::string bars = c.StrProp("ScrollBars");
        m->setVerticalScrollBarPolicy(bars == "ssVertical" || bars == "ssBoth"
                                          ? Qt::ScrollBarAlwaysOn
                                          : Qt::ScrollBarAlwaysOff);
        m->setHorizontalScrollBarPolicy(bars == "ssHorizontal" || bars == "ssBoth"
                                            ? Qt::ScrollBarAlwaysOn
                                            : Qt::ScrollBarAlwaysOff);
        w = m;
        break;
    }
    case TControlKind::Button: {
        auto* b = new QPushButton(caption, parent);
        b->setDefault(Bool(c, "Default", false));
        SetGlyph(b, c);
        w = b;
        break;
    }
    case TControlKind::SpeedButton:
    case TControlKind::ToolButton: {
        auto* b = new QToolButton(parent);
        b->setText(caption);
        b->setAutoRaise(kind == TControlKind::ToolButton || Bool(c, "Flat", false));
        if (c.StrProp("Style") == "tbsSeparator") b->setEnabled(false);
        if (SetGlyph(b, c))
            b->setToolButtonStyle(caption.isEmpty() ? Qt::ToolButtonIconOnly
                                  : c.StrProp("Layout") == "blGlyphTop" ||
                                          c.StrProp("Layout") == "blGlyphBottom"
                                      ? Qt::ToolButtonTextUnderIcon
                                      : Qt::ToolButtonTextBesideIcon);
        w = b;
        break;
    }
    case TControlKind::CheckBox: {
        auto* b = new QCheckBox(caption, parent);
        std::string state = c.StrProp("State");
        b->setTristate(state == "cbGrayed");
        b->setCheckState(state == "cbGrayed"                                 ? Qt::PartiallyChecked
                         : Bool(c, "Checked", false) || state == "cbChecked" ? Qt::Checked
                                                                             : Qt::Unchecked);
        w = b;
        break;
    }
    case TControlKind::RadioButton: {
        auto* b = new QRadioButton(caption, parent);
        b->setAutoExclusive(false);
        b->setChecked(Bool(c, "Checked", false));
        w = b;
        break;
    }
    case TControlKind::ListBox: {
        auto* l = new QListWidget(parent);
        l->addItems(StringsProp(c, "Items.Strings"));
        w = l;
        break;
    }
    case TControlKind::ComboBox: {
        auto* b = new QComboBox(parent);
        b->addItems(StringsProp(c, "Items.Strings"));
        bool list = c.StrProp("Style") == "csDropDownList";
        if (!list) {
            b->setEditable(true);
            b->setEditText(TextProp(c, "Text"));
        } else {
            b->setCurrentIndex(Int(c, "ItemIndex", -1));
        }
        w = b;
        break;
    }
    case TControlKind::PageControl:
        w = new QTabWidget(parent);
        break;
    case TControlKind::TabSheet:
        // The page control places its sheets; a sheet outside one is a plain page.
        w = new QWidget(parent);
        break;
    case TControlKind::TabControl: {
        auto* f = new QFrame(parent);
        f->setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
        auto* bar = new QTabBar(f);
        for (const QString& t : StringsProp(c, "Tabs.Strings"))
            bar->addTab(t);
        bar->setCurrentIndex(Int(c, "TabIndex", 0));
        bar->move(2, 2);
        w = f;
        break;
    }
    case TControlKind::ScrollBox: {
        auto* f = new QFrame(parent);
        if (c.StrProp("BorderStyle") != "bsNone") f->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        w = f;
        break;
    }
    case TControlKind::ToolBar: {
        auto* f = new QFrame(parent);
        if (c.StrProp("EdgeBorders") != "[]") f->setFrameStyle(QFrame::HLine | QFrame::Raised);
        w = f;
        break;
    }
    case TControlKind::TreeView: {
        auto* t = new QTreeWidget(parent);
        t->setHeaderHidden(true);
        w = t;
        break;
    }
    case TControlKind::ListView: {
        auto* t = new QTreeWidget(parent);
        t->setRootIsDecorated(false);
        t->setHeaderHidden(c.StrProp("ViewStyle") != "vsReport");
        w = t;
        break;
    }
    case TControlKind::Grid: {
        int cols = Int(c, "ColCount", 5), rows = Int(c, "RowCount", 5);
        auto* t = new QTableWidget(std::min(rows, 200), std::min(cols, 100), parent);
        t->horizontalHeader()->setDefaultSectionSize(Int(c, "DefaultColWidth", 64));
        t->verticalHeader()->setDefaultSectionSize(Int(c, "DefaultRowHeight", 24));
        t->horizontalHeader()->hide();
        t->verticalHeader()->hide();
        w = t;
        break;
    }
    case TControlKind::ProgressBar: {
        auto* b = new QProgressBar(parent);
        b->setRange(Int(c, "Min", 0), Int(c, "Max", 100));
        b->setValue(Int(c, "Position", 0));
        b->setTextVisible(false);
        w = b;
        break;
    }
    case TControlKind::TrackBar: {
        auto* s = new QSlider(
            c.StrProp("Orientation") == "trVertical" ? Qt::Vertical : Qt::Horizontal, parent);
        s->setRange(Int(c, "Min", 0), Int(c, "Max", 10));
        s->setValue(Int(c, "Position", 0));
        w = s;
        break;
    }
    case TControlKind::Image:
    case TControlKind::Shape:
    case TControlKind::Bevel:
    case TControlKind::Splitter:
    case TControlKind::StatusBar:
    case TControlKind::NonVisual:
    case TControlKind::Unknown:
        w = new TPaintedControl(kind, c, parent);
        break;
    }

    w->setObjectName(FromBytes(c.Name));
    w->setProperty("className", FromBytes(c.ClassName));
    w->setFocusPolicy(Qt::NoFocus);

    // Font and colours: the component's own over what it inherits from its parent.
    if (parent) w->setFont(VclFont(c, parent->font()));
    QPalette base = w->palette();
    QColor text = FontColor(c, base.color(QPalette::WindowText));
    if (c.FindProperty("Font.Color")) SetTextColor(w, text);
    if (kind != TControlKind::Label && c.FindProperty("Color")) {
        QColor fallback = base.color(QPalette::Window);
        SetBackground(w, ColorProp(c, "Color", fallback));
    }
    if (kind == TControlKind::Form || kind == TControlKind::Frame || kind == TControlKind::Panel ||
        kind == TControlKind::GroupBox || kind == TControlKind::ToolBar ||
        kind == TControlKind::ScrollBox)
        w->setAutoFillBackground(true);

    // Place: non-visual components stand as a 28-pixel icon at Left, Top.
    int left = Int(c, "Left", 0), top = Int(c, "Top", 0);
    if (kind == TControlKind::NonVisual) {
        w->setGeometry(left, top, 28, 28);
        w->setToolTip(FromBytes(c.Name + ": " + c.ClassName));
    } else {
        w->setGeometry(left, top, std::max(0, Int(c, "Width", 0)),
                       std::max(0, Int(c, "Height", 0)));
    }
    // A label sizes itself to its text, unless AutoSize is off or it wraps its words.
    if (kind == TControlKind::Label && Bool(c, "AutoSize", true) && !Bool(c, "WordWrap", false))
        w->resize(w->sizeHint().width(), w->height());
    // Controls that are hidden at run time still show in the designer.
    if (!Bool(c, "Enabled", true)) w->setEnabled(false);
    return w;
}

} // namespace workbench::designer
