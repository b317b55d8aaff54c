// The add-in's routines on the IDE's forms and controls: the form in the foreground, repainting
// a control, suspending its painting, and finding a form of a class among the screen's forms.
#pragma once

#include "rtl/TypInfo.h"

#include <string>

class QMetaObject;
class QWidget;

namespace zelvane {

RTL_ENUM(TRepaintFlag, rfAllChildren, rfUpdateNow)
RTL_SET(TRepaintFlags, TRepaintFlag)

// The form of the application's foreground window; nullptr when the foreground window belongs
// to no form of this application (another program, or none).
QWidget* GetActiveForm();
// The same, but nullptr unless its caption equals caption without regard to case.
QWidget* GetActiveForm(const std::string& caption);

// Invalidates the control so that it paints again; rfAllChildren does the same for every control
// inside it, rfUpdateNow paints at once instead of on the next turn of the event loop.
void RepaintControl(QWidget* control, TRepaintFlags flags);
// Stops and restarts the painting of a control, as WM_SETREDRAW does.
void BeginUpdateControl(QWidget* control);
void EndUpdateControl(QWidget* control);

// The first form among the screen's forms that is exactly of the class (not of a subclass);
// nullptr if there is none.
QWidget* FindFormByClass(const QMetaObject* formClass);
// Finds it, shows it and restores it from minimised; the form, or nullptr.
QWidget* ShowFormByClass(const QMetaObject* formClass);

template <class T> T* FindFormByClass() {
    return static_cast<T*>(FindFormByClass(&T::staticMetaObject));
}
template <class T> T* ShowFormByClass() {
    return static_cast<T*>(ShowFormByClass(&T::staticMetaObject));
}

} // namespace zelvane
