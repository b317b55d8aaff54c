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

TEST(PropAccess, PropertiesAndComponentsAreFoundByNameInAnyCase) {
    QTimer timer;
    timer.setObjectName(QString::fromUtf8("Timer\u2019s"));
    SetOrdProp(&timer, "Interval", 40);
    EXPECT_EQ(timer.interval(), 40);
    EXPECT_EQ(GetOrdProp(&timer, "INTERVAL"), 40);
    SetOrdProp(&timer, "singleShot", 7); // a boolean takes any value but 0 as true
    EXPECT_EQ(GetOrdProp(&timer, "SingleShot"), 1);
    EXPECT_EQ(GetOrdProp(&timer, "timerType"), int(Qt::CoarseTimer)); // an enumeration
    EXPECT_EQ(GetStrProp(&timer, "ObjectName"), "Timer\x92s");

    // Ordinals travel as 32 bits: an unsigned property written below zero wraps and reads back
    // negative, and one written past 32 bits is cut; 64-bit ones travel whole.
    QObject o;
    o.setProperty("Address", QVariant::fromValue(quint32(0x0040BDC4)));
    o.setProperty("Wide", QVariant::fromValue(qint64(0x123456789)));
    o.setProperty("Text", QByteArray("raw"));
    o.setProperty("Child", QVariant::fromValue<QObject*>(&timer));
    EXPECT_EQ(GetOrdProp(&o, "address"), 0x0040BDC4);
    SetOrdProp(&o, "Address", -4);
    EXPECT_EQ(o.property("Address").toUInt(), 0xFFFFFFFCu);
    EXPECT_EQ(GetOrdProp(&o, "Address"), -4);
    SetOrdProp(&o, "Address", 0x1'0000'0005);
    EXPECT_EQ(o.property("Address").toUInt(), 5u);
    EXPECT_EQ(GetOrdProp(&o, "wide"), 0x123456789);
    EXPECT_EQ(GetStrProp(&o, "text"), "raw");
    EXPECT_EQ(GetObjectProp(&o, "child"), &timer);
    // FindComponent looks at every depth in any case.
    QObject form, splitter, pane, other;
    splitter.setParent(&form);
    pane.setParent(&splitter);
    pane.setObjectName("DumpView");
    other.setObjectName("StackView"); // not on the form
    EXPECT_EQ(
        (std::vector<QObject*>{FindComponent(&form, "dumpview"), FindComponent(&form, "StackView"),
                               FindComponent(&form, ""), FindComponent(nullptr, "DumpView")}),
        (std::vector<QObject*>{&pane, nullptr, nullptr, nullptr}));
}

TEST(PropAccess, WhatCannotBeDoneRaisesThePlatformsErrors) {
    QTimer timer;
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { GetOrdProp(&timer, "Height"); }, "Property Height does not exist"},
        {[&] { SetOrdProp(&timer, "Height", 1); }, "Property Height does not exist"},
        {[] { GetStrProp(nullptr, "Caption"); }, "Property Caption does not exist"},
        {[&] { GetOrdProp(&timer, "objectName"); }, "Invalid property type: QString"},
        {[&] { GetStrProp(&timer, "interval"); }, "Invalid property type: int"},
        {[&] { GetObjectProp(&timer, "interval"); }, "Invalid property type: int"},
        {[&] { SetOrdProp(&timer, "active", 1); }, "Property active is read-only"},
    };
    for (const auto& [call, message] : cases) {
        try {
            call();
            ADD_FAILURE() << "no error: " << message;
        } catch (const rtl::EPropertyError& e) {
            EXPECT_EQ(e.Message(), message);
        }
    }
}

} // namespace
