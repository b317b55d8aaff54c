// The designer window of a form module: the form, frame or data module of a form editor, built
// from its designer root, in a top-level window of its own.
//
// The window is the form: its title is the form's caption, its client area has the form's size
// and colour, and each component stands where the form file places it. The controls take no
// input: a click selects the component under the mouse in the form editor (Shift adds to the
// selection), and the selection is drawn as grab handles. The window follows its editor through
// a form notifier: a change of the form rebuilds it, a rename renames its widget, and the
// closing of the module closes it, as closing the window closes the module. Bringing the window
// to the front tells the form notifiers FormActivated.
//
// Like the designer windows of the platform's IDE, the window can be borrowed: reparented into
// another widget and given back, where it stands again as it stood.
#pragma once

// The meta-object compiler needs none of the runtime, whose C++20 headers it cannot read.
#ifndef Q_MOC_RUN
#include "workbench/model/Model.h"
#endif

#include <QHash>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QMenuBar;

namespace workbench::designer {

class TSelectionOverlay;

class TDesignerWindow : public QWidget {
    Q_OBJECT
public:
    // The tree of a form class of the project, for the frames that a form places inline: their
    // own components come from the frame's form file. Empty when the class is not known.
    using TAncestorLookup =
        std::function<const ToolsAPI::TDesignComponent*(const std::string& className)>;

    explicit TDesignerWindow(TFormEditor* editor, TAncestorLookup lookup = {},
                             QWidget* parent = nullptr);
    ~TDesignerWindow() override;

    TFormEditor* Editor() const { return editor_.get(); }
    ToolsAPI::TDesignComponent* Root() const;
    // The client area of the form, where its controls stand.
    QWidget* Surface() const { return surface_; }
    QMenuBar* FormMenu() const { return menu_; }
    // The widget that shows a component of the form; nullptr for one that has none (a menu
    // item, an action).
    QWidget* WidgetOf(const ToolsAPI::TDesignComponent* component) const;
    // The component a widget of this window shows: the nearest one up its parents; the root for
    // the form's own area.
    ToolsAPI::TDesignComponent* ComponentOf(const QWidget* widget) const;
    // The component under a point of the window, as a click there would select it.
    ToolsAPI::TDesignComponent* ComponentAt(const QPoint& windowPos) const;
    // The rectangles, in window coordinates, that the selection marks are drawn around.
    QList<QRect> SelectionRects() const;

    // Builds the window anew from the designer root.
    void Rebuild();
    int BuildCount() const { return buildCount_; }

    // Brings the window up as the form in front.
    void ShowForm();

    // Borrowing: the window is hung into host at its top left corner and shown there; GiveBack
    // makes it a top-level window again, at the place and with the visibility it had.
    void Borrow(QWidget* host);
    void GiveBack();
    bool IsBorrowed() const { return borrowed_; }

signals:
    // A click selected a component.
    void ComponentClicked(ToolsAPI::TDesignComponent* component);
    // The window came to the front.
    void FormActivated(workbench::TFormEditor* editor);
    // The module closed; the window deletes itself after this.
    void EditorClosed(workbench::TFormEditor* editor);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    // Closing the window closes its module, as closing a form does in the IDE: the unit goes
    // with it, and a modified module asks first. A module that stays open keeps the window.
    void closeEvent(QCloseEvent* event) override;

private:
    class TNotifier;
    friend class TNotifier;

    void Build();
    void BuildChildren(const ToolsAPI::TDesignComponent& shown, QWidget* parent, int depth);
    QWidget* BuildOne(const ToolsAPI::TDesignComponent& shown, QWidget* parent, int depth);
    ToolsAPI::TDesignComponent* RealOf(const ToolsAPI::TDesignComponent* shown) const;
    // A tree in which an inline frame's components from its class stand under what the form
    // changes of them.
    std::unique_ptr<ToolsAPI::TDesignComponent> Merge(const ToolsAPI::TDesignComponent* own,
                                                      const ToolsAPI::TDesignComponent* ancestor,
                                                      ToolsAPI::TDesignComponent* fallback,
                                                      int depth);
    void Register(QWidget* widget, const ToolsAPI::TDesignComponent& shown);
    void ClearWidgets();
    void Renamed(const ToolsAPI::TDesignComponent* component);
    void Closed();
    void UpdateSelection();
    // Moves and stretches the children of a container that has grown by dx, dy, as their Align
    // and Anchors tell.
    void Stretch(QWidget* container, int dx, int dy, int depth);

    DelphiInterface<TFormEditor> editor_;
    TAncestorLookup lookup_;
    DelphiInterface<TNotifier> notifier_;
    int notifierIndex_ = -1;
    int selectionListener_ = -1;

    QWidget* surface_ = nullptr;
    QMenuBar* menu_ = nullptr;
    TSelectionOverlay* overlay_ = nullptr;
    QHash<const QWidget*, ToolsAPI::TDesignComponent*> components_;
    std::map<const ToolsAPI::TDesignComponent*, QWidget*> widgets_;
    // The merged trees of inline frames, and the real component of each of their nodes.
    std::vector<std::unique_ptr<ToolsAPI::TDesignComponent>> merged_;
    std::map<const ToolsAPI::TDesignComponent*, ToolsAPI::TDesignComponent*> real_;
    int buildCount_ = 0;

    bool borrowed_ = false;
    QPoint savedPos_;
    bool savedVisible_ = false;
    Qt::WindowFlags savedFlags_;
};

} // namespace workbench::designer
