// A settings tree with every kind of property the editor gives a control, a nested object, a
// collection and a collection of another item class: what the editor's tests edit.
#pragma once

#include "persistence/SpcObjects.h"
#include "rtl/Classes.h"
#include "tests/specification/SpcModel.h"

#include <memory>
#include <string>

namespace edmodel {

using namespace rtl;
using namespace zelvane;

RTL_ENUM(TShade, shLight, shDark, shAuto)
RTL_SET(TShades, TShade)

class TGeometry : public TSpcObject {
    RTL_CLASS(TGeometry, TSpcObject)
public:
    int32_t Left = 1;
    int32_t Top = 2;
    std::string GetNodeName() override { return "Geometry"; }
};

class TRowItem : public TSpcItem {
    RTL_CLASS(TRowItem, TSpcItem)
public:
    explicit TRowItem(TCollection* c = nullptr) : TSpcItem(c) {}
    std::string Caption;
    int32_t Width = 10;
};

class TRows : public TSpcCollection {
    RTL_CLASS(TRows, TSpcCollection)
public:
    using TConstructorArg = TPersistent;
    explicit TRows(TPersistent* owner = nullptr) : TSpcCollection(owner, TRowItem::StaticClass()) {}
    TRowItem* Add(const std::string& caption, int width) {
        auto* item = static_cast<TRowItem*>(TSpcCollection::Add());
        item->Caption = caption;
        item->Width = width;
        return item;
    }
};

class TMarkItem : public TSpcItem {
    RTL_CLASS(TMarkItem, TSpcItem)
public:
    explicit TMarkItem(TCollection* c = nullptr) : TSpcItem(c) {}
    TShade Shade = shAuto;
};

class TMarks : public TSpcCollection {
    RTL_CLASS(TMarks, TSpcCollection)
public:
    using TConstructorArg = TPersistent;
    explicit TMarks(TPersistent* owner = nullptr)
        : TSpcCollection(owner, TMarkItem::StaticClass()) {}
};

class TEdSettings : public TSpcObject {
    RTL_CLASS(TEdSettings, TSpcObject)
public:
    int32_t Count = 5;
    char Letter = 'a';
    double Ratio = 1.5;
    std::string Title = "Main";
    TShade Shade = shDark;
    bool Enabled = true;
    TShades Shades = TShades{shLight};
    std::string NodeName = "hidden";
    TGeometry* GetGeometry() const { return geometry_.get(); }
    void SetGeometry(TGeometry* v) { geometry_->Assign(v); }
    TRows* GetRows() const { return rows_.get(); }
    void SetRows(TRows* v) { rows_->Assign(v); }
    TMarks* GetMarks() const { return marks_.get(); }
    void SetMarks(TMarks* v) { marks_->Assign(v); }

private:
    std::unique_ptr<TGeometry> geometry_ = std::make_unique<TGeometry>();
    std::unique_ptr<TRows> rows_ = std::make_unique<TRows>(this);
    std::unique_ptr<TMarks> marks_ = std::make_unique<TMarks>(this);
};

// The richer scalar types that the extended editor gives rows of their own; the string lists,
// font and picture stand in the nested view settings of the specification tests' model.
class TProSettings : public TSpcObject {
    RTL_CLASS(TProSettings, TSpcObject)
public:
    TProSettings();
    ~TProSettings() override;

    TSpinInt Depth = TSpinInt(3);
    int32_t Plain = 4;
    TColor Back = clRed;
    TShortCut Key = TShortCut(0x4053); // Ctrl+S
    TShortCutString KeyText = "Ctrl+F2";
    TDateTime Since = 36526.0; // 2000-01-01
    TTime At = 0.5;
    spcmodel::TViewSettings* GetView() const { return view_.get(); }
    void SetView(spcmodel::TViewSettings* v) { view_->Assign(v); }

private:
    std::unique_ptr<spcmodel::TViewSettings> view_;
};

} // namespace edmodel
