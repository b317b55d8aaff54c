#include "workbench/designer/FormDesigners.h"

#include "workbench/model/Files.h"

namespace workbench::designer {

using ToolsAPI::TDesignComponent;

void CompleteLibraryAncestry(TDesignComponent* root) {
    std::vector<TDesignComponent*> all{root};
    for (TDesignComponent* c : root->AllComponents())
        all.push_back(c);
    for (TDesignComponent* c : all) {
        if (!c->Ancestors.empty()) continue;
        std::string cls = c->ClassName;
        for (int depth = 0; depth < 64; ++depth) {
            std::string parent = LibraryClassParent(cls);
            if (parent.empty()) break;
            c->Ancestors.push_back(parent);
            cls = parent;
        }
    }
}

TFormDesigners::TFormDesigners(TIDEModel* model, QObject* parent)
    : QObject(parent), model_(model) {}

TFormDesigners::~TFormDesigners() {
    for (auto& w : windows_)
        delete w.data();
}

TDesignerWindow* TFormDesigners::Window(const TFormEditor* editor) const {
    for (const auto& w : windows_)
        if (w && w->Editor() == editor) return w.data();
    return nullptr;
}

std::vector<TDesignerWindow*> TFormDesigners::Windows() const {
    std::vector<TDesignerWindow*> result;
    for (const auto& w : windows_)
        if (w) result.push_back(w.data());
    return result;
}

TDesignerWindow* TFormDesigners::Open(TFormEditor* editor) {
    if (!editor || !editor->Root()) return nullptr;
    if (TDesignerWindow* w = Window(editor)) return w;
    auto* w =
        new TDesignerWindow(editor, [this](const std::string& cls) { return FindFormClass(cls); });
    windows_.emplace_back(w);
    connect(w, &TDesignerWindow::FormActivated, this, &TFormDesigners::Follow);
    connect(w, &TDesignerWindow::ComponentClicked, this, [this, w] { Follow(w->Editor()); });
    connect(w, &TDesignerWindow::EditorClosed, this, [this, w](TFormEditor* e) {
        // The window deletes itself later; it is no longer one of the form windows now.
        std::erase_if(windows_, [w](const QPointer<TDesignerWindow>& p) { return p == w; });
        if (inspector_ && inspector_->FormEditor() == e) inspector_->SetFormEditor(nullptr);
    });
    emit WindowOpened(w);
    return w;
}

void TFormDesigners::Sync() {
    windows_.erase(std::remove_if(windows_.begin(), windows_.end(),
                                  [](const QPointer<TDesignerWindow>& w) { return w.isNull(); }),
                   windows_.end());
    if (!model_) return;
    for (int i = 0; i < model_->GetModuleCount(); ++i) {
        auto* module = dynamic_cast<TModelModule*>(model_->GetModule(i).get());
        if (TFormEditor* editor = module ? module->FormEditor() : nullptr) Open(editor);
    }
}

void TFormDesigners::SetInspector(TObjectInspector* inspector) {
    inspector_ = inspector;
}

void TFormDesigners::Follow(TFormEditor* editor) {
    if (inspector_) inspector_->SetFormEditor(editor);
}

const TDesignComponent* TFormDesigners::FindFormClass(const std::string& className) {
    if (!model_ || className.empty()) return nullptr;
    for (int i = 0; i < model_->GetModuleCount(); ++i) {
        auto* module = dynamic_cast<TModelModule*>(model_->GetModule(i).get());
        TFormEditor* editor = module ? module->FormEditor() : nullptr;
        if (editor && editor->Root() && SameText(editor->Root()->ClassName, className))
            return editor->Root();
    }
    for (TProjectModule* project : model_->Projects())
        for (int i = 0; i < project->GetModuleCount(); ++i) {
            std::string form = FindCompanionFile(project->GetModule(i)->GetFileName(), ".dfm");
            if (form.empty()) continue;
            auto it = files_.find(form);
            if (it == files_.end()) {
                TFormFile file;
                try {
                    file = LoadFormFile(form);
                    CompleteLibraryAncestry(file.Root.get());
                } catch (const rtl::Exception&) {
                    // A damaged form file declares nothing; the frame shows without its parts.
                }
                it = files_.emplace(form, std::move(file)).first;
            }
            if (it->second.Root && SameText(it->second.Root->ClassName, className))
                return it->second.Root.get();
        }
    return nullptr;
}

} // namespace workbench::designer
