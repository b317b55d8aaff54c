// Loads fuzzer bytes as a specification file into a settings tree with a nested settings
// object, string list values, a font, a picture, a plain collection, and fixed and free
// collections, with errors ignored as the add-in loads its settings; then reads one branch of
// the same bytes behind a data header. Any exception of the runtime is an expected answer to bad
// input; a crash, a leak or an undefined operation is a finding.
#include "fuzz/ScratchDir.h"
#include "persistence/PropTypes.h"
#include "persistence/Storage.h"
#include "rtl/SysUtils.h"
#include "specification/SpcMng.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <unistd.h>

using namespace rtl;
using namespace zelvane;

namespace {

class TItemSettings : public TSpcItem {
    RTL_CLASS(TItemSettings, TSpcItem)
public:
    explicit TItemSettings(TCollection* c = nullptr) : TSpcItem(c) {}
    std::string Key;
    int32_t Value = 0;
};

class TFixedItems : public TFixedCollection {
    RTL_CLASS(TFixedItems, TFixedCollection)
public:
    using TConstructorArg = TPersistent;
    explicit TFixedItems(TPersistent* owner = nullptr)
        : TFixedCollection(owner, TItemSettings::StaticClass()) {}
    std::string GetUpdateName() const override { return "Key"; }
};

class TLive : public TNestedObject {
    RTL_CLASS(TLive, TNestedObject)
public:
    TLive() : lines_(std::make_unique<TMemoStrings>()) {}
    bool Flag = false;
    double Ratio = 0;
    TMemoStrings* GetLines() const { return lines_.get(); }
    void SetLines(TMemoStrings* v) { lines_->Assign(v); }

private:
    std::unique_ptr<TMemoStrings> lines_;
};

class TInner : public TSpcObject {
    RTL_CLASS(TInner, TSpcObject)
public:
    TInner()
        : check_(std::make_unique<TCheckStrings>()), select_(std::make_unique<TSelectStrings>()),
          font_(std::make_unique<TFontEx>()), picture_(std::make_unique<TPictureEx>()) {}
    int64_t Big = 0;
    TShortCutString Key;
    TCheckStrings* GetCheck() const { return check_.get(); }
    void SetCheck(TCheckStrings* v) { check_->Assign(v); }
    TSelectStrings* GetSelect() const { return select_.get(); }
    void SetSelect(TSelectStrings* v) { select_->Assign(v); }
    TFontEx* GetFont() const { return font_.get(); }
    void SetFont(TFontEx* v) { font_->Assign(v); }
    TPictureEx* GetPicture() const { return picture_.get(); }
    void SetPicture(TPictureEx* v) { picture_->Assign(v); }

private:
    std::unique_ptr<TCheckStrings> check_;
    std::unique_ptr<TSelectStrings> select_;
    std::unique_ptr<TFontEx> font_;
    std::unique_ptr<TPictureEx> picture_;
};

class TRoot : public TSpcObject {
    RTL_CLASS(TRoot, TSpcObject)
public:
    TRoot()
        : inner_(std::make_unique<TInner>()),
          plain_(std::make_unique<TSpcCollection>(this, TItemSettings::StaticClass())),
          fixed_(std::make_unique<TFixedItems>(this)),
          free_(std::make_unique<TFreeCollection>(this, TWrapperItem::StaticClass())) {
        fixed_->Add("one");
        fixed_->Add("two");
        free_->Add(&live_, "Live");
    }
    std::string Title;
    TInner* GetInner() const { return inner_.get(); }
    void SetInner(TInner* v) {}
    TSpcCollection* GetPlain() const { return plain_.get(); }
    void SetPlain(TSpcCollection* v) {}
    void DefineProperties(TFiler* filer) override {
        filer->DefineProperty(
            "Fixed_", [this](TReader* r) { ReadFixedCollection(*r, fixed_.get(), true); }, nullptr,
            false);
        filer->DefineProperty(
            "Free_", [this](TReader* r) { ReadFreeCollection(*r, free_.get(), true); }, nullptr,
            false);
    }
    TFixedItems* Fixed() const { return fixed_.get(); }

private:
    TLive live_;
    std::unique_ptr<TInner> inner_;
    std::unique_ptr<TSpcCollection> plain_;
    std::unique_ptr<TFixedItems> fixed_;
    std::unique_ptr<TFreeCollection> free_;
};

RTL_BEGIN_CLASS(TItemSettings)
Property("Key", &TItemSettings::Key);
Property("Value", &TItemSettings::Value);
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TFixedItems)
RTL_BEGIN_CLASS(TLive)
Property("Flag", &TLive::Flag);
Property("Ratio", &TLive::Ratio);
Property("Lines", &TLive::GetLines, &TLive::SetLines);
RTL_END_CLASS
RTL_BEGIN_CLASS(TInner)
Property("Big", &TInner::Big);
Property("Key", &TInner::Key);
Property("Check", &TInner::GetCheck, &TInner::SetCheck);
Property("Select", &TInner::GetSelect, &TInner::SetSelect);
Property("Font", &TInner::GetFont, &TInner::SetFont);
Property("Picture", &TInner::GetPicture, &TInner::SetPicture);
RTL_END_CLASS
RTL_BEGIN_CLASS(TRoot)
Property("Title", &TRoot::Title);
Property("Inner", &TRoot::GetInner, &TRoot::SetInner);
Property("Plain", &TRoot::GetPlain, &TRoot::SetPlain);
RTL_END_CLASS

std::string TempFile() {
    return (FuzzScratchDir() / ("zelvane-fuzz-spc-" + std::to_string(getpid()))).string();
}

void WriteFile(const std::string& name, const std::string& data) {
    FILE* f = std::fopen(name.c_str(), "wb");
    if (!f) std::abort();
    std::fwrite(data.data(), 1, data.size(), f);
    std::fclose(f);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string file = TempFile();
    std::string bytes(reinterpret_cast<const char*>(data), size);
    WriteFile(file, bytes);
    try {
        TRoot root;
        TPersistent* obj = &root;
        LoadSpc(obj, file, false, false);
    } catch (const Exception&) {
    }
    // The same bytes behind a data header, one branch of them.
    WriteFile(file, std::string("sys_bin\0\0", 9) + bytes);
    try {
        TInner inner;
        LoadSingleNode(&inner, "Inner", file);
    } catch (const Exception&) {
    }
    try {
        TFixedItems fixed;
        fixed.Add("one");
        LoadSingleNode(&fixed, "Fixed_", file);
    } catch (const Exception&) {
    }
    return 0;
}
