// The settings editor on Qt's offscreen platform: opened on a settings tree larger than the
// add-in's (three collections of 20 items, a nested object, 40 rows in all on the root path),
// from ShowTree to the first node's rows shown; moving between two nodes of different classes
// with 50 properties each, so that every move makes all rows anew; and a collection of 10 000
// items built into the tree.
#include "editor/SpcEditor.h"
#include "editor/SpcForm.h"
#include "persistence/SpcObjects.h"
#include "specification/SpcMng.h"
#include "toolsapi/QtWindowSystem.h"

#include <QApplication>
#include <QTreeWidget>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using namespace rtl;
using namespace zelvane;

#define FIFTY(X)                                                                                   \
    X(0) X(1) X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13) X(14) X(15) X(16)   \
        X(17) X(18) X(19) X(20) X(21) X(22) X(23) X(24) X(25) X(26) X(27) X(28) X(29) X(30)       \
            X(31) X(32) X(33) X(34) X(35) X(36) X(37) X(38) X(39) X(40) X(41) X(42) X(43) X(44)   \
                X(45) X(46) X(47) X(48) X(49)
#define FIELD(n) int32_t P##n = n;

// Two classes of 50 properties: integers, and strings.
class TFiftyInts : public TSpcObject {
    RTL_CLASS(TFiftyInts, TSpcObject)
public:
    FIFTY(FIELD)
};
#undef FIELD
#define FIELD(n) std::string P##n = "value";
class TFiftyStrings : public TSpcObject {
    RTL_CLASS(TFiftyStrings, TSpcObject)
public:
    FIFTY(FIELD)
};
#undef FIELD

class TBenchItem : public TSpcItem {
    RTL_CLASS(TBenchItem, TSpcItem)
public:
    explicit TBenchItem(TCollection* c = nullptr) : TSpcItem(c) {}
    std::string Caption = "item";
    int32_t Width = 10;
    bool Visible = true;
};

class TBenchItems : public TSpcCollection {
    RTL_CLASS(TBenchItems, TSpcCollection)
public:
    using TConstructorArg = TPersistent;
    explicit TBenchItems(TPersistent* owner = nullptr)
        : TSpcCollection(owner, TBenchItem::StaticClass()) {}
};

class TBenchRoot : public TSpcObject {
    RTL_CLASS(TBenchRoot, TSpcObject)
public:
    TBenchRoot()
        : ints_(std::make_unique<TFiftyInts>()), strings_(std::make_unique<TFiftyStrings>()) {
        for (auto& c : lists_) c = std::make_unique<TBenchItems>(this);
    }
    std::string Title = "root";
    TFiftyInts* GetInts() const { return ints_.get(); }
    TFiftyStrings* GetStrings() const { return strings_.get(); }
    TBenchItems* GetA() const { return lists_[0].get(); }
    TBenchItems* GetB() const { return lists_[1].get(); }
    TBenchItems* GetC() const { return lists_[2].get(); }
    void SetA(TBenchItems* v) { lists_[0]->Assign(v); }
    void SetB(TBenchItems* v) { lists_[1]->Assign(v); }
    void SetC(TBenchItems* v) { lists_[2]->Assign(v); }
    void SetInts(TFiftyInts*) {}
    void SetStrings(TFiftyStrings*) {}
    void Fill(int items) {
        for (auto& c : lists_)
            for (int i = 0; i < items; ++i) c->Add();
    }

private:
    std::unique_ptr<TFiftyInts> ints_;
    std::unique_ptr<TFiftyStrings> strings_;
    std::unique_ptr<TBenchItems> lists_[3];
};

#define PROP(n) Property("P" #n, &TFiftyInts::P##n);
RTL_BEGIN_CLASS(TFiftyInts)
FIFTY(PROP)
RTL_END_CLASS
#undef PROP
#define PROP(n) Property("P" #n, &TFiftyStrings::P##n);
RTL_BEGIN_CLASS(TFiftyStrings)
FIFTY(PROP)
RTL_END_CLASS
#undef PROP

RTL_BEGIN_CLASS(TBenchItem)
Property("Caption", &TBenchItem::Caption);
Property("Width", &TBenchItem::Width);
Property("Visible", &TBenchItem::Visible);
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TBenchItems)
RTL_BEGIN_CLASS(TBenchRoot)
Property("Title", &TBenchRoot::Title);
Property("Ints", &TBenchRoot::GetInts, &TBenchRoot::SetInts);
Property("Strings", &TBenchRoot::GetStrings, &TBenchRoot::SetStrings);
Property("A", &TBenchRoot::GetA, &TBenchRoot::SetA);
Property("B", &TBenchRoot::GetB, &TBenchRoot::SetB);
Property("C", &TBenchRoot::GetC, &TBenchRoot::SetC);
RTL_END_CLASS

class TBenchEditor : public TSpcEditor {
public:
    using TSpcEditor::BuildTree;
};

// An editor shown without a modal loop over the root, with the first node selected.
std::unique_ptr<TBenchEditor> ShowEditor(TBenchRoot*& root) {
    auto editor = std::make_unique<TBenchEditor>();
    editor->FormOptions.Exclude(foModalShowing);
    editor->IniFileName = "/dev/null";
    editor->ShowTree(reinterpret_cast<TPersistent**>(&root));
    while (!editor->TreeView()->currentItem()) QApplication::processEvents();
    return editor;
}

void CloseEditor(std::unique_ptr<TBenchEditor>& editor) {
    editor->UndoChanges();
    editor->Form()->close();
    QApplication::processEvents();
    editor.reset();
}

void BM_OpenOnSettingsTree(benchmark::State& state) {
    auto* root = new TBenchRoot;
    root->Fill(20);
    for (auto _ : state) {
        auto editor = ShowEditor(root);
        state.PauseTiming();
        CloseEditor(editor);
        state.ResumeTiming();
    }
    delete root;
}
BENCHMARK(BM_OpenOnSettingsTree)->Unit(benchmark::kMillisecond);

void BM_MoveBetweenNodesOf50Properties(benchmark::State& state) {
    auto* root = new TBenchRoot;
    auto editor = ShowEditor(root);
    QTreeWidget* tree = editor->TreeView();
    QTreeWidgetItem* nodes[2] = {tree->topLevelItem(0)->child(0), tree->topLevelItem(0)->child(1)};
    int i = 0;
    for (auto _ : state) {
        tree->setCurrentItem(nodes[i++ % 2]);
        QApplication::processEvents();
    }
    state.counters["rows"] = double(editor->Controls().Count());
    CloseEditor(editor);
    delete root;
}
BENCHMARK(BM_MoveBetweenNodesOf50Properties)->Unit(benchmark::kMillisecond);

void BM_CollectionOf10000Items(benchmark::State& state) {
    auto* root = new TBenchRoot;
    for (int i = 0; i < 10000; ++i) root->GetA()->Add();
    auto editor = ShowEditor(root);
    for (auto _ : state) {
        editor->BuildTree();
        QApplication::processEvents();
    }
    state.counters["nodes"] = double(editor->TreeView()->topLevelItem(0)->child(2)->childCount());
    CloseEditor(editor);
    delete root;
}
BENCHMARK(BM_CollectionOf10000Items)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    SetWindowSystem(ToolsAPI::QtWindowSystem());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
