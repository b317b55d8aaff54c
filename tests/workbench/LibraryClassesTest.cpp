// The catalog of the component library's published properties: lookup through the class
// hierarchy, the defaults a form file leaves out, the example forms it must cover, and the
// seam's component interface that lists and edits the stored and the published properties.
#include "workbench/model/LibraryClasses.h"
#include "tests/workbench/TestFiles.h"
#include "workbench/model/Files.h"
#include "workbench/model/Model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace workbench;
using ToolsAPI::TDesignComponent;

namespace {

const TLibraryProperty* Find(std::string_view cls, std::string_view name) {
    for (const TLibraryProperty& p : LibraryClassProperties(cls))
        if (SameText(p.Name, name)) return &p;
    return nullptr;
}

// A case written "Class.Property=text": its three parts.
struct TCase {
    std::string cls, name, text;
    explicit TCase(std::string_view c)
        : cls(c.substr(0, c.find('.'))),
          name(c.substr(c.find('.') + 1, c.find('=') - c.find('.') - 1)),
          text(c.substr(c.find('=') + 1)) {}
};

// The cases of a table written "Class.Property=text; ...".
std::vector<TCase> Cases(std::string_view table) {
    std::vector<TCase> r;
    for (size_t at = 0; at < table.size();) {
        size_t end = std::min(table.find(';', at), table.size());
        std::string_view c = table.substr(at, end - at);
        c.remove_prefix(std::min(c.find_first_not_of(' '), c.size()));
        if (!c.empty()) r.emplace_back(c);
        at = end + 1;
    }
    return r;
}

} // namespace

TEST(LibraryClasses, AUserClassHasItsLibraryAncestorsProperties) {
    ToolsAPI::TDesignComponent form;
    form.ClassName = "TMainForm";
    form.Ancestors = {"TForm",    "TCustomForm", "TScrollingWinControl", "TWinControl",
                      "TControl", "TComponent",  "TPersistent",          "TObject"};
    ASSERT_NE(FindPublishedProperty(form, "Position"), nullptr);
    EXPECT_EQ(PublishedProperties(form).size(), LibraryClassProperties("TForm").size());
    // Only what the unit declares: the library's class hierarchy goes on from there.
    ToolsAPI::TDesignComponent button;
    button.ClassName = "TColourButton";
    button.Ancestors = {"TButton"};
    EXPECT_NE(FindPublishedProperty(button, "ModalResult"), nullptr);
    EXPECT_NE(FindPublishedProperty(button, "Tag"), nullptr);
    // Nothing known: nothing published.
    ToolsAPI::TDesignComponent stranger;
    stranger.ClassName = "TStranger";
    EXPECT_TRUE(PublishedProperties(stranger).empty());
    EXPECT_EQ(FindPublishedProperty(stranger, "Name"), nullptr);
    EXPECT_TRUE(LibraryClassProperties("TStranger").empty());
    // A library class that publishes nothing new has its ancestors' properties.
    EXPECT_EQ(LibraryClassOwnProperties("TCustomPanel"), nullptr);
    EXPECT_NE(Find("TCustomPanel", "Hint"), nullptr);
    EXPECT_EQ(Find("TCustomPanel", "BevelOuter"), nullptr);
}

TEST(LibraryClasses, AValueFitsWhenItIsOfThePropertysKindAndAmongItsValues) {
    auto fits = [](const TCase& c) {
        ToolsAPI::TDesignProperty value = ParseDesignProperty(c.name, c.text);
        return FitLibraryValue(*Find(c.cls, c.name), value);
    };
    // A colour is an integer too; a reference takes any component's name.
    for (const TCase& c : Cases("TButton.Enabled=False; TPanel.Align=alClient; TPanel.Color=clRed;"
                                "TPanel.Color=255; TButton.Caption='OK'; TButton.Anchors=[akLeft];"
                                "TButton.OnClick=OkButtonClick; TForm.Menu=AnyMenu"))
        EXPECT_TRUE(fits(c)) << c.name << " = " << c.text;
    for (const TCase& c : Cases("TButton.Enabled=Maybe; TButton.Enabled=1; TPanel.Align=2; "
                                "TPanel.Align=alSideways; TPanel.Align='alClient'; "
                                "TButton.Caption=OK; TButton.Font=x"))
        EXPECT_FALSE(fits(c)) << c.name << " = " << c.text;
    // Another letter case is taken, with the library's spelling.
    ToolsAPI::TDesignProperty lower = ParseDesignProperty("ScrollBars", "ssboth");
    ASSERT_TRUE(FitLibraryValue(*Find("TMemo", "ScrollBars"), lower));
    EXPECT_EQ(lower.Str, "ssBoth");
    EXPECT_EQ(lower.Text, "ssBoth");
    EXPECT_EQ(PropertyRawValue(lower), ParseDesignProperty("ScrollBars", "ssBoth").Raw);
}

