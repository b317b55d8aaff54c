// The seam's interface machinery: ids, counting, queries by facet, identity, notifier base,
// and the host's two globals.
#include "toolsapi/ToolsAPI.h"

#include <gtest/gtest.h>

using namespace ToolsAPI;

namespace {

int liveObjects = 0;

// An object with two unrelated facets and a shared parent (IOTAEditor of both would not do:
// the seam keeps form and source editors apart, so a test object takes view and actions).
class TTwoFacets : public TInterfacedObject,
                   public virtual IOTAEditActions,
                   public virtual INTAEditWindow {
public:
    TTwoFacets() { ++liveObjects; }
    ~TTwoFacets() override { --liveObjects; }
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAEditActions, INTAEditWindow>(this, iid, obj);
    }
    void ClosePage() override { ++closed; }
    QWidget* GetForm() override { return nullptr; }
    int closed = 0;
};

class TWizard : public TNotifierObject, public virtual IOTAMenuWizard {
public:
    TWizard() { ++liveObjects; }
    ~TWizard() override { --liveObjects; }
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAMenuWizard>(this, iid, obj);
    }
    std::string GetIDString() override { return "Test.Wizard"; }
    std::string GetName() override { return "Test Wizard"; }
    TWizardState GetState() override { return WizardState(wsEnabled); }
    void Execute() override {}
    std::string GetMenuText() override { return "Test ..."; }
};

} // namespace

TEST(InterfaceIds, ParsedAtCompileTimeAsTheRuntimeParsesThemAndUnique) {
    constexpr TGUID g = Guid("{F17A7BCD-E07D-11D1-AB0B-00C04FB16FB3}");
    EXPECT_EQ(g, rtl::TGUID::FromString("{F17A7BCD-E07D-11D1-AB0B-00C04FB16FB3}"));
    EXPECT_EQ(g.D1, 0xF17A7BCDu);
    EXPECT_EQ(g.D4[7], 0xB3);
    // Every interface has its own id, and the IDE's published ones are kept.
    std::vector<TGUID> ids = {IBorlandIDEServices::IID, IOTANotifier::IID,
                              IOTAWizard::IID,          IOTAMenuWizard::IID,
                              IOTAIDENotifier::IID,     IOTAFormNotifier::IID,
                              IOTAEditor::IID,          IOTAEditBuffer::IID,
                              IOTABufferOptions::IID,   IOTAEditView::IID,
                              IOTAEditBlock::IID,       IOTAEditPosition::IID,
                              IOTAEditActions::IID,     INTAEditWindow::IID,
                              IDesigner::IID,           IOTAComponent::IID,
                              IOTAModule::IID,          IOTAModuleInfo::IID,
                              IOTAKeyboardBinding::IID, IOTAKeyBindingServices::IID,
                              IOTAKeyContext::IID,      IID_IInterface};
    const std::pair<TGUID, const char*> published[] = {
        {IOTAModuleServices::IID, "{F17A7BCD-E07D-11D1-AB0B-00C04FB16FB3}"},
        {IOTAEditorServices::IID, "{C2812BA7-C48D-11D2-9AE8-00A02457621F}"},
        {IOTAKeyboardServices::IID, "{F8CAF8D5-D263-11D2-ABD8-00C04FB16FB3}"},
        {IOTAServices::IID, "{577ECE00-59EE-4F21-8190-9FD8A45FE550}"},
        {IOTAActionServices::IID, "{F17A7BC9-E07D-11D1-AB0B-00C04FB16FB3}"},
        {INTAServices::IID, "{C17B3DF1-DFE5-11D2-A8C7-00C04FA32F53}"},
        {IOTAProjectGroup::IID, "{F17A7BCB-E07D-11D1-AB0B-00C04FB16FB3}"},
        {IOTAProject::IID, "{06C88136-F367-4D47-B8B4-CCACB3D7439A}"},
        {IOTAProjectResource::IID, "{26EB0E52-F97B-11D1-AB27-00C04FB16FB3}"},
        {IOTASourceEditor::IID, "{F17A7BD1-E07D-11D1-AB0B-00C04FB16FB3}"},
        {IOTAFormEditor::IID, "{F17A7BD2-E07D-11D1-AB0B-00C04FB16FB3}"},
        {INTAFormEditor::IID, "{56931EB9-329A-D411-87C6-9B2730412200}"},
    };
    for (const auto& [id, text] : published) {
        EXPECT_EQ(id.ToString(), text);
        ids.push_back(id);
    }
    for (size_t i = 0; i < ids.size(); ++i)
        for (size_t k = i + 1; k < ids.size(); ++k)
            EXPECT_FALSE(ids[i] == ids[k]) << ids[i].ToString() << " is used twice";
}

