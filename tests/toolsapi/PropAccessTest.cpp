// The IDE's components' properties by name, as a package reads published properties: declared
// Qt properties and dynamic ones, any case of the name, ordinals at the platform's 32 bits,
// strings in the host's code page, and the platform's errors for what cannot be done.
#include "toolsapi/PropAccess.h"

#include "rtl/SysUtils.h"

#include <QTimer>
#include <QVariant>

#include <gtest/gtest.h>

#include <functional>

using namespace ToolsAPI;

namespace {

std::string ErrorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const rtl::EPropertyError& e) {
        return e.Message();
    }
    return "no error";
}

TEST(PropAccess, DeclaredPropertiesAreReadAndWrittenByNameInAnyCase) {
    QTimer timer;
    timer.setObjectName(QString::fromUtf8("Timer\u2019s"));
    timer.setInterval(250);
    EXPECT_EQ(GetOrdProp(&timer, "interval"), 250);
    EXPECT_EQ(GetOrdProp(&timer, "INTERVAL"), 250);
    SetOrdProp(&timer, "Interval", 40);
    EXPECT_EQ(timer.interval(), 40);
    SetOrdProp(&timer, "singleShot", 7); // a boolean takes any non-zero value as true
    EXPECT_TRUE(timer.isSingleShot());
    EXPECT_EQ(GetOrdProp(&timer, "SingleShot"), 1);
    EXPECT_EQ(GetOrdProp(&timer, "timerType"), int(Qt::CoarseTimer)); // an enumeration
    EXPECT_EQ(GetStrProp(&timer, "ObjectName"), "Timer\x92s");
}

TEST(PropAccess, OrdinalsTravelAsThirtyTwoBitsUnlessTheyAreWider) {
    QObject o;
    o.setProperty("Address", QVariant::fromValue(quint32(0x0040BDC4)));
    o.setProperty("Wide", QVariant::fromValue(qint64(0x123456789)));
    o.setProperty("Text", QByteArray("raw"));
    o.setProperty("Child", QVariant::fromValue<QObject*>(&o));
    o.setProperty("Nothing", QVariant::fromValue<QObject*>(nullptr));
    EXPECT_EQ(GetOrdProp(&o, "address"), 0x0040BDC4);
    // Written below zero, an unsigned property wraps, and reads back as the platform's
    // negative 32-bit ordinal.
    SetOrdProp(&o, "Address", -4);
    EXPECT_EQ(o.property("Address").toUInt(), 0xFFFFFFFCu);
    EXPECT_EQ(GetOrdProp(&o, "Address"), -4);
    SetOrdProp(&o, "Address", 0x1'0000'0005);
    EXPECT_EQ(o.property("Address").toUInt(), 5u);
    EXPECT_EQ(GetOrdProp(&o, "wide"), 0x123456789);
    EXPECT_EQ(GetStrProp(&o, "text"), "raw");
    EXPECT_EQ(GetObjectProp(&o, "child"), &o);
    EXPECT_EQ(GetObjectProp(&o, "Nothing"), nullptr);
}

TEST(PropAccess, WhatCannotBeDoneRaisesThePlatformsErrors) {
    QTimer timer;
    const struct {
        const char* Name;
        std::function<void()> Call;
        std::string Message;
    } cases[] = {
        {"unknown", [&] { GetOrdProp(&timer, "Height"); }, "Property Height does not exist"},
        {"unknown written", [&] { SetOrdProp(&timer, "Height", 1); },
         "Property Height does not exist"},
        {"no object", [] { GetStrProp(nullptr, "Caption"); }, "Property Caption does not exist"},
        {"string as ordinal", [&] { GetOrdProp(&timer, "objectName"); },
         "Invalid property type: QString"},
        {"ordinal as string", [&] { GetStrProp(&timer, "interval"); },
         "Invalid property type: int"},
        {"ordinal as object", [&] { GetObjectProp(&timer, "interval"); },
         "Invalid property type: int"},
        {"read-only", [&] { SetOrdProp(&timer, "active", 1); }, "Property active is read-only"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ErrorOf(c.Call), c.Message) << c.Name;
}

TEST(PropAccess, FindComponentLooksAtEveryDepthInAnyCase) {
    QObject form, splitter, pane, other;
    form.setObjectName("DisassemblyView");
    splitter.setParent(&form);
    pane.setParent(&splitter);
    pane.setObjectName("DumpView");
    other.setObjectName("StackView"); // not on the form
    EXPECT_EQ(FindComponent(&form, "DumpView"), &pane);
    EXPECT_EQ(FindComponent(&form, "dumpview"), &pane);
    EXPECT_EQ(FindComponent(&form, "StackView"), nullptr);
    EXPECT_EQ(FindComponent(&form, ""), nullptr);
    EXPECT_EQ(FindComponent(nullptr, "DumpView"), nullptr);
}

} // namespace
