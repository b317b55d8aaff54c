// The right side of the editor: for each column pair a label panel and a control panel inside the
// scroll box, each under a header section whose drag resizes it. The arithmetic of their widths,
// the freezing of redraw while they change, and the etched edges drawn between the columns.
#include "editor/SpcEditor.h"

#include "editor/SpcForm.h"
#include "editor/SpcLabel.h"
#include "specification/SpcConst.h"
#include "toolsapi/QtBridge.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QStandardItemModel>
#include <QRegularExpression>

namespace zelvane {

using namespace rtl;

Qt::Alignment ToQtAlignment(TAlignment alignment) {
    switch (alignment) {
    case taRightJustify:
        return Qt::AlignRight;
    case taCenter:
        return Qt::AlignHCenter;
    default:
        return Qt::AlignLeft;
    }
}

void TSpcLabel::mousePressEvent(QMouseEvent* event) {
    QLabel::mousePressEvent(event);
    emit Clicked();
}

void TSpcLabel::paintEvent(QPaintEvent* event) {
    if (!ellipsis_) return QLabel::paintEvent(event);
    QPainter painter(this);
    QStringList lines = text().split(QRegularExpression("\r\n|\n"));
    int lineHeight = fontMetrics().height();
    int y = (height() - lineHeight * int(lines.size())) / 2;
    if (alignment() & Qt::AlignTop) y = 0;
    for (const QString& line : lines) {
        QString shown = fontMetrics().elidedText(line, Qt::ElideRight, width());
        painter.drawText(QRect(0, y, width(), lineHeight), int(alignment() & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter, shown);
        y += lineHeight;
    }
}

namespace {

QWidget* MakePanel(QWidget* parent, const TPaintAreaInfo& info) {
    auto* panel = new QWidget(parent);
    panel->setFont(ToolsAPI::ToQFont(info.Font));
    QPalette palette = panel->palette();
    palette.setColor(QPalette::WindowText, ToolsAPI::ToQColor(info.Font.Color));
    panel->setPalette(palette);
    panel->setGeometry(0, 0, info.DefAreaWidth, 0);
    panel->show();
    return panel;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Columns

void TSpcEditor::MakeAreas() {
    QHeaderView* header = form_->HeaderControl();
    auto* model = static_cast<QStandardItemModel*>(header->model());
    model->setColumnCount(2 * colCount_);
    for (int i = 0; i < colCount_; ++i) {
        TAreaFrame& frame = frames_[static_cast<size_t>(i)];
        frame.LabelSection = 2 * i;
        frame.ControlSection = 2 * i + 1;
        const std::pair<int, const TPaintAreaInfo*> sections[] = {
            {frame.LabelSection, &labelAreaInfo_}, {frame.ControlSection, &controlAreaInfo_}};
        for (auto [section, info] : sections) {
            model->setHeaderData(section, Qt::Horizontal,
                                 section % 2 ? SValueSection : SParameterSection);
            model->setHeaderData(section, Qt::Horizontal,
                                 int(ToQtAlignment(info->Alignment) | Qt::AlignVCenter),
                                 Qt::TextAlignmentRole);
            header->resizeSection(section, info->DefAreaWidth);
        }
        frame.LabelPanel = MakePanel(form_->ScrollContent(), labelAreaInfo_);
        frame.ControlPanel = MakePanel(form_->ScrollContent(), controlAreaInfo_);
    }
    UpdatePaintAreas(akAll, -1);
}

int TSpcEditor::SectionLeft(int section) const {
    return form_->HeaderControl()->sectionPosition(section);
}

int TSpcEditor::SectionWidth(int section) const {
    return form_->HeaderControl()->sectionSize(section);
}

int TSpcEditor::SectionTextWidth(int section) const {
    QHeaderView* header = form_->HeaderControl();
    QString text = header->model()->headerData(section, Qt::Horizontal).toString();
    return header->fontMetrics().horizontalAdvance(text);
}

// Both panels of the column to their sections, AreaInset inside them.
void TSpcEditor::PlaceColumn(int index) {
    const TAreaFrame& frame = frames_[static_cast<size_t>(index)];
    int height = areasVisible_ ? areaHeight_ : 0;
    for (auto [panel, section] : {std::pair{frame.LabelPanel, frame.LabelSection},
                                  std::pair{frame.ControlPanel, frame.ControlSection}}) {
        if (!panel) continue;
        QRect r(SectionLeft(section) + AreaInset, 0, SectionWidth(section) - 2 * AreaInset,
                height);
        if (panel->geometry() != r) panel->setGeometry(r);
    }
}

void TSpcEditor::UpdatePaintAreas(TAreaKind kind, int index) {
    if (!form_ || frames_.empty()) return;
    if (index < 0 && kind != akAll) CreateException<ESpcEditorError>(SBadSectionNumber);
    if (kind == akAll) {
        for (int i = 0; i < colCount_; ++i) {
            PlaceColumn(i);
            UpdateLabelArea(i);
            UpdateControlArea(i);
        }
    } else {
        BeginUpdate(kind, index);
        for (int i = index; i < colCount_; ++i) PlaceColumn(i);
        DrawEdges();
        if (kind == akLabel)
            UpdateLabelArea(index);
        else
            UpdateControlArea(index);
        EndUpdate(kind, index);
    }
    UpdateContentSize();
}

void TSpcEditor::UpdateLabelArea(int index) {
    QWidget* panel = frames_[static_cast<size_t>(index)].LabelPanel;
    int width = panel->width() - labelAreaInfo_.LeftMargin - labelAreaInfo_.RightMargin;
    for (const QPointer<QLabel>& label : labelList_)
        if (label && label->property("AreaIndex").toInt() == index)
            label->resize(width, label->height());
}

void TSpcEditor::UpdateControlArea(int index) {
    int areaWidth = frames_[static_cast<size_t>(index)].ControlPanel->width();
    for (const auto& info : controlList_) {
        if (info->AreaIndex != index) continue;
        bool handled = false;
        if (OnResizeControl) OnResizeControl(info.get(), areaWidth, handled);
        if (!handled) ResizeControl(info.get(), areaWidth);
    }
}

void TSpcEditor::ResizeControl(TControlInfo* info, int areaWidth) {
    QWidget* control = info->Control;
    if (!control) return;
    const TControlAreaInfo& area = controlAreaInfo_;
    int room = areaWidth - area.LeftMargin - area.RightMargin;
    int width = !info->IsPercent ? info->Width : info->Width == 100 ? room : room * info->Width / 100;
    int left = area.Alignment == taRightJustify ? areaWidth - area.RightMargin - width
               : area.Alignment == taCenter     ? (areaWidth - width) / 2
                                                : area.LeftMargin;
    if (control->x() != left || control->width() != width)
        control->setGeometry(left, control->y(), width, control->height());
}

void TSpcEditor::HideAreas() {
    areasVisible_ = false;
    for (int i = 0; i < static_cast<int>(frames_.size()); ++i) PlaceColumn(i);
    UpdateContentSize();
}

void TSpcEditor::UpdateContentSize() {
    if (!form_) return;
    QWidget* content = form_->ScrollContent();
    int width = form_->HeaderControl()->length();
    int height = areasVisible_ ? std::max(areaHeight_, form_->ScrollBox()->viewport()->height())
                               : 0;
    if (content->size() != QSize(width, height)) content->resize(width, height);
    DrawEdges();
}

// ---------------------------------------------------------------------------------------------
// Freezing

void TSpcEditor::SetUpdateState(TAreaKind kind, int index, bool update) {
    if (!form_) return;
    if (index < 0 && kind != akAll) CreateException<ESpcEditorError>(SBadSectionNumber);
    std::vector<QWidget*> panels;
    if (kind == akAll) {
        panels.push_back(form_->PaintPanel());
    } else {
        for (int i = index; i < static_cast<int>(frames_.size()); ++i) {
            const TAreaFrame& frame = frames_[static_cast<size_t>(i)];
            if (i > index || kind == akLabel) panels.push_back(frame.LabelPanel);
            panels.push_back(frame.ControlPanel);
        }
    }
    for (QWidget* panel : panels) {
        if (!panel) continue;
        panel->setUpdatesEnabled(update);
        if (update) panel->update();
    }
}

void TSpcEditor::BeginUpdate(TAreaKind kind, int index) {
    SetUpdateState(kind, index, false);
}

void TSpcEditor::EndUpdate(TAreaKind kind, int index) {
    SetUpdateState(kind, index, true);
}

// ---------------------------------------------------------------------------------------------
// Header drags

void TSpcEditor::SectionResize(int section) {
    int column = section / 2;
    if (column >= static_cast<int>(frames_.size()))
        CreateException<ESpcEditorError>(SSectionParamsError);
    const TAreaFrame& frame = frames_[static_cast<size_t>(column)];
    TAreaKind kind;
    if (section == frame.LabelSection)
        kind = akLabel;
    else if (section == frame.ControlSection)
        kind = akControl;
    else
        CreateException<ESpcEditorError>(SSectionParamsError);
    edgesEnabled_ = false;
    UpdatePaintAreas(kind, column);
    edgesEnabled_ = true;
    DrawEdges();
}

// Without full dragging a line follows the drag, and the columns follow at its end.
void TSpcEditor::HeaderSectionTrack(int section, int width, bool end) {
    if (fullDragging_ || !form_) return;
    if (end) {
        form_->HideTrackLine();
        SectionResize(section);
        return;
    }
    QHeaderView* header = form_->HeaderControl();
    form_->ShowTrackLine(header->sectionViewportPosition(section) + width);
}

// ---------------------------------------------------------------------------------------------
// Edges

void TSpcEditor::DrawEdges() {
    if (form_) form_->ScrollContent()->update();
}

void TSpcEditor::ScrollContentPainted(QPainter& painter) {
    if (!areasVisible_ || !edgesEnabled_) return;
    QWidget* content = form_->ScrollContent();
    int x = 0;
    for (TAreaFrame& frame : frames_) {
        x += SectionWidth(frame.LabelSection) + SectionWidth(frame.ControlSection);
        frame.EdgeX = x - 1;
        painter.setPen(content->palette().color(QPalette::Dark));
        painter.drawLine(frame.EdgeX, 0, frame.EdgeX, content->height());
        painter.setPen(content->palette().color(QPalette::Light));
        painter.drawLine(frame.EdgeX + 1, 0, frame.EdgeX + 1, content->height());
    }
}

} // namespace zelvane
