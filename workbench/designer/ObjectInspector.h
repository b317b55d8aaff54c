// The object inspector: the form "PropertyInspector", showing the properties of the component
// selected in a form editor, and editing the simple ones.
//
// The inspector follows one form editor at a time (the host hands it the editor of the designer
// window in front). It lists the components of that form in a combo box at its top, and the
// selected component's properties in a grid below: name and value, nested properties
// ("Font.Name") under their object ("Font"), events on a page of their own. The grid holds the
// properties the form file stores and, at their defaults, the others the component's class
// publishes (workbench/model/LibraryClasses.h); editing one of those stores it. Values of the
// simple kinds (integers, strings, identifiers, Booleans, floats) and the component's name can
// be edited in the grid; an edit goes through the form editor's component interface, so the
// module becomes modified and the designer window follows. A value that the property can't take
// is refused and reported in the inspector's status line.
//
// The pop-up menu of the grid is the inspector's PopupMenu(); others may add items to it, and
// hook its aboutToShow as the platform's OnPopup.
#pragma once

// The meta-object compiler needs none of the runtime, whose C++20 headers it cannot read.
#ifndef Q_MOC_RUN
#include "workbench/model/Model.h"
#endif

#include <QWidget>

class QComboBox;
class QLabel;
class QMenu;
class QTabBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace workbench::designer {

class TObjectInspector : public QWidget {
    Q_OBJECT
public:
    explicit TObjectInspector(QWidget* parent = nullptr);
    ~TObjectInspector() override;

    // The form editor whose selection the inspector shows; nullptr shows nothing.
    void SetFormEditor(TFormEditor* editor);
    TFormEditor* FormEditor() const { return editor_.get(); }
    // The component shown: the first selected one, else the form's root.
    ToolsAPI::TDesignComponent* Component() const { return component_; }

    QMenu* PopupMenu() const { return popup_; }
    QTreeWidget* Grid() const { return grid_; }
    QComboBox* ComponentList() const { return components_; }
    QTabBar* Pages() const { return pages_; }

    // The property names of the page shown, in the order of the grid, nested ones as "Font.Name".
    QStringList PropertyNames() const;
    // The value shown for a property, as the grid shows it; a null string for none.
    QString ValueText(const QString& name) const;
    // Whether the grid lets the property be edited.
    bool IsEditable(const QString& name) const;
    // Gives the property a value as typing it into its row does. False when the value is
    // refused; ErrorText() then says why.
    bool EditValue(const QString& name, const QString& text);
    QString ErrorText() const;

    // Shows the current state of the component again.
    void Refresh();

signals:
    void PropertyEdited(const QString& name);

private:
    class TNotifier;
    friend class TNotifier;

    void Detach();
    void ShowSelection();
    void Fill();
    void FillComponents();
    QTreeWidgetItem* FindItem(const QString& name) const;
    void ItemChanged(QTreeWidgetItem* item, int column);
    void Report(const QString& error);

    DelphiInterface<TFormEditor> editor_;
    DelphiInterface<TNotifier> notifier_;
    int notifierIndex_ = -1;
    int selectionListener_ = -1;
    ToolsAPI::TDesignComponent* component_ = nullptr;
    bool filling_ = false;

    QComboBox* components_;
    QTabBar* pages_;
    QTreeWidget* grid_;
    QLabel* status_;
    QMenu* popup_;
};

} // namespace workbench::designer
