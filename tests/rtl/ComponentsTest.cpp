// Components: ownership and destruction, names, published fields linked by name,
// notifications, free notification across owners, nested lookup.
#include "rtl/Classes.h"
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <utility>

using namespace rtl;
using namespace rtltest;

namespace comps {

// Records the names of components as they are destroyed, and what they saw then.
struct DestroyLog {
    std::vector<std::string> names;
    std::vector<bool> destroyingFlag;
};

class TCounted : public TComponent {
    RTL_CLASS(TCounted, TComponent)
public:
    explicit TCounted(TComponent* owner = nullptr, DestroyLog* log = nullptr)
        : TComponent(owner), log_(log) {}
    ~TCounted() override {
        if (log_) {
            log_->names.push_back(Name());
            log_->destroyingFlag.push_back(ComponentState().Contains(csDestroying));
        }
    }

private:
    DestroyLog* log_;
};

class TButton : public TComponent {
    RTL_CLASS(TButton, TComponent)
public:
    using TComponent::TComponent;
};

class TLabel : public TComponent {
    RTL_CLASS(TLabel, TComponent)
public:
    using TComponent::TComponent;
};

// An owner with published fields that its components fill by name.
class TForm : public TComponent {
    RTL_CLASS(TForm, TComponent)
public:
    using TComponent::TComponent;
    TButton* Button1 = nullptr;
    TLabel* Caption = nullptr;
};

// Remembers every notification it receives.
class TWatcher : public TComponent {
    RTL_CLASS(TWatcher, TComponent)
public:
    using TComponent::TComponent;
    std::vector<std::pair<TComponent*, TOperation>> seen;

protected:
    void Notification(TComponent* component, TOperation operation) override {
        TComponent::Notification(component, operation);
        seen.emplace_back(component, operation);
    }
};

// Holds a reference to a component that may belong to another owner, and drops it when told
// that the component goes.
class TLink : public TComponent {
    RTL_CLASS(TLink, TComponent)
public:
    using TComponent::TComponent;
    TComponent* Target = nullptr;
    void SetTarget(TComponent* value) {
        if (Target) Target->RemoveFreeNotification(this);
        Target = value;
        if (value) value->FreeNotification(this);
    }

protected:
    void Notification(TComponent* component, TOperation operation) override {
        TComponent::Notification(component, operation);
        if (operation == opRemove && component == Target) Target = nullptr;
    }
};

RTL_IMPLEMENT_CLASS(TCounted)
RTL_IMPLEMENT_CLASS(TButton)
RTL_IMPLEMENT_CLASS(TLabel)
RTL_BEGIN_CLASS(TForm)
Field("Button1", &TForm::Button1);
Field("Caption", &TForm::Caption);
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TWatcher)
RTL_IMPLEMENT_CLASS(TLink)

} // namespace comps

using namespace comps;

