#include "toolsapi/DesignComponent.h"

#include "rtl/SysUtils.h"

#include <algorithm>

namespace ToolsAPI {

namespace {
bool SameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; };
               return lower(x) == lower(y);
           });
}
} // namespace

std::string TDesignComponent::ClassParentName() const {
    return Ancestors.empty() ? std::string() : Ancestors.front();
}

bool TDesignComponent::InheritsFrom(std::string_view className) const {
    if (SameName(ClassName, className)) return true;
    return std::any_of(Ancestors.begin(), Ancestors.end(),
                       [&](const std::string& a) { return SameName(a, className); });
}

bool TDesignComponent::IsControl() const {
    if (InheritsFrom("TControl")) return true;
    // A class the host does not know: a control stores its size, a non-visual component only
    // the place of its icon.
    bool known = InheritsFrom("TComponent");
    return !known && (FindProperty("Width") || FindProperty("Height"));
}

const TDesignProperty* TDesignComponent::FindProperty(std::string_view name) const {
    for (const auto& p : Properties)
        if (SameName(p.Name, name)) return &p;
    return nullptr;
}

int64_t TDesignComponent::IntProp(std::string_view name, int64_t defaultValue) const {
    const TDesignProperty* p = FindProperty(name);
    if (!p || (p->Kind != TDesignValueKind::Integer && p->Kind != TDesignValueKind::Boolean))
        return defaultValue;
    return p->Int;
}

std::string TDesignComponent::StrProp(std::string_view name) const {
    const TDesignProperty* p = FindProperty(name);
    if (!p) return {};
    if (p->Kind == TDesignValueKind::String || p->Kind == TDesignValueKind::Ident) return p->Str;
    return p->Text;
}

void TDesignComponent::SetProperty(TDesignProperty property) {
    for (auto& p : Properties)
        if (SameName(p.Name, property.Name)) {
            p = std::move(property);
            return;
        }
    Properties.push_back(std::move(property));
}

TDesignComponent* TDesignComponent::Root() {
    TDesignComponent* c = this;
    while (c->parent_)
        c = c->parent_;
    return c;
}

TDesignComponent* TDesignComponent::Child(int index) const {
    if (index < 0 || index >= ChildCount())
        throw rtl::EListError("List index out of bounds (" + std::to_string(index) + ")");
    return children_[static_cast<size_t>(index)].get();
}

TDesignComponent* TDesignComponent::AddChild(std::unique_ptr<TDesignComponent> child) {
    child->parent_ = this;
    children_.push_back(std::move(child));
    return children_.back().get();
}

int TDesignComponent::IndexOfChild(const TDesignComponent* child) const {
    for (size_t i = 0; i < children_.size(); ++i)
        if (children_[i].get() == child) return static_cast<int>(i);
    return -1;
}

TDesignComponent* TDesignComponent::FindComponent(std::string_view name) {
    if (name.empty()) return nullptr;
    for (auto& c : children_) {
        if (SameName(c->Name, name)) return c.get();
        if (TDesignComponent* found = c->FindComponent(name)) return found;
    }
    return nullptr;
}

std::vector<TDesignComponent*> TDesignComponent::AllComponents() {
    std::vector<TDesignComponent*> result;
    for (auto& c : children_) {
        result.push_back(c.get());
        auto below = c->AllComponents();
        result.insert(result.end(), below.begin(), below.end());
    }
    return result;
}

} // namespace ToolsAPI
