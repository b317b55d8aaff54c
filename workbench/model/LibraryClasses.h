// The published properties and events of the component library's common classes.
//
// A form file stores only the properties whose value differs from the class's default, so a
// component read from one knows only those. This catalog gives the rest: for each class the
// properties it publishes (introduces, or publishes anew with a default of its own), with their
// kind, the values they take and their default as a form file would write it. A class's full
// list is its ancestors' followed by its own; a class the catalog does not know (a user's form
// or frame class) has the properties of its nearest library ancestor.
#pragma once

#include "toolsapi/DesignComponent.h"

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

enum class TLibraryPropertyKind {
    Integer,
    String,
    Ident, // an enumeration value, a colour or cursor name, or a reference to a component
    Boolean,
    Set,
    Class, // an object held by the component (Font, Constraints, Lines)
    Event
};

struct TLibraryProperty {
    std::string Name;
    TLibraryPropertyKind Kind = TLibraryPropertyKind::Integer;
    std::string TypeName; // "Integer", "TAlign", "TFont", "TNotifyEvent"
    // The value as a form file writes it ("True", "crDefault", "[akLeft, akTop]", "''", "0").
    // Empty for an event without a handler and for a reference to no component; for a
    // class-valued property, which a form file writes as its nested properties, the class's
    // name in parentheses as the inspector shows it: "(TFont)".
    std::string Default;
    // The identifiers an Ident property takes, or the elements of a Set. Empty for an Ident
    // that takes any name (a reference to another component).
    std::vector<std::string> Values;
    // Colours and cursors are integers that have names: a form file may write either.
    bool TakesIntegers = false;
};

// The published properties the class itself declares, in declaration order; nullptr for a
// class the catalog does not describe (also for library classes that publish nothing new).
const std::vector<TLibraryProperty>* LibraryClassOwnProperties(std::string_view className);

// Whether the component library knows the class: the catalog or the library's class
// hierarchy (LibraryClassParent) names it.
bool IsLibraryClass(std::string_view className);

// Every published property of a library class: its ancestors' first, each property once, with
// the default the most derived class that declares it gives it. Empty for a class the library
// does not know.
const std::vector<TLibraryProperty>& LibraryClassProperties(std::string_view className);

// The published properties of a component: those of the first library class among its own
// class and its ancestors.
const std::vector<TLibraryProperty>& PublishedProperties(const ToolsAPI::TDesignComponent& c);
const TLibraryProperty* FindPublishedProperty(const ToolsAPI::TDesignComponent& c,
                                              std::string_view name);

// The default as a stored property would hold it, to be shown like one. An event or reference
// without a value is an Ident with empty text; a class-valued property has kind Null.
ToolsAPI::TDesignProperty DefaultDesignProperty(const TLibraryProperty& property);

// What a form's window adds to its client area on the platform: the borders, the caption and,
// for a form whose Menu names one of its components, the menu bar.
struct TFormFrame {
    int Width = 8;
    int Height = 27;
};
TFormFrame FormFrame(const ToolsAPI::TDesignComponent& form);

// The client size of a form: ClientWidth and ClientHeight where it stores them, else its outer
// size less its frame. For other components, their Width and Height.
int ClientWidthOf(const ToolsAPI::TDesignComponent& c, int fallbackWidth = 320);
int ClientHeightOf(const ToolsAPI::TDesignComponent& c, int fallbackHeight = 240);

// A form stores one pair of sizes: its outer size (Width, Height) or its client size
// (ClientWidth, ClientHeight). A size given to the pair a form does not store, while it stores
// the other, goes to the stored one, changed by the form's frame: the name and value to store.
// Any other property keeps its name and value.
std::pair<std::string, int64_t> FormSizeToStore(const ToolsAPI::TDesignComponent& c,
                                                const std::string& name, int64_t value);

// The value a component has for a published property it does not store: the default, except
// where the platform derives it from what the component stores: a form's client size from its
// outer size, and its outer size from its client size.
ToolsAPI::TDesignProperty UnstoredDesignProperty(const ToolsAPI::TDesignComponent& c,
                                                 const TLibraryProperty& property);

// Whether a value read from a form file's text fits the property: of its kind (an integer for
// a colour or cursor too), and for an Ident with listed values one of them. An identifier
// written in other letter case gets the catalog's spelling. Class-valued properties take no
// value of their own.
bool FitLibraryValue(const TLibraryProperty& property, ToolsAPI::TDesignProperty& value);

// The names of the library's colours ("clBlack", "clBtnFace", ...), which colour properties take.
const std::vector<std::string>& LibraryColorNames();

} // namespace workbench