namespace {

TCounted* Named(TComponent* owner, const std::string& name, DestroyLog* log = nullptr) {
    auto* c = new TCounted(owner, log);
    c->SetName(name);
    return c;
}

// The names of the owner's components, in their order.
V Names(const TComponent& owner) {
    V r;
    for (int i = 0; i < owner.ComponentCount(); ++i)
        r.push_back(owner.Components(i)->Name());
    return r;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Ownership

TEST(Components, OwnedComponentsDieWithTheirOwnerLastFirst) {
    DestroyLog log;
    auto* root = Named(nullptr, "Root", &log);
    Named(root, "A", &log);
    auto* b = Named(root, "B", &log);
    Named(root, "C", &log);
    Named(b, "B1", &log);
    Named(b, "B2", &log);
    delete root;
    // The owner's own destructor body runs first; then its components go, the last first, each
    // with its own components.
    EXPECT_EQ(log.names, V({"Root", "C", "B", "B2", "B1", "A"}));
    // The owned ones know that they are being destroyed.
    for (size_t i = 1; i < log.destroyingFlag.size(); ++i)
        EXPECT_TRUE(log.destroyingFlag[i]) << log.names[i];
}

TEST(Components, ComponentsByIndex) {
    TComponent owner;
    auto* a = Named(&owner, "A");
    Named(&owner, "B");
    auto* c = Named(&owner, "C");
    EXPECT_EQ(a->ComponentIndex(), 0);
    EXPECT_EQ(c->ComponentIndex(), 2);
    EXPECT_THROW(owner.Components(3), EListError);
    EXPECT_THROW(owner.Components(-1), EListError);
    // Out-of-range indexes are clamped.
    V orders;
    for (int index : {0, 99, -5}) {
        c->SetComponentIndex(index);
        for (const auto& name : Names(owner))
            orders.push_back(name);
    }
    EXPECT_EQ(orders, V({"C", "A", "B", "A", "B", "C", "C", "A", "B"}));
    TComponent loose;
    EXPECT_EQ(loose.ComponentIndex(), -1);
}

// ---------------------------------------------------------------------------------------------
// Names

TEST(Components, NamesMustBeIdentifiers) {
    TComponent owner;
    auto* c = Named(&owner, "Good_1");
    for (const char* bad : {"1st", "a b", "a-b", "a.b", " lead", "\xC8\xEC\xFF", "x!"}) {
        EXPECT_THROW(c->SetName(bad), EComponentError) << bad;
        EXPECT_EQ(c->Name(), "Good_1");
    }
    EXPECT_EQ(MessageOf<EComponentError>([&] { c->SetName("9lives"); }),
              "'9lives' is not a valid component name");
    c->SetName("");
    EXPECT_EQ(c->Name(), "");
    EXPECT_TRUE(IsValidComponentName("Form1"));
    EXPECT_FALSE(IsValidComponentName(""));
}

TEST(Components, NamesAreUniqueAmongSiblingsIgnoringCase) {
    TComponent owner;
    auto* first = Named(&owner, "Button1");
    auto* second = Named(&owner, "Button2");
    EXPECT_EQ(MessageOf<EComponentError>([&] { second->SetName("BUTTON1"); }),
              "A component named BUTTON1 already exists");
    EXPECT_EQ(second->Name(), "Button2");
    // A change of case of one's own name is a rename, not a clash.
    first->SetName("BUTTON1");
    EXPECT_EQ(first->Name(), "BUTTON1");
    EXPECT_EQ(owner.FindComponent("button1"), first);
    // Several components may stay unnamed.
    second->SetName("");
    auto* third = Named(&owner, "");
    EXPECT_EQ(owner.FindComponent(""), nullptr);
    EXPECT_EQ(third->Name(), "");
}

// ---------------------------------------------------------------------------------------------
// Published fields of the owner

TEST(Components, FieldsAreLinkedOnInsertAndUnlinkedOnRemove) {
    TForm form;
    auto* label = new TLabel(nullptr);
    label->SetName("Caption");
    form.InsertComponent(label);
    EXPECT_EQ(form.Caption, label);
    form.RemoveComponent(label);
    EXPECT_EQ(form.Caption, nullptr);
    delete label;
    // A component of a name that isn't a field leaves the fields alone.
    auto* other = new TLabel(&form);
    other->SetName("Label7");
    EXPECT_EQ(form.Caption, nullptr);
    EXPECT_EQ(form.Button1, nullptr);
}

// ---------------------------------------------------------------------------------------------
// Notifications

TEST(FreeNotification, WorksBothWays) {
    // A link in one form with a target in another. The link dies first: the target must not
    // tell it anything afterwards (the sanitizer catches a notification sent to the freed link).
    TComponent formA, formB;
    TComponent* target = new TComponent(&formA);
    TLink* link = new TLink(&formB);
    TWatcher watcher(nullptr);
    link->SetTarget(target);
    target->FreeNotification(&watcher);
    delete link;
    EXPECT_TRUE(target->ComponentState().Contains(csFreeNotification));
    // The target still notifies the watcher that remains.
    watcher.seen.clear();
    delete target;
    EXPECT_EQ(watcher.seen, (std::vector{std::pair<TComponent*, TOperation>(target, opRemove)}));
}

// ---------------------------------------------------------------------------------------------
// State, interfaces and nested lookup

TEST(Components, DesigningStatePassesToInsertedComponents) {
    TComponent root;
    auto* before = new TComponent(&root);
    root.SetDesigning(true);
    EXPECT_TRUE(before->ComponentState().Contains(csDesigning));
    auto* after = new TComponent(&root);
    EXPECT_TRUE(after->ComponentState().Contains(csDesigning));
    root.SetDesigning(false);
    EXPECT_FALSE(after->ComponentState().Contains(csDesigning));
}

TEST(Components, FindNestedComponentFollowsDottedPaths) {
    TComponent root;
    root.SetName("Form1");
    auto* panel = Named(&root, "Panel1");
    auto* button = Named(panel, "Button1");
    auto* deep = Named(button, "Glyph");
    // Button1 alone is not owned by the root; "Owner" names the component reached so far.
    std::vector<TComponent*> found;
    for (const char* path : {"Panel1", "Panel1.Button1", "panel1.BUTTON1.glyph", "Panel1->Button1",
                             "Panel1.Missing", "Missing.Button1", "Button1", "", "Owner.Panel1"})
        found.push_back(FindNestedComponent(&root, path));
    EXPECT_EQ(found, (std::vector<TComponent*>{panel, button, deep, button, nullptr, nullptr,
                                               nullptr, nullptr, panel}));
    EXPECT_EQ(FindNestedComponent(nullptr, "Panel1"), nullptr);
}
