// A settings tree with every kind of property the editor gives a control, a nested object, a
// collection and a collection of another item class: what the editor's tests edit.
#pragma once

#include "persistence/PropTypes.h"
#include "persistence/SpcObjects.h"
#include "rtl/Classes.h"

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
    TRowItem* Add(const std::string& caption, int width);
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
    explicit TMarks(TPersistent* owner = nullptr) : TSpcCollection(owner, TMarkItem::StaticClass()) {}
};

class TEdSettings : public TSpcObject {
    RTL_CLASS(TEdSettings, TSpcObject)
public:
    TEdSettings();
    ~TEdSettings() override;

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
    std::unique_ptr<TGeometry> geometry_;
    std::unique_ptr<TRows> rows_;
    std::unique_ptr<TMarks> marks_;
};

// The richer value types that the extended editor gives rows of their own.
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
    TCheckStrings* GetColumns() const { return columns_.get(); }
    void SetColumns(TCheckStrings* v) { columns_->Assign(v); }
    TSelectStrings* GetSort() const { return sort_.get(); }
    void SetSort(TSelectStrings* v) { sort_->Assign(v); }
    TMemoStrings* GetNotes() const { return notes_.get(); }
    void SetNotes(TMemoStrings* v) { notes_->Assign(v); }
    TFontEx* GetFont() const { return font_.get(); }
    void SetFont(TFontEx* v) { font_->Assign(v); }
    TPictureEx* GetPicture() const { return picture_.get(); }
    void SetPicture(TPictureEx* v) { picture_->Assign(v); }

private:
    std::unique_ptr<TCheckStrings> columns_;
    std::unique_ptr<TSelectStrings> sort_;
    std::unique_ptr<TMemoStrings> notes_;
    std::unique_ptr<TFontEx> font_;
    std::unique_ptr<TPictureEx> picture_;
};

} // namespace edmodel
