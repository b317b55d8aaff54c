#include "TestModel.h"

namespace model {

void TLook::Assign(TPersistent* source) {
    if (auto* look = dynamic_cast<TLook*>(source)) {
        Size = look->Size;
        Name = look->Name;
        Color = look->Color;
        return;
    }
    TPersistent::Assign(source);
}

TSample::TSample() : look_(std::make_unique<TLook>()) {}
TSample::~TSample() = default;

TPair::TPair() : look_(std::make_unique<TLook>()) {}
TPair::~TPair() = default;

TWidget::TWidget(TComponent* owner)
    : TComponent(owner), look_(std::make_unique<TLook>()), lines_(std::make_unique<TStringList>()),
      items_(std::make_unique<TCollection>(TItem::StaticClass())) {}
TWidget::~TWidget() = default;

std::string Bytes(std::initializer_list<int> bytes) {
    std::string s;
    for (int b : bytes)
        s += static_cast<char>(b);
    return s;
}

std::string Short(const std::string& s) {
    return static_cast<char>(s.size()) + s;
}

Foos::Foos(std::initializer_list<int32_t> widths) {
    for (int32_t w : widths) {
        foo.push_back(std::make_unique<TFoo>());
        foo.back()->Width = w;
        objs.push_back(foo.back().get());
        pers.push_back(foo.back().get());
    }
}

std::vector<int32_t> Foos::Widths() const {
    std::vector<int32_t> widths;
    for (auto& f : foo)
        widths.push_back(f->Width);
    return widths;
}

std::vector<std::string> Foos::Captions() const {
    std::vector<std::string> captions;
    for (auto& f : foo)
        captions.push_back(f->Caption);
    return captions;
}

Objects::Objects() {
    sample.Count = -70000;
    sample.Letter = '\xC6';
    sample.Shape = shTriangle;
    sample.Shapes = {shRectangle, shTriangle};
    // The text form has 18 significant digits, which hold this value exactly; a third would
    // come back from text a few units in the last place off, on both sides alike.
    sample.Ratio = 0.375;
    sample.Stamp = TDateTime(45000.75);
    sample.Text = "it's a \"text\"\r\nwith\tcontrols and \xC0\xC1\xC2";
    sample.Wide = u"\u0416\u0443\u0440\u043D\u0430\u043B";
    sample.Big = -(int64_t(1) << 40);
    sample.Data = Variant(int32_t(300));
    sample.Color = clBlack;
    sample.Flag = true;
    sample.GetLook()->Name = std::string(300, 'n');
    widget.SetName("Main");
    widget.Width = 640;
    widget.Caption = "Main form";
    widget.Shape = shCircle;
    widget.GetLook()->Color = static_cast<TColor>(0x00FF8040);
    widget.GetLines()->Add("first line");
    widget.GetLines()->Add("");
    auto* item = static_cast<TItem*>(widget.GetItems()->Add());
    item->Caption = "item";
    item->Width = 0;
    widget.GetItems()->Add();
    foo.Width = 5;
    foo.Caption = "foo";
}

std::string PropsOf(zelvane::TObjectArray objs, zelvane::TObjectStorageFormat format) {
    std::string data;
    zelvane::GetProps(objs, data, format);
    return data;
}

std::string PropsOf(TObject* obj, zelvane::TObjectStorageFormat format) {
    TObject* objs[] = {obj};
    return PropsOf(objs, format);
}

} // namespace model

using namespace model;

RTL_BEGIN_CLASS(model::TFoo)
Property("Width", &TFoo::Width).Default(100);
Property("Caption", &TFoo::Caption);
RTL_END_CLASS

RTL_BEGIN_CLASS(model::TLook)
Property("Size", &TLook::Size).Default(8);
Property("Name", &TLook::Name);
Property<TColor>("Color", &TLook::Color).Default(clBlack);
RTL_END_CLASS

RTL_BEGIN_CLASS(model::TSample)
Property("Count", &TSample::Count).Default(0);
Property("Letter", &TSample::Letter);
Property("Shape", &TSample::Shape).Default(shCircle);
Property("Shapes", &TSample::Shapes).Default(TShapes{});
Property("Ratio", &TSample::Ratio);
Property("Stamp", &TSample::Stamp);
Property("Day", &TSample::Day);
Property("Clock", &TSample::Clock);
Property("Text", &TSample::Text);
Property("Wide", &TSample::Wide);
Property("Big", &TSample::Big);
Property("Data", &TSample::Data);
Property<TColor>("Color", &TSample::Color).Default(clRed);
Property("Flag", &TSample::Flag).Default(false);
Property("Look", &TSample::GetLook, &TSample::SetLook);
Property("Child", &TSample::Child);
Property("OnChange", &TSample::OnChange);
Property("ReadOnly", &TSample::ReadOnly, nullptr);
Property("WriteOnly", nullptr, &TSample::WriteOnly);
Property("Hidden", &TSample::Hidden).Stored(false);
Method<&TSample::Changed>("Changed");
RTL_END_CLASS

RTL_BEGIN_CLASS(model::TItem)
Property("Caption", &TItem::Caption);
Property("Width", &TItem::Width).Default(50);
RTL_END_CLASS

RTL_BEGIN_CLASS(model::TWidget)
Property("Width", &TWidget::Width).Default(0);
Property("Caption", &TWidget::Caption);
Property("Shape", &TWidget::Shape).Default(shRectangle);
Property("Look", &TWidget::GetLook, &TWidget::SetLook);
Property("Lines", &TWidget::GetLines, &TWidget::SetLines);
Property("Items", &TWidget::GetItems, &TWidget::SetItems);
Property("Buddy", &TWidget::Buddy);
RTL_END_CLASS

RTL_BEGIN_CLASS(model::TPair)
Property("Look", &TPair::GetLook, &TPair::SetLook);
Property("LookMore", &TPair::LookMore);
Property("Other", &TPair::Other);
RTL_END_CLASS

RTL_BEGIN_CLASS(model::TFieldHolder)
Field("FooField", &TFieldHolder::FooField);
Field("LookField", &TFieldHolder::LookField);
RTL_END_CLASS
