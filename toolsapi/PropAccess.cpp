#include "toolsapi/PropAccess.h"

#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"

#include <QMetaProperty>
#include <QObject>
#include <QVariant>

namespace ToolsAPI {

namespace {

[[noreturn]] void UnknownProperty(std::string_view name) {
    throw rtl::EPropertyError("Property " + std::string(name) + " does not exist");
}

[[noreturn]] void InvalidPropertyType(const QMetaType& type) {
    throw rtl::EPropertyError(std::string("Invalid property type: ") +
                              (type.isValid() ? type.name() : "none"));
}


// A property found by name: a declared one, or else a dynamic one of that name.
struct TProperty {
    const QObject* Object;
    QMetaProperty Declared;
    QByteArray Dynamic;

    QVariant Read() const {
        return Declared.isValid() ? Declared.read(Object) : Object->property(Dynamic.constData());
    }
    QMetaType Type() const { return Declared.isValid() ? Declared.metaType() : Read().metaType(); }
};

TProperty Lookup(const QObject* obj, std::string_view name) {
    if (!obj) UnknownProperty(name);
    const QMetaObject* meta = obj->metaObject();
    int index = meta->indexOfProperty(std::string(name).c_str());
    for (int i = 0; index < 0 && i < meta->propertyCount(); ++i)
        if (rtl::SameText(meta->property(i).name(), name)) index = i;
    if (index >= 0) return {obj, meta->property(index), {}};
    for (const QByteArray& dynamic : obj->dynamicPropertyNames())
        if (rtl::SameText(std::string_view(dynamic.constData(), size_t(dynamic.size())), name))
            return {obj, {}, dynamic};
    UnknownProperty(name);
}

// The ordinal of a value, 32 bits wide unless the type is 64 bits wide.
int64_t Ordinal(const QVariant& value) {
    const QMetaType type = value.metaType();
    switch (type.id()) {
    case QMetaType::Bool:
        return value.toBool() ? 1 : 0;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toLongLong();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Char16:
    case QMetaType::QChar:
        return static_cast<int32_t>(value.toLongLong());
    default:
        if (type.flags() & QMetaType::IsEnumeration)
            return static_cast<int32_t>(value.toLongLong());
        InvalidPropertyType(type);
    }
}

// The value as the property's type takes it, cut to its width.
QVariant OrdinalOf(const QMetaType& type, int64_t value) {
    switch (type.id()) {
    case QMetaType::Bool:
        return QVariant(value != 0);
    case QMetaType::Int:
        return QVariant(static_cast<int32_t>(value));
    case QMetaType::UInt:
        return QVariant(static_cast<uint32_t>(value));
    case QMetaType::LongLong:
        return QVariant(static_cast<qlonglong>(value));
    case QMetaType::ULongLong:
        return QVariant(static_cast<qulonglong>(value));
    case QMetaType::Short:
        return QVariant::fromValue(static_cast<short>(value));
    case QMetaType::UShort:
        return QVariant::fromValue(static_cast<ushort>(value));
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return QVariant::fromValue(static_cast<uchar>(value));
    default:
        break;
    }
    if (type.flags() & QMetaType::IsEnumeration) {
        QVariant v(static_cast<int>(value));
        if (v.convert(type)) return v;
    }
    InvalidPropertyType(type);
}

} // namespace

int64_t GetOrdProp(const QObject* obj, std::string_view name) {
    return Ordinal(Lookup(obj, name).Read());
}

void SetOrdProp(QObject* obj, std::string_view name, int64_t value) {
    TProperty p = Lookup(obj, name);
    if (p.Declared.isValid() && !p.Declared.isWritable())
        throw rtl::EPropertyError("Property " + std::string(p.Declared.name()) + " is read-only");
    QVariant v = OrdinalOf(p.Type(), value);
    bool written = p.Declared.isValid() ? p.Declared.write(obj, v)
                                        : (obj->setProperty(p.Dynamic.constData(), v), true);
    if (!written) throw rtl::EPropertyError("Property " + std::string(name) + " is read-only");
}

std::string GetStrProp(const QObject* obj, std::string_view name) {
    QVariant v = Lookup(obj, name).Read();
    switch (v.metaType().id()) {
    case QMetaType::QString:
        return ToBytes(v.toString());
    case QMetaType::QByteArray:
        return v.toByteArray().toStdString();
    default:
        InvalidPropertyType(v.metaType());
    }
}

QObject* GetObjectProp(const QObject* obj, std::string_view name) {
    QVariant v = Lookup(obj, name).Read();
    if (!(v.metaType().flags() & QMetaType::PointerToQObject)) InvalidPropertyType(v.metaType());
    return v.value<QObject*>();
}

QObject* FindComponent(const QObject* owner, std::string_view name) {
    if (!owner || name.empty()) return nullptr;
    const QString wanted = FromBytes(name);
    if (QObject* exact = owner->findChild<QObject*>(wanted)) return exact;
    for (QObject* child : owner->findChildren<QObject*>())
        if (child->objectName().compare(wanted, Qt::CaseInsensitive) == 0) return child;
    return nullptr;
}

} // namespace ToolsAPI
