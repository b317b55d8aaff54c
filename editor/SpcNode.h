// A node of the editor's tree: it owns the data that says which object it stands for and which
// rows it shows, so that the data dies with the node.
#pragma once

#include "editor/SpcEditor.h"

#include <QTreeWidgetItem>

#include <memory>

namespace zelvane {

class TSpcNode : public QTreeWidgetItem {
public:
    TSpcNode(QTreeWidget* tree, const QString& text, rtl::TPersistent* instance,
             bool withData = true)
        : QTreeWidgetItem(tree, QStringList{text}) {
        if (withData) Dscr = std::make_unique<TInstDscr>(TInstDscr{instance, {}});
    }
    TSpcNode(QTreeWidgetItem* parent, const QString& text, rtl::TPersistent* instance,
             bool withData = true)
        : QTreeWidgetItem(parent, QStringList{text}) {
        if (withData) Dscr = std::make_unique<TInstDscr>(TInstDscr{instance, {}});
    }

    std::unique_ptr<TInstDscr> Dscr;
};

} // namespace zelvane
