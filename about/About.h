// The about box: the product's name and version, shown from the experts' menu. Its form is kept
// in the package scrambled, and is turned back and read when the box is made.
#pragma once

#include <memory>

class QDialog;
class QWidget;

namespace zelvane {

// The about box over the application's main form, modal.
void ShowAbout();
// The box, made from the package's form; raises an rtl exception when the form can't be read.
std::unique_ptr<QDialog> CreateAboutForm(QWidget* owner);

} // namespace zelvane
