// The designer and the object inspector over a test project: the project copied into a
// directory of the test's own and opened in a model, the designer windows, and the inspector
// they report to. Open shows a unit's form in both.
#pragma once

#include "tests/workbench/TestFiles.h"
#include "workbench/designer/FormDesigners.h"

#include <QApplication>
#include <QString>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace designertest {

using namespace workbench;
using namespace workbench::designer;

inline QString U(const char* utf8) {
    return QString::fromUtf8(utf8);
}

class InspectorFixture : public ::testing::Test {
protected:
    InspectorFixture(const std::filesystem::path& projectDir, std::string project)
        : copy(projectDir), project_(std::move(project)) {}
    void SetUp() override {
        model = TIDEModel::Create();
        model->SetQuestion([](const std::string&, const std::string&) { return mrNo; });
        model->OpenProjectFile(copy.File(project_));
        designers = std::make_unique<TFormDesigners>(model.get());
        designers->SetInspector(&inspector);
    }
    void TearDown() override {
        inspector.SetFormEditor(nullptr);
        designers.reset();
        QApplication::processEvents();
        model->CloseAll();
        model = nullptr;
    }
    // The form of the unit ("Main.pas") in its designer window and the inspector; its editor.
    TFormEditor* Open(const std::string& unit) {
        module = model->OpenModuleFile(copy.File(unit), TOpenMode::Show);
        TFormEditor* editor = module->FormEditor();
        window = designers->Open(editor);
        inspector.SetFormEditor(editor);
        return editor;
    }
    // Selects the component of that name, or the form for a name it has none of.
    void Select(TFormEditor* editor, const char* name) {
        ToolsAPI::TDesignComponent* c = editor->Root()->FindComponent(name);
        editor->Select(c ? c : editor->Root(), false);
    }

    testfiles::TFilesCopy copy;
    DelphiInterface<TIDEModel> model;
    DelphiInterface<TModelModule> module;
    std::unique_ptr<TFormDesigners> designers;
    TDesignerWindow* window = nullptr;
    TObjectInspector inspector;

private:
    std::string project_;
};

} // namespace designertest