TEST(BlockTypes, HaveTheIDEsOrdinals) {
    EXPECT_EQ((std::vector<int>{btInclusive, btLine, btColumn, btNonInclusive, btUnknown,
                                ofnFileOpened, ofnFileClosing, btPartial, krHandled}),
              (std::vector<int>{0, 1, 2, 3, 4, 1, 2, 1, 1}));
}

TEST(Queries, AnObjectAnswersEachOfItsFacetsAndParentsAndNoOtherAndFacetsAreOneIdentity) {
    liveObjects = 0;
    {
        _di_IOTAEditActions actions(MakeInterfaced<TTwoFacets>());
        _di_INTAEditWindow window;
        ASSERT_TRUE(Supports(actions, window));
        EXPECT_EQ(window->GetForm(), nullptr);
        _di_IOTAEditView view;
        EXPECT_FALSE(Supports(actions, view) || view);
        // The query's reference is counted and given back.
        auto* obj = dynamic_cast<TTwoFacets*>(actions.get());
        EXPECT_EQ(obj->RefCount(), 2);
        window = nullptr;
        EXPECT_EQ(obj->RefCount(), 1);
        EXPECT_FALSE(Query<IOTAEditBlock>(actions) ||
                     Supports<IOTAEditBlock>(_di_IOTAEditActions()));
    }
    EXPECT_EQ(liveObjects, 0);
    // An interface answers for its parent interfaces.
    {
        _di_IOTAMenuWizard wizard(MakeInterfaced<TWizard>());
        _di_IOTAWizard plain;
        _di_IOTANotifier notifier;
        EXPECT_TRUE(Supports(wizard, plain) && Supports(wizard, notifier));
        EXPECT_EQ(plain->GetIDString(), "Test.Wizard");
        notifier->AfterSave(); // the base's notifications do nothing and are there to call
        notifier->Modified();
        EXPECT_FALSE(Supports<IOTAIDENotifier>(wizard));
    }
    EXPECT_EQ(liveObjects, 0);
    // Two facets of one object compare equal, of two objects not.
    _di_IOTAEditActions a(MakeInterfaced<TTwoFacets>());
    _di_INTAEditWindow aWindow = Query<INTAEditWindow>(a);
    _di_IOTAEditActions b(MakeInterfaced<TTwoFacets>());
    EXPECT_EQ((std::vector<bool>{a == aWindow, b == aWindow, a == b,
                                 _di_IOTAEditActions() == nullptr, a == nullptr}),
              (std::vector<bool>{true, false, false, true, false}));
}

TEST(HostGlobals, WizardsGoToTheHostOnlyWhenOneTakesThemAndServicesNeedOne) {
    liveObjects = 0;
    {
        _di_IOTAWizard wizard(MakeInterfaced<TWizard>());
        SetRegisterWizardProc(nullptr);
        EXPECT_FALSE(RegisterPackageWizard(wizard));
        std::vector<_di_IOTAWizard> kept;
        SetRegisterWizardProc([&](const _di_IOTAWizard& w) {
            kept.push_back(w);
            return true;
        });
        EXPECT_TRUE(RegisterPackageWizard(wizard));
        EXPECT_FALSE(RegisterPackageWizard(nullptr));
        ASSERT_EQ(kept.size(), 1u);
        EXPECT_EQ(kept[0]->GetName(), "Test Wizard");
        wizard = nullptr;
        EXPECT_EQ(liveObjects, 1); // the host holds it
        kept.clear();
        SetRegisterWizardProc(nullptr);
    }
    EXPECT_EQ(liveObjects, 0);
    // Services are empty without a host.
    BorlandIDEServices = nullptr;
    EXPECT_FALSE(IDEService<IOTAModuleServices>());
    EXPECT_FALSE(IDEService<INTAServices>());
}
