// The editor's tests: an editor shown without a modal loop, its rows found by property name, and
// the form closed without questions at the end.
#pragma once

#include "editor/SpcEditor.h"
#include "editor/SpcForm.h"
#include "tests/workbench_gui/Fixture.h"

#include <QTreeWidget>

#include <memory>

namespace edtest {

using namespace zelvane;
using wbtest::RunLoop;
using wbtest::WaitFor;
using wbtest::WhenModal;

template <class E> class EditorFixture : public ::testing::Test {
protected:
    void SetUp() override {
        editor = std::make_unique<E>();
        editor->FormOptions.Exclude(foModalShowing);
        editor->IniFileName = "/dev/null";
    }
    void TearDown() override {
        for (auto& w : wbtest::ModalWatches()) delete w.data();
        wbtest::ModalWatches().clear();
        if (TSpcForm* form = editor->Form()) {
            editor->UndoChanges();
            form->close();
        }
        RunLoop(1);
        editor.reset();
    }
    // Waits for the first node to be selected, as the form does once it has shown.
    void WaitShown() {
        ASSERT_TRUE(WaitFor([&] { return Tree()->currentItem() != nullptr; }));
    }
    QTreeWidget* Tree() const { return editor->TreeView(); }
    TControlInfo* Row(const std::string& prop) const {
        for (const auto& info : editor->Controls())
            if (info->PropInfo->Name == prop) return info.get();
        return nullptr;
    }
    template <class W> W* Control(const std::string& prop) const {
        TControlInfo* info = Row(prop);
        return info ? qobject_cast<W*>(info->Control.data()) : nullptr;
    }

    std::unique_ptr<E> editor;
};

} // namespace edtest
