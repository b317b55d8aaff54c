#include "workbench/FormViewer.h"

#include "rtl/CodePage.h"

#include <QPainter>

#include <algorithm>

namespace workbench {

using ToolsAPI::TDesignComponent;

namespace {

const QColor kFace(212, 208, 200);
const QColor kShadow(128, 128, 128);
const QColor kLight(255, 255, 255);
const QColor kDark(64, 64, 64);

QString Text(const std::string& bytes) {
    return QString::fromStdString(rtl::Cp1251ToUtf8(bytes));
}

void Bevel(QPainter& p, const QRect& r, bool raised) {
    p.setPen(raised ? kLight : kShadow);
    p.drawLine(r.topLeft(), r.topRight());
    p.drawLine(r.topLeft(), r.bottomLeft());
    p.setPen(raised ? kDark : kLight);
    p.drawLine(r.bottomLeft(), r.bottomRight());
    p.drawLine(r.topRight(), r.bottomRight());
}

// Draws one component and its children; origin is the top left of its parent's client area.
void DrawComponent(QPainter& p, TDesignComponent* c, QPoint origin) {
    const int left = static_cast<int>(c->IntProp("Left")),
              top = static_cast<int>(c->IntProp("Top"));
    if (!c->IsControl()) {
        // A non-visual component: a small box with its name below.
        QRect box(origin.x() + left, origin.y() + top, 28, 28);
        p.fillRect(box, kFace);
        Bevel(p, box, true);
        p.setPen(Qt::black);
        p.drawText(box, Qt::AlignCenter, Text(c->ClassName.substr(1, 3)));
        p.drawText(QRect(box.left() - 20, box.bottom() + 2, 68, 14), Qt::AlignHCenter,
                   Text(c->Name));
        return;
    }
    int width = static_cast<int>(c->IntProp("Width", 64));
    int height = static_cast<int>(c->IntProp("Height", 24));
    QRect r(origin.x() + left, origin.y() + top, width - 1, height - 1);
    std::string caption = c->FindProperty("Caption") ? c->StrProp("Caption") : c->StrProp("Text");
    p.setPen(Qt::black);
    if (c->InheritsFrom("TButton") || c->InheritsFrom("TBitBtn") ||
        c->InheritsFrom("TSpeedButton")) {
        p.fillRect(r, kFace);
        Bevel(p, r, true);
        p.drawText(r, Qt::AlignCenter, Text(caption));
    } else if (c->InheritsFrom("TLabel")) {
        p.drawText(QRect(r.left(), r.top(), std::max(r.width(), 200), r.height() + 2),
                   Qt::AlignLeft | Qt::AlignVCenter, Text(caption));
    } else if (c->InheritsFrom("TEdit") || c->InheritsFrom("TComboBox") ||
               c->InheritsFrom("TMemo") || c->InheritsFrom("TListBox") ||
               c->InheritsFrom("TSpinEdit") || c->InheritsFrom("TStringGrid")) {
        p.fillRect(r, Qt::white);
        Bevel(p, r, false);
        p.drawText(r.adjusted(4, 2, -4, -2), Qt::AlignLeft | Qt::AlignTop,
                   Text(c->StrProp("Text")));
        if (c->InheritsFrom("TComboBox")) {
            QRect b(r.right() - 16, r.top() + 2, 15, r.height() - 3);
            p.fillRect(b, kFace);
            Bevel(p, b, true);
        }
    } else if (c->InheritsFrom("TCheckBox") || c->InheritsFrom("TRadioButton")) {
        QRect b(r.left(), r.top() + (r.height() - 13) / 2, 12, 12);
        p.fillRect(b, Qt::white);
        Bevel(p, b, false);
        p.drawText(QRect(r.left() + 18, r.top(), r.width() - 18, r.height()),
                   Qt::AlignLeft | Qt::AlignVCenter, Text(caption));
    } else if (c->InheritsFrom("TGroupBox") || c->InheritsFrom("TRadioGroup")) {
        QRect frame = r.adjusted(0, 7, 0, 0);
        p.setPen(kShadow);
        p.drawRect(frame);
        QFontMetrics fm(p.font());
        QRect t(r.left() + 8, r.top(), fm.horizontalAdvance(Text(caption)) + 4, 14);
        p.fillRect(t, kFace);
        p.setPen(Qt::black);
        p.drawText(t, Qt::AlignCenter, Text(caption));
    } else {
        // Panels, frames and anything else: a raised or plain area.
        p.fillRect(r, kFace);
        if (c->StrProp("BevelOuter") != "bvNone") Bevel(p, r, true);
        if (!caption.empty()) p.drawText(r, Qt::AlignCenter, Text(caption));
    }
    for (int i = 0; i < c->ChildCount(); ++i)
        DrawComponent(p, c->Child(i), r.topLeft());
}

} // namespace

TFormViewer::TFormViewer(QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName(QStringLiteral("FormViewer"));
    setWindowTitle(QStringLiteral("Form"));
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(11);
    setFont(f);
}

void TFormViewer::SetFormEditor(TFormEditor* editor) {
    editor_ = editor;
    TDesignComponent* root = editor ? editor->Root() : nullptr;
    if (root) {
        setWindowTitle(
            Text(root->StrProp("Caption").empty() ? root->Name : root->StrProp("Caption")));
        // The stored outer size counts the borders and the caption (and a main menu's bar), as
        // the platform's windows have them; the client area is what the components fill.
        const bool menu = !root->StrProp("Menu").empty();
        int w = static_cast<int>(root->IntProp("ClientWidth", root->IntProp("Width", 408) - 8));
        int h = static_cast<int>(
            root->IntProp("ClientHeight", root->IntProp("Height", 327) - 27 - (menu ? 19 : 0)));
        resize(std::clamp(w, 120, 1200), std::clamp(h + 22, 80, 900));
    }
    update();
}

void TFormViewer::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), kFace);
    TDesignComponent* root = editor_ ? editor_->Root() : nullptr;
    if (!root) return;
    // A caption bar, as the form has when it runs.
    QRect bar(0, 0, width(), 20);
    QLinearGradient g(bar.topLeft(), bar.topRight());
    g.setColorAt(0, QColor(10, 36, 106));
    g.setColorAt(1, QColor(166, 202, 240));
    p.fillRect(bar, g);
    p.setPen(Qt::white);
    QFont bold = font();
    bold.setBold(true);
    p.setFont(bold);
    p.drawText(bar.adjusted(6, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, windowTitle());
    p.setFont(font());
    // Dots of the designer's grid.
    p.setPen(QColor(0, 0, 0));
    for (int y = 24; y < height(); y += 8)
        for (int x = 0; x < width(); x += 8)
            p.drawPoint(x, y);
    for (int i = 0; i < root->ChildCount(); ++i)
        DrawComponent(p, root->Child(i), QPoint(0, 22));
}

} // namespace workbench
