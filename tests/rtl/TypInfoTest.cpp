// Type information: declaring published classes and reaching their properties by name.
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <gtest/gtest.h>

using namespace rtl;

namespace tinfo {

RTL_ENUM(TShape, stRectangle, stCircle, stTriangle)
RTL_SET(TShapes, TShape)
RTL_EVENT(TNotify, void(TObject*), "Sender: TObject")

class TBase : public TObject {
    RTL_CLASS(TBase, TObject)
public:
    int32_t Width = 100;
    std::string Caption;
    int32_t ReadOnlyValue() const { return 7; }
    void WriteOnly(int32_t v) { written = v; }
    int32_t written = 0;
};

class TDerived : public TBase {
    RTL_CLASS(TDerived, TBase)
public:
    TShape Shape = stCircle;
    TShapes Shapes;
    bool Visible = true;
    char Letter = 'a';
    double Ratio = 0.5;
    int64_t Big = 0;
    TNotify OnClick;
    TBase* Child = nullptr;
    Variant Data;
    void Clicked(TObject* sender) { last = sender; }
    void Other(TObject* sender) {}
    bool IsShapeStored() const { return Shape != stCircle; }
    TObject* last = nullptr;
};

} // namespace tinfo

using namespace tinfo;

RTL_BEGIN_CLASS(tinfo::TBase)
    Property("Width", &TBase::Width).Default(100);
    Property("Caption", &TBase::Caption);
    Property("ReadOnly", &TBase::ReadOnlyValue, nullptr);
    Property("WriteOnly", nullptr, &TBase::WriteOnly);
RTL_END_CLASS

RTL_BEGIN_CLASS(tinfo::TDerived)
    Property("Shape", &TDerived::Shape).Default(stCircle).Stored(&TDerived::IsShapeStored);
    Property("Shapes", &TDerived::Shapes);
    Property("Visible", &TDerived::Visible).Default(true);
    Property("Letter", &TDerived::Letter);
    Property("Ratio", &TDerived::Ratio);
    Property("Big", &TDerived::Big);
    Property("OnClick", &TDerived::OnClick);
    Property("Child", &TDerived::Child);
    Property("Data", &TDerived::Data);
    Method<&TDerived::Clicked>("Clicked");
    Method<&TDerived::Other>("Other");
RTL_END_CLASS

TEST(TypInfo, PropertiesComeInDeclarationOrderAncestorsFirst) {
    std::vector<std::string> names;
    for (PPropInfo p : GetPropInfos(TDerived::StaticClass())) names.push_back(p->Name);
    std::vector<std::string> expected{"Width", "Caption", "ReadOnly", "WriteOnly", "Shape",
                                      "Shapes", "Visible", "Letter", "Ratio", "Big",
                                      "OnClick", "Child", "Data"};
    EXPECT_EQ(names, expected);
    EXPECT_EQ(GetTypeData(&TDerived::StaticClass()->TypeInfo)->PropCount, 13);
}
