// The widgets that show the components of a form in a designer window.
//
// Each control class of the platform's widget library is shown by the nearest Qt widget, with
// the position, size, caption, alignment, font and colour that the form file gives it. A class
// that none of them stands for is a labelled box; a non-visual component is a small icon at
// the place its Left and Top give.
#pragma once

// The meta-object compiler needs none of the runtime, whose C++20 headers it cannot read.
#ifndef Q_MOC_RUN
#include "toolsapi/DesignComponent.h"
#endif

#include <QFrame>
#include <QWidget>

namespace workbench::designer {

// What a component is shown as.
enum class TControlKind {
    Form,
    Frame,
    Panel,
    GroupBox,
    RadioGroup,
    Label,
    Edit,
    Memo,
    Button,
    SpeedButton,
    CheckBox,
    RadioButton,
    ListBox,
    ComboBox,
    PageControl,
    TabSheet,
    TabControl,
    Image,
    Shape,
    Bevel,
    ScrollBox,
    Splitter,
    StatusBar,
    ToolBar,
    ToolButton,
    TreeView,
    ListView,
    Grid,
    ProgressBar,
    TrackBar,
    NonVisual,
    Unknown
};

TControlKind ControlKindOf(const ToolsAPI::TDesignComponent& c);
// Kinds whose children are placed inside them.
bool IsContainer(TControlKind kind);
const char* ControlKindName(TControlKind kind);

// The widget for a component, a child of parent, at the component's place. The fonts and
// colours it inherits from its parents come in as the parent's font and palette. The widget
// carries the component's name as its object name and the class name in its "className"
// property.
QWidget* CreateControl(const ToolsAPI::TDesignComponent& c, QWidget* parent);

// A box drawn by hand, for the classes that have no Qt widget: bevels, shapes, splitters,
// status bars, images without a picture, the icons of non-visual components and classes the
// designer does not know.
class TPaintedControl : public QWidget {
    Q_OBJECT
public:
    TPaintedControl(TControlKind kind, const ToolsAPI::TDesignComponent& c, QWidget* parent);
    TControlKind Kind() const { return kind_; }
    QString Text() const { return text_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    TControlKind kind_;
    QString text_;
    QString shape_;
    QString style_;
    QColor brush_;
    QColor pen_;
    QStringList panels_;
    QList<int> panelWidths_;
    QImage picture_;
};

} // namespace workbench::designer
