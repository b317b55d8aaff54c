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

RTL_BEGIN_CLASS(TProSettings)
Property("Depth", &TProSettings::Depth);
Property("Plain", &TProSettings::Plain);
Property("Back", &TProSettings::Back);
Property("Key", &TProSettings::Key);
Property("KeyText", &TProSettings::KeyText);
Property("Since", &TProSettings::Since);
Property("At", &TProSettings::At);
Property("View", &TProSettings::GetView, &TProSettings::SetView);
RTL_END_CLASS

TProSettings::TProSettings() : view_(std::make_unique<spcmodel::TViewSettings>()) {
    view_->GetColumns()->SetText("Name\r\nSize\r\nDate\r\n");
    view_->GetColumns()->CheckedInds = "0,2";
    view_->GetSort()->SetText("Ascending\r\nDescending\r\n");
    view_->GetSort()->ItemIndex = 1;
    view_->GetNotes()->SetText("one\r\ntwo\r\n");
}

TProSettings::~TProSettings() = default;

} // namespace edmodel
