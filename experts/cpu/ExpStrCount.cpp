#include "experts/cpu/ExpStrCount.h"

#include "host/SmartForm.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "toolsapi/QtBridge.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QSpinBox>

#include <limits>

namespace zelvane {

using ToolsAPI::FromBytes;

TStrCountForm::TStrCountForm(QWidget* owner) : QDialog(owner, Qt::Tool) {
    setObjectName(QStringLiteral("StrCountForm"));
    setFixedSize(200, 84);
    lbStrCount_ = new QLabel(this);
    lbStrCount_->setObjectName(QStringLiteral("lbStrCount"));
    lbStrCount_->setGeometry(8, 12, 90, 21);
    // Both bounds open, so that any number can be typed; the caller judges it.
    spinEdit_ = new QSpinBox(this);
    spinEdit_->setObjectName(QStringLiteral("SpinEdit"));
    spinEdit_->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    spinEdit_->setValue(1);
    spinEdit_->setGeometry(104, 10, 88, 24);
    btnOk_ = new QPushButton(QStringLiteral("OK"), this);
    btnOk_->setObjectName(QStringLiteral("btnOk"));
    btnOk_->setDefault(true);
    btnOk_->setGeometry(24, 50, 75, 25);
    btnCancel_ = new QPushButton(this);
    btnCancel_->setObjectName(QStringLiteral("btnCancel"));
    btnCancel_->setGeometry(108, 50, 75, 25);
    connect(btnOk_, &QPushButton::clicked, this, [this] { done(mrOk); });
    connect(btnCancel_, &QPushButton::clicked, this, [this] { done(mrCancel); });
    FormCreate();
}

void TStrCountForm::FormCreate() {
    setWindowTitle(FromBytes(LocaleStr(SStrCountCaption)));
    lbStrCount_->setText(FromBytes(LocaleStr(SStrCountLabel)));
    btnCancel_->setText(FromBytes(LocaleStr(SDialogCancel)));
}

void TStrCountForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (event->spontaneous()) return;
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        QRect area = screen->geometry();
        move(area.x() + (area.width() - width()) / 2, area.y() + (area.height() - height()) / 2);
    }
    spinEdit_->setFocus();
    spinEdit_->selectAll();
}

} // namespace zelvane
