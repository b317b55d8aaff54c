#include "host/CrtlUtils.h"

#include "rtl/SysUtils.h"
#include "toolsapi/Forms.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QWidget>

namespace zelvane {

using ToolsAPI::Screen;

QWidget* GetActiveForm() {
    if (!qApp) return nullptr;
    if (Screen) return Screen->GetActiveForm();
    return QApplication::activeWindow();
}

QWidget* GetActiveForm(const std::string& caption) {
    QWidget* form = GetActiveForm();
    if (!form) return nullptr;
    std::string title = ToolsAPI::ToBytes(form->windowTitle());
    return rtl::AnsiSameText(title, caption) ? form : nullptr;
}

void RepaintControl(QWidget* control, TRepaintFlags flags) {
    if (!control) return;
    const bool now = flags.Contains(rfUpdateNow);
    auto paint = [now](QWidget* w) {
        if (now)
            w->repaint();
        else
            w->update();
    };
    paint(control);
    if (flags.Contains(rfAllChildren))
        for (QWidget* child : control->findChildren<QWidget*>())
            paint(child);
}

void BeginUpdateControl(QWidget* control) {
    if (control) control->setUpdatesEnabled(false);
}

void EndUpdateControl(QWidget* control) {
    if (control) control->setUpdatesEnabled(true);
}

QWidget* FindFormByClass(const QMetaObject* formClass) {
    if (!formClass || !qApp) return nullptr;
    if (Screen) {
        for (int i = 0; i < Screen->GetFormCount(); ++i)
            if (QWidget* f = Screen->GetForm(i); f && f->metaObject() == formClass) return f;
        return nullptr;
    }
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->metaObject() == formClass) return w;
    return nullptr;
}

QWidget* ShowFormByClass(const QMetaObject* formClass) {
    QWidget* form = FindFormByClass(formClass);
    if (!form) return nullptr;
    form->show();
    if (form->isMinimized()) form->showNormal();
    return form;
}

} // namespace zelvane
