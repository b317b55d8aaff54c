// The about box, built from its form: the bytes the package holds are unscrambled, read as a
// component stream into small classes that stand for the form and its controls, and the dialog is
// made from what they read.
#include "about/About.h"

#include "about/AboutKey.h"
#include "foundation/AppUtils.h"
#include "rtl/Filer.h"
#include "rtl/Streams.h"
#include "toolsapi/Forms.h"
#include "toolsapi/QtBridge.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>

#include <array>
#include <cstddef>
#include <string>

namespace zelvane {

extern const unsigned char kAboutFormData[];
extern const size_t kAboutFormSize;

namespace {

// What the form file says of a control.
class TAboutControl : public rtl::TComponent {
    RTL_CLASS(TAboutControl, rtl::TComponent)
public:
    using TConstructorArg = rtl::TComponent;
    explicit TAboutControl(rtl::TComponent* owner = nullptr) : TComponent(owner) {}
    int32_t Left = 0, Top = 0, Width = 0, Height = 0;
    std::string Caption;
};

class TLabel : public TAboutControl {
    RTL_CLASS(TLabel, TAboutControl)
public:
    using TAboutControl::TAboutControl;
};

class TButton : public TAboutControl {
    RTL_CLASS(TButton, TAboutControl)
public:
    using TAboutControl::TAboutControl;
    int32_t ModalResult = 0;
    bool Default = false;
};

class TAboutForm : public rtl::TComponent {
    RTL_CLASS(TAboutForm, rtl::TComponent)
public:
    using TConstructorArg = rtl::TComponent;
    explicit TAboutForm(rtl::TComponent* owner = nullptr) : TComponent(owner) {}
    std::string Caption;
    int32_t ClientWidth = 0, ClientHeight = 0;
};

// The form's classes are known to the reader only while it reads: the package leaves nothing of
// its own in the registry.
class TFormClasses {
public:
    TFormClasses() { rtl::RegisterClasses(classes_); }
    ~TFormClasses() { rtl::UnRegisterClasses(classes_); }

private:
    const std::array<rtl::TClass, 3> classes_{TAboutForm::StaticClass(), TLabel::StaticClass(),
                                              TButton::StaticClass()};
};

void Place(QWidget* widget, const TAboutControl& c) {
    widget->setObjectName(QString::fromStdString(c.Name()));
    widget->setGeometry(c.Left, c.Top, c.Width, c.Height);
}

} // namespace

RTL_BEGIN_CLASS(TAboutControl)
Property("Left", &TAboutControl::Left);
Property("Top", &TAboutControl::Top);
Property("Width", &TAboutControl::Width);
Property("Height", &TAboutControl::Height);
Property("Caption", &TAboutControl::Caption);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TLabel)

RTL_BEGIN_CLASS(TButton)
Property("ModalResult", &TButton::ModalResult);
Property("Default", &TButton::Default);
RTL_END_CLASS

RTL_BEGIN_CLASS(TAboutForm)
Property("Caption", &TAboutForm::Caption);
Property("ClientWidth", &TAboutForm::ClientWidth);
Property("ClientHeight", &TAboutForm::ClientHeight);
RTL_END_CLASS

std::unique_ptr<QDialog> CreateAboutForm(QWidget* owner) {
    std::string bytes(reinterpret_cast<const char*>(kAboutFormData), kAboutFormSize);
    DecodeData(bytes.data(), bytes.size(), AboutFormKey);
    TFormClasses classes;
    TAboutForm form;
    rtl::TStringStream stream(bytes);
    rtl::ReadComponent(&stream, &form);

    auto dialog = std::make_unique<QDialog>(owner);
    dialog->setObjectName(QString::fromStdString(form.Name()));
    dialog->setWindowTitle(ToolsAPI::FromBytes(form.Caption));
    dialog->setFixedSize(form.ClientWidth, form.ClientHeight);
    for (int i = 0; i < form.ComponentCount(); ++i) {
        rtl::TComponent* c = form.Components(i);
        if (auto* b = rtl::Is<TButton>(c)) {
            auto* button = new QPushButton(ToolsAPI::FromBytes(b->Caption), dialog.get());
            Place(button, *b);
            button->setDefault(b->Default);
            int result = b->ModalResult;
            QObject::connect(button, &QPushButton::clicked, dialog.get(),
                             [d = dialog.get(), result] { d->done(result); });
        } else if (auto* l = rtl::Is<TLabel>(c)) {
            Place(new QLabel(ToolsAPI::FromBytes(l->Caption), dialog.get()), *l);
        }
    }
    return dialog;
}

void ShowAbout() {
    QWidget* owner = ToolsAPI::Application ? ToolsAPI::Application->GetMainForm() : nullptr;
    CreateAboutForm(owner)->exec();
}

} // namespace zelvane
