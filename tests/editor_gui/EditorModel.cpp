#include "EditorModel.h"

namespace edmodel {

RTL_BEGIN_CLASS(TGeometry)
Property("Left", &TGeometry::Left);
Property("Top", &TGeometry::Top);
RTL_END_CLASS

RTL_BEGIN_CLASS(TRowItem)
Property("Caption", &TRowItem::Caption);
Property("Width", &TRowItem::Width);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TRows)

RTL_BEGIN_CLASS(TMarkItem)
Property("Shade", &TMarkItem::Shade);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TMarks)

RTL_BEGIN_CLASS(TEdSettings)
Property("Count", &TEdSettings::Count);
Property("Letter", &TEdSettings::Letter);
Property("Ratio", &TEdSettings::Ratio);
Property("Title", &TEdSettings::Title);
Property("Shade", &TEdSettings::Shade);
Property("Enabled", &TEdSettings::Enabled);
Property("Shades", &TEdSettings::Shades);
Property("NodeName", &TEdSettings::NodeName);
Property("Geometry", &TEdSettings::GetGeometry, &TEdSettings::SetGeometry);
Property("Rows", &TEdSettings::GetRows, &TEdSettings::SetRows);
Property("Marks", &TEdSettings::GetMarks, &TEdSettings::SetMarks);
RTL_END_CLASS

TRowItem* TRows::Add(const std::string& caption, int width) {
    auto* item = static_cast<TRowItem*>(TSpcCollection::Add());
    item->Caption = caption;
    item->Width = width;
    return item;
}

TEdSettings::TEdSettings()
    : geometry_(std::make_unique<TGeometry>()), rows_(std::make_unique<TRows>(this)),
      marks_(std::make_unique<TMarks>(this)) {}

TEdSettings::~TEdSettings() = default;

RTL_BEGIN_CLASS(TProSettings)
Property("Depth", &TProSettings::Depth);
Property("Plain", &TProSettings::Plain);
Property("Back", &TProSettings::Back);
Property("Key", &TProSettings::Key);
Property("KeyText", &TProSettings::KeyText);
Property("Since", &TProSettings::Since);
Property("At", &TProSettings::At);
Property("Columns", &TProSettings::GetColumns, &TProSettings::SetColumns);
Property("Sort", &TProSettings::GetSort, &TProSettings::SetSort);
Property("Notes", &TProSettings::GetNotes, &TProSettings::SetNotes);
Property("Font", &TProSettings::GetFont, &TProSettings::SetFont);
Property("Picture", &TProSettings::GetPicture, &TProSettings::SetPicture);
RTL_END_CLASS

TProSettings::TProSettings()
    : columns_(std::make_unique<TCheckStrings>()), sort_(std::make_unique<TSelectStrings>()),
      notes_(std::make_unique<TMemoStrings>()), font_(std::make_unique<TFontEx>()),
      picture_(std::make_unique<TPictureEx>()) {
    columns_->SetText("Name\r\nSize\r\nDate\r\n");
    columns_->CheckedInds = "0,2";
    sort_->SetText("Ascending\r\nDescending\r\n");
    sort_->ItemIndex = 1;
    notes_->SetText("one\r\ntwo\r\n");
}

TProSettings::~TProSettings() = default;

} // namespace edmodel
