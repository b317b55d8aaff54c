// The form viewer: a window that draws the designed form of a form editor from its component
// tree, as the form file describes it (controls at their places with their captions, non-visual
// components as small boxes). It shows, it does not edit.
#pragma once

#include "workbench/model/Model.h"

#include <QWidget>

namespace workbench {

class TFormViewer : public QWidget {
    Q_OBJECT
public:
    explicit TFormViewer(QWidget* parent = nullptr);

    // The form editor shown; nullptr shows nothing.
    void SetFormEditor(TFormEditor* editor);
    TFormEditor* FormEditor() const { return editor_.get(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DelphiInterface<TFormEditor> editor_;
};

} // namespace workbench
