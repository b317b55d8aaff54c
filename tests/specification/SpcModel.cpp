#include "SpcModel.h"

namespace spcmodel {

RTL_BEGIN_CLASS(TViewSettings)
Property("Depth", &TViewSettings::Depth);
Property("Layout", &TViewSettings::Layout);
Property("Columns", &TViewSettings::GetColumns, &TViewSettings::SetColumns);
Property("Sort", &TViewSettings::GetSort, &TViewSettings::SetSort);
Property("Notes", &TViewSettings::GetNotes, &TViewSettings::SetNotes);
Property("Font", &TViewSettings::GetFont, &TViewSettings::SetFont);
Property("Picture", &TViewSettings::GetPicture, &TViewSettings::SetPicture);
RTL_END_CLASS

RTL_BEGIN_CLASS(THistoryItem)
Property("FileName", &THistoryItem::FileName);
Property("Line", &THistoryItem::Line);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(THistory)

RTL_BEGIN_CLASS(TExpertInfo)
Property("ExpertName", &TExpertInfo::ExpertName);
Property("Active", &TExpertInfo::Active);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TActiveExperts)
RTL_IMPLEMENT_CLASS(TCustomDataItem)
RTL_IMPLEMENT_CLASS(TCustomData)

RTL_BEGIN_CLASS(TEditorSettings)
Property("AutoSave", &TEditorSettings::AutoSave);
Property("SaveKey", &TEditorSettings::SaveKey);
Property("TabWidth", &TEditorSettings::TabWidth);
Property("State", &TEditorSettings::GetState, &TEditorSettings::SetState);
RTL_END_CLASS

RTL_BEGIN_CLASS(TUnitSettings)
Property("SortByName", &TUnitSettings::SortByName);
Property("Filter", &TUnitSettings::Filter);
RTL_END_CLASS

RTL_BEGIN_CLASS(TSettings)
Property("Title", &TSettings::Title);
Property("Version", &TSettings::Version);
Property("View", &TSettings::GetView, &TSettings::SetView);
Property("History", &TSettings::GetHistory, &TSettings::SetHistory);
RTL_END_CLASS

TViewSettings::TViewSettings()
    : columns_(std::make_unique<TCheckStrings>()), sort_(std::make_unique<TSelectStrings>()),
      notes_(std::make_unique<TMemoStrings>()), font_(std::make_unique<TFontEx>()),
      picture_(std::make_unique<TPictureEx>()) {}

TViewSettings::~TViewSettings() = default;

void TViewSettings::Assign(TPersistent* source) {
    auto* s = dynamic_cast<TViewSettings*>(source);
    if (!s) return TSpcObject::Assign(source);
    Depth = s->Depth;
    Layout = s->Layout;
    columns_->Assign(s->columns_.get());
    columns_->CheckedInds = s->columns_->CheckedInds;
    sort_->Assign(s->sort_.get());
    sort_->ItemIndex = s->sort_->ItemIndex;
    notes_->Assign(s->notes_.get());
    font_->Assign(s->font_.get());
    picture_->Assign(s->picture_.get());
}

void THistoryItem::Assign(TPersistent* source) {
    auto* s = dynamic_cast<THistoryItem*>(source);
    if (!s) return TSpcItem::Assign(source);
    FileName = s->FileName;
    Line = s->Line;
}

THistoryItem* THistory::AddFile(const std::string& name, int32_t line) {
    auto* item = As<THistoryItem>(Add());
    item->FileName = name;
    item->Line = line;
    return item;
}

TEditorSettings::TEditorSettings() : state_(std::make_unique<TMemoStrings>()) {}
TEditorSettings::~TEditorSettings() = default;

TSettings::TSettings()
    : view_(std::make_unique<TViewSettings>()), history_(std::make_unique<THistory>(this)),
      active_(std::make_unique<TActiveExperts>(this)),
      custom_(std::make_unique<TCustomData>(this)) {}

TSettings::~TSettings() = default;

void TSettings::DefineProperties(TFiler* filer) {
    TSpcObject::DefineProperties(filer);
    filer->DefineProperty(
        "ActiveExperts_", [this](TReader* r) { ReadFixedCollection(*r, active_.get(), false); },
        [this](TWriter* w) { WriteCollectionEx(w, active_.get()); }, true);
    filer->DefineProperty(
        "CustomData_", [this](TReader* r) { ReadFreeCollection(*r, custom_.get(), false); },
        [this](TWriter* w) { WriteCollectionEx(w, custom_.get()); }, true);
}

TProgram::TProgram() {
    for (const std::string name : {"BlockMng", "UnitMng", "ViewMng"}) {
        auto* info = As<TExpertInfo>(settings.Active()->Add(name));
        info->SetNodeName(name + " expert");
    }
    settings.Custom()->Add(&editor, "EditorManagerData")->SetNodeName("Unit editor expert");
    settings.Custom()->Add(&units, "UnitManagerData")->SetNodeName("Units");
}

// A 1x1 bitmap file.
static std::string TinyBitmap() {
    // BITMAPFILEHEADER, BITMAPINFOHEADER of a 1x1 24-bit image, one padded pixel.
    std::string bmp = {'B', 'M', 58, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0,
                       1,   0,   0,  0, 1, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0,  0, 4, 0,
                       0,   0,   0,  0, 0, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0};
    bmp += std::string("\x10\x20\x30\x00", 4);
    return bmp;
}

void FillNonDefault(TProgram& p) {
    TSettings& s = p.settings;
    s.Title = "My \xC0\xC1 settings";
    s.Version = 70000;
    TViewSettings* v = s.GetView();
    v->Depth = -5;
    v->Layout = loTabs;
    v->GetColumns()->SetText("Name\r\nSize\r\nDate\r\n");
    v->GetColumns()->CheckedInds = "0,2";
    v->GetSort()->SetText("Ascending\r\nDescending\r\n");
    v->GetSort()->ItemIndex = 1;
    v->GetNotes()->SetText("first note\r\n\r\nthird, after an empty line\r\n");
    v->GetFont()->Name = "Courier New";
    v->GetFont()->Height = -13;
    v->GetFont()->Color = clNavy;
    v->GetFont()->Style = {fsBold, fsItalic};
    v->GetFont()->Pitch = fpFixed;
    auto bmp = std::make_unique<TBitmap>();
    bmp->SetBytes(TinyBitmap());
    v->GetPicture()->SetGraphic(bmp.get());
    s.GetHistory()->AddFile("Main.pas", 10);
    s.GetHistory()->AddFile("Utils.pas", 200);
    for (int i = 0; i < s.Active()->Count(); ++i)
        s.Active()->Expert(i)->Active = i % 2 == 1;
    p.editor.AutoSave = false;
    p.editor.SaveKey = "Ctrl+Shift+S";
    p.editor.TabWidth = 2;
    p.editor.GetState()->SetText("Left=10\r\nTop=20\r\n");
    p.units.SortByName = true;
    p.units.Filter = "*.dpr;*.pas";
}

} // namespace spcmodel
