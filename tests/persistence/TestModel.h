// Classes with published properties of every kind, shared by the persistence tests.
#pragma once

#include "Scratch.h"
#include "persistence/DataHndl.h"
#include "rtl/Classes.h"
#include "rtl/Graphics.h"
#include "rtl/Lists.h"
#include "rtl/Persistent.h"
#include "rtl/TypInfo.h"
#include "tests/rtl/TestSupport.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace model {

using namespace rtl;

RTL_ENUM(TShape, shRectangle, shCircle, shTriangle)
RTL_SET(TShapes, TShape)
RTL_EVENT(TChangeEvent, void(TObject*), "Sender: TObject")

// A plain persistent object: the example object of the stream format.
class TFoo : public TPersistent {
    RTL_CLASS(TFoo, TPersistent)
public:
    int32_t Width = 100;
    std::string Caption;
};

// The nested object of TSample: owned, assigned through its setter.
class TLook : public TPersistent {
    RTL_CLASS(TLook, TPersistent)
public:
    int32_t Size = 8;
    std::string Name;
    TColor Color = clBlack;
    void Assign(TPersistent* source) override;
};

// One property of each kind the layer handles, nested objects, references, an event, and
// properties that can't be written.
class TSample : public TPersistent {
    RTL_CLASS(TSample, TPersistent)
public:
    TSample();
    ~TSample() override;

    int32_t Count = 0;
    char Letter = 'a';
    TShape Shape = shCircle;
    TShapes Shapes;
    double Ratio = 0;
    TDateTime Stamp;
    TDate Day;
    TTime Clock;
    std::string Text;
    std::u16string Wide;
    int64_t Big = 0;
    Variant Data;
    TColor Color = clRed;
    bool Flag = false;
    TSample* Child = nullptr;
    TChangeEvent OnChange;
    std::string Hidden;
    int32_t written = 0;

    TLook* GetLook() const { return look_.get(); }
    void SetLook(TLook* value) { look_->Assign(value); }
    int32_t ReadOnly() const { return 7; }
    void WriteOnly(int32_t v) { written = v; }
    void Changed(TObject*) {}

private:
    std::unique_ptr<TLook> look_;
};

// A component with a nested object, a string list and a collection.
class TItem : public TCollectionItem {
    RTL_CLASS(TItem, TCollectionItem)
public:
    explicit TItem(TCollection* c = nullptr) : TCollectionItem(nullptr) {
        if (c) SetCollection(c);
    }
    std::string Caption;
    int32_t Width = 50;
};

class TWidget : public TComponent {
    RTL_CLASS(TWidget, TComponent)
public:
    explicit TWidget(TComponent* owner = nullptr);
    ~TWidget() override;

    int32_t Width = 0;
    std::string Caption;
    TShape Shape = shRectangle;
    TWidget* Buddy = nullptr;

    TLook* GetLook() const { return look_.get(); }
    void SetLook(TLook* value) { look_->Assign(value); }
    TStrings* GetLines() const { return lines_.get(); }
    void SetLines(TStrings* value) { lines_->Assign(value); }
    TCollection* GetItems() const { return items_.get(); }
    void SetItems(TCollection* value) { items_->Assign(value); }

private:
    std::unique_ptr<TLook> look_;
    std::unique_ptr<TStringList> lines_;
    std::unique_ptr<TCollection> items_;
};

// A nested object and a sibling whose name starts with the nested object's name.
class TPair : public TPersistent {
    RTL_CLASS(TPair, TPersistent)
public:
    TPair();
    ~TPair() override;
    TLook* GetLook() const { return look_.get(); }
    void SetLook(TLook* value) { look_->Assign(value); }
    int32_t LookMore = 0;
    int32_t Other = 0;

private:
    std::unique_ptr<TLook> look_;
};

// A class with a published field of a class that isn't registered.
class TFieldHolder : public TPersistent {
    RTL_CLASS(TFieldHolder, TPersistent)
public:
    TFoo* FooField = nullptr;
    TLook* LookField = nullptr;
};

using rtltest::MessageOf;
using namespace scratch;

// A string of the given byte values.
std::string Bytes(std::initializer_list<int> bytes);

// A short string: its length byte and its characters.
std::string Short(const std::string& s);

// TFoo objects of the given widths, with the arrays of them that the load and save operations
// and the savers take.
struct Foos {
    explicit Foos(std::initializer_list<int32_t> widths);
    std::vector<std::unique_ptr<TFoo>> foo;
    std::vector<TObject*> objs;
    std::vector<TPersistent*> pers;
    std::vector<int32_t> Widths() const;
    std::vector<std::string> Captions() const;
};

// A TSample, a TWidget and a TFoo with every kind of value the writers produce.
struct Objects {
    Objects();
    TSample sample;
    TWidget widget;
    TFoo foo;
};

// What GetProps gives for the objects in the format.
std::string PropsOf(zelvane::TObjectArray objs, zelvane::TObjectStorageFormat format);
std::string PropsOf(TObject* obj, zelvane::TObjectStorageFormat format);

// Runs f and returns the message of the EDataHandlingError it raises.
template <class F> std::string DataError(F&& f) {
    return MessageOf<zelvane::EDataHandlingError>(f);
}

} // namespace model
