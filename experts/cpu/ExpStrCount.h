// Unit ExpStrCount: the small dialog in which the user enters the number of lines a CPU capture
// reads. A tool window centred on the screen with a spin edit that takes any integer; what is
// entered is checked by whoever asked (experts/cpu/CPUView.h). Run it with exec(): it gives
// mrOk when the user confirms, anything else when the user cancels.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;
class QSpinBox;

namespace zelvane {

class TStrCountForm : public QDialog {
    Q_OBJECT
public:
    explicit TStrCountForm(QWidget* owner = nullptr);

    QSpinBox* SpinEdit() const { return spinEdit_; }
    QPushButton* btnOk() const { return btnOk_; }
    QPushButton* btnCancel() const { return btnCancel_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void FormCreate();

    QLabel* lbStrCount_;
    QSpinBox* spinEdit_;
    QPushButton* btnOk_;
    QPushButton* btnCancel_;
};

} // namespace zelvane
