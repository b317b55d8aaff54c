// The label of a row: a click on it moves the focus to the scroll box, which ends an edit in
// progress; with ellipsis on, a text wider than the label ends in "...".
#pragma once

#include "editor/SpcShrTypes.h"

#include <QLabel>

namespace zelvane {

class TSpcLabel : public QLabel {
    Q_OBJECT
public:
    TSpcLabel(QWidget* parent, bool ellipsis) : QLabel(parent), ellipsis_(ellipsis) {}
    bool Ellipsis() const { return ellipsis_; }

signals:
    void Clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool ellipsis_;
};

Qt::Alignment ToQtAlignment(TAlignment alignment);

} // namespace zelvane
