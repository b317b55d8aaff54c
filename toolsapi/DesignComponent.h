// A component of a form, data module or frame as the designer holds it: class name, the names of
// its ancestor classes, component name, the properties read from the form file and the child
// components. It needs no C++ class of the component's own, so any form file can be shown.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QWidget;

namespace ToolsAPI {

// The kind of a stored property value.
enum class TDesignValueKind : uint8_t {
    Null,
    Integer,   // also Int64; Int holds it
    Float,     // extended, single, currency and date; Text holds it as written
    String,    // Str holds the bytes
    Ident,     // an identifier (an enumeration value, a colour name, a reference); Str holds it
    Boolean,   // Int is 0 or 1
    Set,       // Text is "[a, b]"
    Binary,    // Str holds the bytes
    List,      // Text is "( ... )" with the items as written in text form
    Collection // Text is "< ... >" with the items as written in text form
};

struct TDesignProperty {
    std::string Name; // as stored, with dots for nested properties: "Font.Name"
    TDesignValueKind Kind = TDesignValueKind::Null;
    int64_t Int = 0;
    std::string Str;
    std::string Text; // the value as a text form file writes it
    std::string Raw;  // the value as the binary stream stores it, tag first
};

class TDesignComponent {
public:
    TDesignComponent() = default;
    TDesignComponent(const TDesignComponent&) = delete;
    TDesignComponent& operator=(const TDesignComponent&) = delete;

    std::string ClassName;
    // The class's ancestors, the direct parent first ("TForm", "TCustomForm", ...). Classes the
    // host knows nothing about have only what their unit declares.
    std::vector<std::string> Ancestors;
    std::string Name;
    bool Inherited = false; // "inherited" in a form file: the component comes from an ancestor form
    bool Inline = false;    // "inline": a frame placed on a form
    // "[n]" in a form file: where an inherited form places the component among its parent's
    // children, given when that is not the place the ancestor gave it; -1 for none.
    int ChildPos = -1;
    std::vector<TDesignProperty> Properties;

    // The window that shows the component, where a host with a designer window shows it;
    // nullptr otherwise.
    QWidget* Widget = nullptr;

    // The component that owns a root in the designer (a data module's designer window); nullptr
    // for a component that is not a root and for a root that stands alone.
    TDesignComponent* Owner = nullptr;

    // The name of the direct parent class, empty if unknown.
    std::string ClassParentName() const;
    // The class itself or one of its ancestors, compared without regard to case.
    bool InheritsFrom(std::string_view className) const;
    // A control: a visual component that can hold others or be placed in one. Non-visual
    // components (timers, menus, data sources) are children in the file but not controls.
    bool IsControl() const;

    const TDesignProperty* FindProperty(std::string_view name) const;
    int64_t IntProp(std::string_view name, int64_t defaultValue = 0) const;
    std::string StrProp(std::string_view name) const;
    void SetProperty(TDesignProperty property);

    TDesignComponent* Parent() const { return parent_; }
    TDesignComponent* Root();
    int ChildCount() const { return static_cast<int>(children_.size()); }
    TDesignComponent* Child(int index) const; // raises rtl::EListError out of range
    TDesignComponent* AddChild(std::unique_ptr<TDesignComponent> child);
    int IndexOfChild(const TDesignComponent* child) const;

    // The component of that name in the whole tree below this one, compared without regard to
    // case, or nullptr.
    TDesignComponent* FindComponent(std::string_view name);
    const TDesignComponent* FindComponent(std::string_view name) const {
        return const_cast<TDesignComponent*>(this)->FindComponent(name);
    }
    // Every component below this one, depth first, in file order.
    std::vector<TDesignComponent*> AllComponents();

private:
    TDesignComponent* parent_ = nullptr;
    std::vector<std::unique_ptr<TDesignComponent>> children_;
};

} // namespace ToolsAPI
