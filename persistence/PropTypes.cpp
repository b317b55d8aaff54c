#include "persistence/PropTypes.h"

#include "persistence/DataHndl.h"

#include <algorithm>
#include <charconv>

namespace zelvane {

using namespace rtl;

RTL_BEGIN_CLASS(TCheckStrings)
Property("CheckedInds", &TCheckStrings::CheckedInds);
RTL_END_CLASS

RTL_BEGIN_CLASS(TSelectStrings)
Property("ItemIndex", &TSelectStrings::ItemIndex);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TMemoStrings)
RTL_IMPLEMENT_CLASS(TFontEx)
RTL_IMPLEMENT_CLASS(TPictureEx)

std::vector<int> CheckedIndexes(const std::string& checkedInds) {
    std::vector<int> result;
    size_t start = 0;
    while (start <= checkedInds.size()) {
        size_t comma = checkedInds.find(',', start);
        if (comma == std::string::npos) comma = checkedInds.size();
        std::string_view part(checkedInds.data() + start, comma - start);
        while (!part.empty() && part.front() == ' ')
            part.remove_prefix(1);
        while (!part.empty() && part.back() == ' ')
            part.remove_suffix(1);
        int value = 0;
        auto [end, ec] = std::from_chars(part.data(), part.data() + part.size(), value);
        if (!part.empty() && ec == std::errc() && end == part.data() + part.size() && value >= 0)
            result.push_back(value);
        start = comma + 1;
    }
    return result;
}

std::string MakeCheckedInds(std::vector<int> indexes) {
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
    std::string text;
    for (int i : indexes) {
        if (!text.empty()) text += ',';
        text += std::to_string(i);
    }
    return text;
}

namespace {

std::string GetStringsText(TStrings* strings) {
    return strings->GetText();
}

void GetCheckStrings(TCheckStrings* strings, std::string& text, std::string& checkedInds) {
    text = strings->GetText();
    checkedInds = strings->CheckedInds;
}

void GetSelectStrings(TSelectStrings* strings, std::string& text, int32_t& itemIndex) {
    text = strings->GetText();
    itemIndex = strings->ItemIndex;
}

std::string Snapshot(TPersistent* obj) {
    std::string props;
    TObject* objects[] = {obj};
    GetProps(objects, props, osfBin);
    return props;
}

void Restore(TPersistent* obj, const std::string& props) {
    TObject* objects[] = {obj};
    SetProps(objects, props, osfBin);
}

std::string GetFontProps(TFont* font) {
    return Snapshot(font);
}

std::string GetPictureProps(TPersistent* picture) {
    return Snapshot(picture);
}

void SetStringsText(TStrings* strings, const std::string& text) {
    strings->SetText(text);
}

void SetCheckStrings(TCheckStrings* strings, const std::string& text,
                     const std::string& checkedInds) {
    strings->SetText(text);
    strings->CheckedInds = checkedInds;
}

void SetSelectStrings(TSelectStrings* strings, const std::string& text, int32_t itemIndex) {
    strings->SetText(text);
    strings->ItemIndex = itemIndex;
}

void SetFontProps(TFont* font, const std::string& props) {
    font->Pitch = fpDefault;
    Restore(font, props);
}

void SetPictureProps(TPersistent* picture, const std::string& props) {
    if (auto* graphic = dynamic_cast<TGraphic*>(picture))
        graphic->SetBytes({});
    else
        picture->Assign(nullptr);
    Restore(picture, props);
}

int GetValueKind(TObject* obj) {
    if (dynamic_cast<TCheckStrings*>(obj)) return pvkCheckStrings;
    if (dynamic_cast<TSelectStrings*>(obj)) return pvkSelectStrings;
    if (dynamic_cast<TStrings*>(obj)) return pvkStrings;
    if (dynamic_cast<TFont*>(obj)) return pvkFont;
    if (dynamic_cast<TPicture*>(obj)) return pvkPicture;
    if (dynamic_cast<TGraphic*>(obj)) return pvkGraphic;
    return pvkOther;
}

constinit TSpcEditorProFuncs gFuncs = {
    &GetStringsText,  &GetCheckStrings, &GetSelectStrings, &GetFontProps,
    &GetPictureProps, &SetStringsText,  &SetCheckStrings,  &SetSelectStrings,
    &SetFontProps,    &SetPictureProps, &GetValueKind,
};

} // namespace

const TSpcEditorProFuncs& SpcEditorProFuncs() {
    return gFuncs;
}

} // namespace zelvane
