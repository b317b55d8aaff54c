// The designer windows of a model's open form modules, and the inspector that follows them.
//
// The host calls Sync when modules open or close: each open module with a form gets its designer
// window, and the window of a closed module goes with it. The window brought to the front, or
// clicked in, hands its form editor to the inspector. Frames that a form places inline are
// shown with the components of their own form file, found among the open modules or the units
// of the open projects.
#pragma once

#include "workbench/designer/DesignerWindow.h"
#include "workbench/designer/ObjectInspector.h"

#include <QObject>
#include <QPointer>

#include <map>
#include <string>
#include <vector>

namespace workbench::designer {

class TFormDesigners : public QObject {
    Q_OBJECT
public:
    explicit TFormDesigners(TIDEModel* model, QObject* parent = nullptr);
    ~TFormDesigners() override;

    // Opens a window, hidden, for each open form module that has none.
    void Sync();
    // The window of a form editor, made if there is none yet.
    TDesignerWindow* Open(TFormEditor* editor);
    TDesignerWindow* Window(const TFormEditor* editor) const;
    std::vector<TDesignerWindow*> Windows() const;

    void SetInspector(TObjectInspector* inspector);
    TObjectInspector* Inspector() const { return inspector_; }

    // The tree of the form class of that name: an open module's form, else the form file of a
    // unit of an open project. nullptr when no form declares the class.
    const ToolsAPI::TDesignComponent* FindFormClass(const std::string& className);

signals:
    void WindowOpened(TDesignerWindow* window);

private:
    void Follow(TFormEditor* editor);

    DelphiInterface<TIDEModel> model_;
    std::vector<QPointer<TDesignerWindow>> windows_;
    QPointer<TObjectInspector> inspector_;
    std::map<std::string, TFormFile> files_; // form files read for their classes, by file name
};

// Fills in the ancestors of the components of a tree that the platform's library declares,
// for trees read straight from a form file.
void CompleteLibraryAncestry(ToolsAPI::TDesignComponent* root);

} // namespace workbench::designer