TEST(LibraryClasses, DefaultsReadAsStoredPropertiesOfTheirKind) {
    auto shown = [](const char* cls, const char* name) {
        return DefaultDesignProperty(*Find(cls, name));
    };
    EXPECT_EQ(shown("TButton", "Enabled").Kind, ToolsAPI::TDesignValueKind::Boolean);
    EXPECT_EQ(shown("TButton", "Enabled").Int, 1);
    EXPECT_EQ(shown("TButton", "TabOrder").Int, -1);
    EXPECT_EQ(shown("TButton", "Cursor").Str, "crDefault");
    EXPECT_EQ(shown("TButton", "Anchors").Text, "[akLeft, akTop]");
    EXPECT_EQ(shown("TButton", "Font").Kind, ToolsAPI::TDesignValueKind::Null);
    // Each default that a form file can hold parses to the same value.
    for (const char* cls : {"TForm", "TButton", "TPanel", "TEdit", "TMenuItem", "TImageList"})
        for (const TLibraryProperty& p : LibraryClassProperties(cls)) {
            if (p.Kind == TLibraryPropertyKind::Class || p.Default.empty()) continue;
            ToolsAPI::TDesignProperty parsed = ParseDesignProperty(p.Name, p.Default);
            ToolsAPI::TDesignProperty made = DefaultDesignProperty(p);
            EXPECT_EQ(made.Kind, parsed.Kind) << cls << "." << p.Name;
            EXPECT_EQ(made.Text, parsed.Text) << cls << "." << p.Name;
            EXPECT_EQ(made.Int, parsed.Int) << cls << "." << p.Name;
            EXPECT_EQ(made.Str, parsed.Str) << cls << "." << p.Name;
            EXPECT_TRUE(FitLibraryValue(p, parsed)) << cls << "." << p.Name;
        }
}

// ---------------------------------------------------------------------------------------------
// The seam

namespace {

class PublishedPropertiesTest : public ::testing::Test {
protected:
    void SetUp() override {
        model = TIDEModel::Create();
        module = model->OpenModuleFile(copy.File("Main.pas"), TOpenMode::Hidden);
        form = _di_IOTAFormEditor(module->FormEditor());
    }
    void TearDown() override {
        form = nullptr;
        module = nullptr;
        model->CloseAll();
        model = nullptr;
    }
    std::vector<std::string> Names(const _di_IOTAComponent& c) {
        std::vector<std::string> names;
        for (int i = 0; i < c->GetPropCount(); ++i)
            names.push_back(c->GetPropName(i));
        return names;
    }
    // The value through the seam, "<none>" when it has no such property.
    static std::string Value(const _di_IOTAComponent& c, const char* name) {
        std::string value = "<unset>";
        return c->GetPropValueByName(name, value) ? value : "<none>";
    }
    std::vector<std::string> StoredNames(const char* component) {
        std::vector<std::string> names;
        for (const auto& p : module->FormEditor()->Root()->FindComponent(component)->Properties)
            names.push_back(p.Name);
        return names;
    }

    testfiles::TExampleCopy copy;
    DelphiInterface<TIDEModel> model;
    DelphiInterface<TModelModule> module;
    _di_IOTAFormEditor form;
};

} // namespace

