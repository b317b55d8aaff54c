// The tree of the edited objects: how objects become nodes and rows, how nodes are named, what
// selecting a node does, and how collections grow, shrink and reorder from the tree.
#include "editor/SpcEditor.h"

#include "editor/SpcForm.h"
#include "editor/SpcNode.h"
#include "foundation/Dialogs.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QTreeWidget>

namespace zelvane {

using namespace rtl;

TInstDscr* TSpcEditor::NodeData(QTreeWidgetItem* node) {
    auto* spcNode = dynamic_cast<TSpcNode*>(node);
    return spcNode ? spcNode->Dscr.get() : nullptr;
}

// ---------------------------------------------------------------------------------------------
// Building

void TSpcEditor::BuildTree() {
    SetInstanceIdent();
    SetCaption();
    sameClass_ = false;
    lastClass_ = nullptr;
    if (isSpcRoot_) MakeSpcClone();
    QTreeWidget* tree = TreeView();
    state_.Include(esTreeBuilding);
    tree->setUpdatesEnabled(false);
    tree->clear();
    if (!isSpcRoot_) {
        std::string name;
        if (instanceIdent_ == ciCollection)
            name = ops_.CollectionPropName(static_cast<TCollection*>(instance_));
        else if (instanceIdent_ == ciComponent)
            name = ops_.ComponentName(static_cast<TComponent*>(instance_));
        if (name.empty()) name = GetClassName(instance_);
        if (instanceIdent_ == ciCollection)
            ProcessCollection(static_cast<TCollection*>(instance_), nullptr, name);
        else
            ProcessItem(instance_, nullptr, name);
    } else {
        std::string cls = GetClassName(spcClone_);
        std::string name = SimpleMode ? cls : FindNodeNameEx(spcClone_, cls, cls);
        ProcessItem(spcClone_, nullptr, name);
    }
    if (FormOptions.Contains(foTreeExpandOnEnter) && tree->topLevelItemCount() > 0)
        tree->topLevelItem(0)->setExpanded(true);
    tree->setUpdatesEnabled(true);
    state_.Exclude(esTreeBuilding);
    defaultSelect_ = CanNodeDefaultSelect(tree);
    QCoreApplication::postEvent(form_, new QEvent(QEvent::Type(WM_SPC_SHOWTOPITEM)));
}

bool TSpcEditor::CanNodeDefaultSelect(QTreeWidget* tree) {
    bool defaultSelect = true;
    if (OnSelectStartNode) OnSelectStartNode(tree, defaultSelect);
    return defaultSelect;
}

TInstDscr* TSpcEditor::NewNodeDscr(QTreeWidgetItem*& node, QTreeWidgetItem* parent,
                                   TPersistent* instance, const std::string& nodeName,
                                   size_t& next) {
    QString text = ToolsAPI::FromBytes(nodeName);
    if (!parent) {
        node = new TSpcNode(TreeView(), text, instance);
    } else if (nodeName == "NestedObject" && ops_.IsWrapperItem(NodeData(parent)->Instance)) {
        // A wrapper's nested object gets no node: its rows join the wrapper's.
        node = parent;
        TInstDscr* dscr = NodeData(parent);
        next = dscr->Props.size();
        return dscr;
    } else {
        node = new TSpcNode(parent, text, instance);
    }
    next = 0;
    return NodeData(node);
}

QTreeWidgetItem* TSpcEditor::ProcessItem(TPersistent* instance, QTreeWidgetItem* parent,
                                         const std::string& nodeName) {
    QTreeWidgetItem* node = nullptr;
    size_t next = 0;
    TInstDscr* dscr = NewNodeDscr(node, parent, instance, nodeName, next);
    TBaseClassIdent ident = GetInstanceID(instance);
    PTypeInfo classInfo = ops_.ClassInfo(instance);
    std::vector<PPropInfo> props;
    if (Options.Contains(eoSortProps))
        props = GetPropList(classInfo, tkAny - tkMethods, true);
    else
        props.assign(GetPropInfos(classInfo).begin(), GetPropInfos(classInfo).end());
    if (props.empty()) return node;

    std::vector<TPropPair> own;
    own.reserve(props.size());
    std::string className = GetClassName(instance);
    for (PPropInfo prop : props) {
        if (!prop) continue;
        bool invisible = strings_[skInvisibleProps]->IndexOf(className + "." + prop->Name) >= 0;
        bool canProcess = CanProcessProperty(instance, prop);
        TTypeKind kind = prop->PropType->Kind;
        bool show = (SimpleMode || !invisible) && (canProcess || kind == tkClass);
        if (kind == tkClass) {
            void* value = nullptr;
            ops_.GetPropAsPtr(instance, prop, value);
            auto* obj = static_cast<TPersistent*>(value);
            if (!obj) continue; // an object property without an object has nothing to show
            ident = GetInstanceID(obj);
            const std::string& propName = prop->Name;
            if (ident == ciCollection) {
                if (canProcess)
                    own.push_back({instance, prop});
                else
                    ProcessCollection(static_cast<TCollection*>(obj), node,
                                      SimpleMode ? propName
                                                 : FindNodeNameEx(obj, className, propName));
            } else if (ident == ciComponent) {
                if (canProcess && !Options.Contains(eoExpandCompProps))
                    own.push_back({instance, prop});
                else
                    ProcessItem(obj, node, SimpleMode ? propName : FindNodeName(obj, propName));
            } else if (!invisible) {
                if (canProcess)
                    own.push_back({instance, prop});
                else
                    ProcessItem(obj, node,
                                SimpleMode ? propName : FindNodeNameEx(obj, className, propName));
            }
        } else if (kind == tkLString && (ident == ciSpcObject || ident == ciSpcItem) &&
                   SameText(prop->Name, "NodeName")) {
            continue; // a node's name is its caption, not a row
        } else if (show) {
            own.push_back({instance, prop});
        }
    }
    // The object's own rows stand before those that a nested object appended meanwhile.
    dscr->Props.insert(dscr->Props.begin() + static_cast<std::ptrdiff_t>(next), own.begin(),
                       own.end());
    return node;
}

void TSpcEditor::ProcessCollection(TCollection* collection, QTreeWidgetItem* parent,
                                   const std::string& nodeName) {
    QTreeWidgetItem* node = ProcessItem(collection, parent, nodeName);
    std::string section = GetClassName(collection);
    int count = ops_.CollectionCount(collection);
    for (int i = 0; i < count; ++i) {
        TCollectionItem* item = ops_.CollectionGetItem(collection, i);
        std::string name = SimpleMode ? Format("%s[%d]", {nodeName, i + 1})
                                      : FindItemNodeName(item, section, nodeName, i + 1);
        ProcessItem(item, node, name);
    }
}

// Adds a node without data beside the node.
QTreeWidgetItem* TSpcEditor::ProcessItemEx(TBaseClassIdent /*ident*/, QTreeWidgetItem* node,
                                           const std::string& nodeName) {
    QString text = ToolsAPI::FromBytes(nodeName);
    if (!node || !node->parent()) return new TSpcNode(TreeView(), text, nullptr, false);
    return new TSpcNode(node->parent(), text, nullptr, false);
}

bool TSpcEditor::CanProcessProperty(TPersistent* instance, PPropInfo propInfo) {
    return ControlKindOf(propInfo, GetInstanceID(instance) == ciComponent) != ckNone;
}

// ---------------------------------------------------------------------------------------------
// Naming

std::string TSpcEditor::GetNodeName(TObject* obj) {
    auto* info = Supports<INodeInfo>(obj);
    return info ? info->GetNodeName() : std::string();
}

std::string TSpcEditor::FindNodeName(TObject* obj, const std::string& def) {
    std::string name = GetNodeName(obj);
    return name.empty() ? def : name;
}

std::string TSpcEditor::FindNodeNameEx(TObject* obj, const std::string& section,
                                       const std::string& def) {
    std::string name = FindNodeName(obj, def);
    auto* info = Supports<INodeInfo>(obj);
    if (!info || info->NeedsTranslate()) name = TranslateEx(section, name, name);
    return name;
}

std::string TSpcEditor::FindItemNodeName(TObject* item, const std::string& section,
                                         const std::string& def, int index) {
    std::string standard = Format("%s[%d]", {def, index});
    std::string name = FindNodeNameEx(item, section, standard);
    if (name != standard) {
        auto* info = Supports<INodeOfItemInfo>(item);
        if (info && info->NeedsIterate()) name = Format("%s[%d]", {name, index});
    }
    return name;
}

void TSpcEditor::SetNodeName(TObject*, const std::string&) {
    throw Exception(SNotSupported);
}

// ---------------------------------------------------------------------------------------------
// Images

void TSpcEditor::PlaceNodeImages(QTreeWidgetItem* node, TBaseClassIdent ident,
                                 TPersistent* instance) {
    int image, selected;
    switch (ident) {
    case ciSpcItem:
    case ciItem:
        image = 12, selected = 13;
        break;
    case ciCollection:
        image = selected = 14;
        break;
    default:
        image = 10, selected = 11;
        break;
    }
    // The choice above is cancelled: the tree shows no images unless a handler places them.
    image = selected = -1;
    (void)image;
    (void)selected;
    DoPlaceNodeImages(node, ident, instance);
}

void TSpcEditor::DoPlaceNodeImages(QTreeWidgetItem* node, TBaseClassIdent ident,
                                   TPersistent* instance) {
    if (!OnPlaceNodeImage) return;
    OnPlaceNodeImage(node, ident, instance, [](QTreeWidgetItem* n, TNodeImageIndex which, int i) {
        if (i == -1 || !n) return;
        // The tree shows one picture per node: the image index and the selected index name it
        // for the two states; the state and overlay indexes are kept for the host.
        n->setData(0, Qt::UserRole + 1 + int(which), i);
        if (which == niiImageIndex) n->setIcon(0, TSpcEditor::ToolImage(i));
    });
}

// ---------------------------------------------------------------------------------------------
// Selection

bool TSpcEditor::SpcTreeChanging(QTreeWidgetItem* /*node*/) {
    if (state_.Contains(esTreeBuilding) || state_.Contains(esNodeDeleting)) return true;
    try {
        GetControlsData();
    } catch (const EAbort&) {
        FocusActiveControl();
        return false;
    } catch (const std::exception& e) {
        ShowError(e.what());
        FocusActiveControl();
        return false;
    }
    return true;
}

void TSpcEditor::FocusActiveControl() {
    if (activeControl_ && activeControl_->isEnabled()) activeControl_->setFocus();
}

void TSpcEditor::SpcTreeChange(QTreeWidgetItem* node) {
    if (state_.Contains(esTreeBuilding) || state_.Contains(esNodeDeleting)) return;
    TInstDscr* dscr = NodeData(node);
    if (!dscr) {
        CreateNodeControls(nullptr);
        return;
    }
    if (showStatusBar_ && form_) {
        std::string text = ToolsAPI::ToBytes(node->text(0));
        if (GetInstanceID(dscr->Instance) == ciComponent)
            text = ops_.ComponentName(static_cast<TComponent*>(dscr->Instance));
        std::string cls = GetClassName(dscr->Instance);
        if (text != cls) text = text.empty() ? cls : text + ": " + cls;
        form_->StatusPanel(1)->setText(ToolsAPI::FromBytes(" " + text));
    }
    CreateNodeControls(dscr);
    if (showStatusBar_ && form_)
        form_->StatusPanel(0)->setText(
            ToolsAPI::FromBytes(" " + Format(SPropertiesCount, {controlList_.Count()})));
}

void TSpcEditor::ShowSelected() {
    if (QTreeWidget* tree = TreeView(); tree && tree->currentItem())
        tree->scrollToItem(tree->currentItem());
}

void TSpcEditor::ShowTopItem() {
    QTreeWidget* tree = TreeView();
    if (!tree || tree->topLevelItemCount() == 0) return;
    QTreeWidgetItem* top = tree->topLevelItem(0);
    tree->scrollToItem(top, QAbstractItemView::PositionAtTop);
    tree->setCurrentItem(top);
    tree->setFocus();
    ShowSelected();
}

// The first selection of a pass, once the form has shown.
void TSpcEditor::ShowTreeTopItem() {
    QPointer<TSpcForm> form = form_;
    while (form && !state_.Contains(esFormShowing))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    if (!form || form != form_) return;
    if (defaultSelect_)
        ShowTopItem();
    else
        ShowSelected();
}

// ---------------------------------------------------------------------------------------------
// Collections from the tree

bool TSpcEditor::CanCollectionChange(TCollection* collection, TCollectionItem* item,
                                     TCollNotification action) {
    bool allow = true;
    if (OnCollectionChanging) OnCollectionChanging(collection, item, action, allow);
    return allow;
}

void TSpcEditor::CollectionChange(TCollection* collection, TCollectionItem* item,
                                  TCollNotification action) {
    if (OnCollectionChange) OnCollectionChange(collection, item, action);
}

void TSpcEditor::AddNode(QTreeWidgetItem* node) {
    TInstDscr* dscr = NodeData(node);
    if (!dscr) return;
    TCollection* collection;
    QTreeWidgetItem* parent;
    switch (GetInstanceID(dscr->Instance)) {
    case ciSpcItem:
    case ciItem:
        collection = ops_.ItemCollection(static_cast<TCollectionItem*>(dscr->Instance));
        parent = node->parent();
        break;
    case ciCollection:
        collection = static_cast<TCollection*>(dscr->Instance);
        parent = node;
        break;
    default:
        return;
    }
    if (!parent || !CanCollectionChange(collection, nullptr, cnAdding)) return;
    TCollectionItem* item = ops_.CollectionAdd(collection);
    std::string name =
        SimpleMode ? ops_.CollectionPropName(collection)
                   : FindItemNodeName(item, GetClassName(collection),
                                      ToolsAPI::ToBytes(parent->text(0)),
                                      ops_.CollectionNextID(collection));
    CollectionChange(collection, item, cnAdding);
    QTreeWidget* tree = TreeView();
    tree->setUpdatesEnabled(false);
    QTreeWidgetItem* added = ProcessItem(item, parent, name);
    parent->setExpanded(true);
    tree->setCurrentItem(added);
    tree->setUpdatesEnabled(true);
    modified_ = true;
    ShowSelected();
}

void TSpcEditor::DeleteNode(QTreeWidgetItem* node) {
    TInstDscr* dscr = NodeData(node);
    if (!dscr) return;
    QTreeWidget* tree = TreeView();
    TBaseClassIdent ident = GetInstanceID(dscr->Instance);
    if (ident == ciSpcItem || ident == ciItem) {
        auto* item = static_cast<TCollectionItem*>(dscr->Instance);
        TCollection* collection = ops_.ItemCollection(item);
        if (!CanCollectionChange(collection, item, cnDeleting) || !QueryDialog(SDeleteElement))
            return;
        tree->setUpdatesEnabled(false);
        // The rows of the item go with it, so that nothing reads them into a freed object.
        ClearPaintAreas();
        lastClass_ = nullptr;
        ops_.CollectionDelete(collection, ops_.ItemGetIndex(item));
        QTreeWidgetItem* parent = node->parent();
        int index = parent->indexOfChild(node);
        state_.Include(esNodeDeleting);
        delete node;
        state_.Exclude(esNodeDeleting);
        if (parent->childCount() == 0) {
            SelectNodeQuietly(parent);
            CreateNodeControls(NodeData(parent));
        } else if (index < parent->childCount()) {
            SelectNodeQuietly(parent->child(index));
            CreateNodeControls(NodeData(parent->child(index)));
        } else {
            tree->setCurrentItem(parent->child(index - 1));
        }
        CollectionChange(collection, nullptr, cnDeleting);
        tree->setUpdatesEnabled(true);
    } else if (ident == ciCollection) {
        auto* collection = static_cast<TCollection*>(dscr->Instance);
        if (!CanCollectionChange(collection, nullptr, cnClearing) ||
            !QueryDialog(SDeleteAllElements))
            return;
        tree->setUpdatesEnabled(false);
        ops_.CollectionClear(collection);
        state_.Include(esNodeDeleting);
        qDeleteAll(node->takeChildren());
        state_.Exclude(esNodeDeleting);
        CollectionChange(collection, nullptr, cnClearing);
        tree->setUpdatesEnabled(true);
    } else {
        return;
    }
    modified_ = true;
    ShowSelected();
}

// Makes the node current without the change handlers: its controls are made by the caller.
void TSpcEditor::SelectNodeQuietly(QTreeWidgetItem* node) {
    state_.Include(esNodeDeleting);
    TreeView()->setCurrentItem(node);
    state_.Exclude(esNodeDeleting);
}

void TSpcEditor::MoveNode(QTreeWidgetItem* node, TNodeMotion motion, int step) {
    TInstDscr* dscr = NodeData(node);
    QTreeWidgetItem* parent = node ? node->parent() : nullptr;
    if (!dscr || !parent) return;
    modified_ = true;
    auto* item = static_cast<TCollectionItem*>(dscr->Instance);
    ops_.ItemSetIndex(item, ops_.ItemGetIndex(item) + step);
    int newIndex = parent->indexOfChild(node) + step;
    QTreeWidget* tree = TreeView();
    state_.Include(esTreeBuilding);
    bool expanded = node->isExpanded();
    parent->takeChild(parent->indexOfChild(node));
    if (motion == nmUp)
        parent->insertChild(newIndex, node);
    else if (newIndex + 1 <= parent->childCount())
        parent->insertChild(newIndex, node);
    else
        parent->addChild(node);
    node->setExpanded(expanded);
    tree->setCurrentItem(node);
    state_.Exclude(esTreeBuilding);
    ShowSelected();
}

bool TSpcEditor::IsValidInsObj(TObject* obj) const {
    TBaseClassIdent ident = GetInstanceID(obj);
    return ident == ciSpcItem || ident == ciItem || ident == ciCollection;
}

bool TSpcEditor::IsValidDelObj(TObject* obj) const {
    TBaseClassIdent ident = GetInstanceID(obj);
    if (ident == ciCollection) return ops_.CollectionCount(static_cast<TCollection*>(obj)) > 0;
    return ident == ciSpcItem || ident == ciItem;
}

bool TSpcEditor::IsValidMoveObj(TObject* obj, TNodeMotion motion) const {
    TBaseClassIdent ident = GetInstanceID(obj);
    if (ident != ciSpcItem && ident != ciItem) return false;
    auto* item = static_cast<TCollectionItem*>(obj);
    int index = ops_.ItemGetIndex(item);
    if (motion == nmUp) return index >= 1;
    return index < ops_.CollectionCount(ops_.ItemCollection(item)) - 1;
}

} // namespace zelvane
