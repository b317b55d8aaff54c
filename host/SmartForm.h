// Unit SmartForm: a window that remembers its place. It closes on Esc and stores its placement
// on a hot key (Ctrl+S by default), through its own two actions in the category "FormMng"; the
// placement is the text of ten numbers that foundation/AppUtils.h reads and writes.
//
// The form's life follows the platform's: Create (after construction, so that descendants'
// overrides run), Show (WriteFormData: the stored place is applied, or the form is centred),
// Close (ReadFormData when AutoSavePlacement is on). Make forms with MakeForm so that the create
// step runs.
#pragma once

#include "rtl/Lists.h"

#include <QWidget>

#include <memory>
#include <string>

class QAction;
class QEventLoop;

namespace zelvane {

// The results of a modal run, with the platform's numbers.
constexpr int mrNone = 0;
constexpr int mrOk = 1;
constexpr int mrCancel = 2;

class TSmartForm : public QWidget {
    Q_OBJECT
public:
    explicit TSmartForm(QWidget* owner = nullptr);
    ~TSmartForm() override;

    // The form's own actions: store the placement, and close.
    QAction* scSavePlacement() const { return scSavePlacement_; }
    QAction* scExit() const { return scExit_; }
    bool AutoSavePlacement = false;
    std::string FormPlacement;

    // The platform's modal run: the form shows, the rest of the application takes no input, and
    // the call returns once ModalResult is set (the form then closes) or the form is closed
    // otherwise (mrCancel).
    int ShowModal();
    int ModalResult() const { return modalResult_; }
    void SetModalResult(int value);

    // The platform's form events, in the order they come.
    virtual void FormCreate();
    void FormShow();
    void FormClose();

    // Reads the form into data: the placement, then GetFormData.
    virtual void ReadFormData();
    // Writes data into the form: SetFormData, then the placement (or the form is centred).
    virtual void WriteFormData();

protected:
    // A descendant's own values, read from and written into the form.
    virtual void GetFormData() {}
    virtual void SetFormData() {}
    // Gives the form its settings before it is first shown.
    virtual void SetProperties() {}

    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QAction* scSavePlacement_;
    QAction* scExit_;
    bool shown_ = false;
    int modalResult_ = mrNone;
    QEventLoop* modalLoop_ = nullptr;
};

// Makes a form and runs its create step, as the platform does after a form's constructor.
template <class F, class... Args> std::unique_ptr<F> MakeForm(Args&&... args) {
    auto form = std::make_unique<F>(std::forward<Args>(args)...);
    form->FormCreate();
    return form;
}

} // namespace zelvane