TEST_F(PublishedPropertiesTest, AComponentListsItsStoredThenItsOtherPublishedPropertiesOnce) {
    _di_IOTAComponent ok = form->FindComponent("OkButton");
    std::vector<std::string> names = Names(ok);
    // The stored ones lead, in the form file's order.
    std::vector<std::string> stored = {"Left",    "Top",     "Width",    "Height",
                                       "Caption", "Default", "TabOrder", "OnClick"};
    ASSERT_GT(names.size(), stored.size());
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 8), stored);
    // Then every other published property of TButton, each once.
    std::set<std::string> unique;
    for (const std::string& n : names)
        EXPECT_TRUE(unique.insert(LowerCase(n)).second) << n << " is listed twice";
    EXPECT_EQ(names.size(), LibraryClassProperties("TButton").size());
    EXPECT_EQ(ok->GetPropName(static_cast<int>(names.size())), "");
    EXPECT_EQ(ok->GetPropName(-1), "");
    // Nested stored properties stay as they are stored, beside their object.
    _di_IOTAComponent root = form->GetRootComponent();
    std::vector<std::string> rootNames = Names(root);
    EXPECT_NE(std::find(rootNames.begin(), rootNames.end(), "Font.Name"), rootNames.end());
}

TEST_F(PublishedPropertiesTest, AFormSizeGivenToThePairItDoesNotStoreChangesTheStoredPair) {
    _di_IOTAComponent main = form->GetRootComponent();
    TDesignComponent* root = module->FormEditor()->Root();
    ASSERT_TRUE(main->SetPropByName("ClientWidth", "600"));
    EXPECT_EQ(root->FindProperty("ClientWidth"), nullptr);
    EXPECT_EQ(root->IntProp("Width"), 608);
    EXPECT_EQ(Value(main, "ClientWidth"), "600");
    ASSERT_TRUE(main->SetPropByName("Width", "700"));
    EXPECT_EQ(Value(main, "ClientWidth"), "692");
    ASSERT_TRUE(main->SetPropByName("ClientHeight", "300"));
    EXPECT_EQ(root->IntProp("Height"), 300 + 27 + 19); // the main menu's bar too
    EXPECT_EQ(root->FindProperty("ClientHeight"), nullptr);
    // A panel has no pair: its Width is its own.
    ASSERT_TRUE(form->FindComponent("TopPanel")->SetPropByName("Width", "300"));
    EXPECT_EQ(module->FormEditor()->Root()->FindComponent("TopPanel")->IntProp("Width"), 300);
}

TEST_F(PublishedPropertiesTest, ANewEventOfAFormGoesBeforeWhatTheFormWritesAfterItsProperties) {
    _di_IOTAComponent main = form->GetRootComponent();
    ASSERT_TRUE(main->SetPropByName("OnShow", "FormShow"));
    std::vector<std::string> names;
    for (const auto& p : module->FormEditor()->Root()->Properties)
        names.push_back(p.Name);
    ASSERT_GE(names.size(), 4u);
    EXPECT_EQ(std::vector<std::string>(names.end() - 4, names.end()),
              (std::vector<std::string>{"OnCreate", "OnShow", "PixelsPerInch", "TextHeight"}));
}

TEST_F(PublishedPropertiesTest, APublishedPropertyTakesOnlyValuesOfItsType) {
    _di_IOTAComponent ok = form->FindComponent("OkButton");
    _di_IOTAComponent memo = form->FindComponent("NotesMemo");
    EXPECT_FALSE(ok->SetPropByName("Enabled", "Maybe"));
    EXPECT_FALSE(ok->SetPropByName("Cursor", "crNowhere"));
    EXPECT_FALSE(ok->SetPropByName("Hint", "12"));
    EXPECT_FALSE(ok->SetPropByName("Font", "'Arial'"));
    EXPECT_FALSE(memo->SetPropByName("ScrollBars", "ssDiagonal")); // stored, checked too
    EXPECT_FALSE(form->GetModified());
    EXPECT_EQ(StoredNames("OkButton").size(), 8u);
    EXPECT_TRUE(ok->SetPropByName("Cursor", "crHandPoint"));
    EXPECT_TRUE(ok->SetPropByName("Cursor", "-21")); // a cursor by its number
    EXPECT_TRUE(memo->SetPropByName("ScrollBars", "ssboth"));
    EXPECT_EQ(Value(memo, "ScrollBars"), "ssBoth");
    // A property no class publishes is stored as it comes, as before.
    EXPECT_TRUE(ok->SetPropByName("Extra", "'x'"));
    EXPECT_EQ(StoredNames("OkButton").back(), "Extra");
}
