// The published properties of the IDE's components, read and written by name as the platform's
// TypInfo routines read a component's: the IDE's components are Qt objects, and what they
// publish are their Qt properties (declared with Q_PROPERTY, or set on them as dynamic ones).
// A package reaches a component of the IDE that has no interface of its own (the CPU window's
// panes) through these and nothing else.
//
// Ordinals are integers of up to 32 bits, booleans, characters and enumerations; they travel as
// the platform's do, as 32-bit integers (an unsigned value above 0x7FFFFFFF comes back
// negative, and a written value is cut to the property's width), while 64-bit integers travel
// whole. Strings are QString and QByteArray properties, in the host's code page. Names are
// compared without regard to case, as on the platform; an exact name is found fastest.
//
// Raises rtl::EPropertyError with the platform's texts: "Property X does not exist" (for a
// missing object too), "Invalid property type: T", "Property X is read-only".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class QObject;

namespace ToolsAPI {

int64_t GetOrdProp(const QObject* obj, std::string_view name);
void SetOrdProp(QObject* obj, std::string_view name, int64_t value);
std::string GetStrProp(const QObject* obj, std::string_view name);
// A property that holds a QObject pointer; nullptr when it holds none.
QObject* GetObjectProp(const QObject* obj, std::string_view name);

// The platform's FindComponent on a form: the object of that name among the form's children at
// any depth (a form owns every component on it), compared without regard to case; nullptr for
// none, or for no form.
QObject* FindComponent(const QObject* owner, std::string_view name);

} // namespace ToolsAPI
