#include "host/SmartForm.h"

#include "foundation/AppUtils.h"
#include "rtl/Menus.h"
#include "toolsapi/Forms.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QCloseEvent>
#include <QEventLoop>
#include <QGuiApplication>
#include <QScreen>
#include <QShowEvent>

namespace zelvane {

namespace {

QAction* FormAction(QWidget* form, const char* name, rtl::TShortCut key) {
    auto* action = new QAction(form);
    action->setObjectName(QString::fromLatin1(name));
    action->setProperty("Category", QStringLiteral("FormMng"));
    action->setShortcuts(ToolsAPI::ShortCutToKeySequences(key));
    action->setShortcutContext(Qt::WindowShortcut);
    form->addAction(action);
    return action;
}

// The IDE's screen, or the primary one of a host without screen services.
QSize ScreenSize() {
    if (ToolsAPI::Screen) return {ToolsAPI::Screen->GetWidth(), ToolsAPI::Screen->GetHeight()};
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().size() : QSize();
}

} // namespace

TSmartForm::TSmartForm(QWidget* owner) : QWidget(owner, Qt::Window) {
    scSavePlacement_ = FormAction(this, "scSavePlacement", rtl::TextToShortCut("Ctrl+S"));
    scExit_ = FormAction(this, "scExit", rtl::TextToShortCut("Esc"));
    connect(scSavePlacement_, &QAction::triggered, this, [this] { ReadFormData(); });
    connect(scExit_, &QAction::triggered, this, [this] { close(); });
}

TSmartForm::~TSmartForm() = default;

void TSmartForm::FormCreate() {
    SetProperties();
}

void TSmartForm::FormShow() {
    WriteFormData();
}

void TSmartForm::FormClose() {
    if (AutoSavePlacement) ReadFormData();
}

void TSmartForm::ReadFormData() {
    FormPlacement = GetWinPlacement(this);
    GetFormData();
}

void TSmartForm::WriteFormData() {
    SetFormData();
    if (FormPlacement.empty()) {
        QSize screen = ScreenSize();
        move((screen.width() - width()) / 2, (screen.height() - height()) / 2);
    } else {
        SetWinPlacement(this, FormPlacement, true);
    }
}

void TSmartForm::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous()) return;
    FormShow();
}

int TSmartForm::ShowModal() {
    modalResult_ = mrNone;
    setWindowModality(Qt::ApplicationModal);
    QEventLoop loop;
    modalLoop_ = &loop;
    show();
    raise();
    activateWindow();
    if (isVisible() && modalResult_ == mrNone) loop.exec(QEventLoop::DialogExec);
    modalLoop_ = nullptr;
    setWindowModality(Qt::NonModal);
    return modalResult_;
}

void TSmartForm::SetModalResult(int value) {
    modalResult_ = value;
    if (value != mrNone && modalLoop_) close();
}

void TSmartForm::closeEvent(QCloseEvent* event) {
    FormClose();
    QWidget::closeEvent(event);
    if (!modalLoop_) return;
    if (!event->isAccepted()) {
        modalResult_ = mrNone;
        return;
    }
    if (modalResult_ == mrNone) modalResult_ = mrCancel;
    modalLoop_->quit();
}

} // namespace zelvane
