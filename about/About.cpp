// Provisional: replaced by the about box read from its scrambled form.
#include "about/About.h"

#include <QDialog>

namespace zelvane {

void ShowAbout() {}
std::unique_ptr<QDialog> CreateAboutForm(QWidget* owner) {
    return std::make_unique<QDialog>(owner);
}

} // namespace zelvane
