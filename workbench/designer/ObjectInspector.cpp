#include "workbench/designer/ObjectInspector.h"

#include "toolsapi/QtBridge.h"
#include "workbench/designer/VclValues.h"
#include "workbench/model/FormFile.h"
#include "workbench/model/LibraryClasses.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <set>

namespace workbench::designer {

using ToolsAPI::FromBytes;
using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;
using ToolsAPI::TOTAHandle;

namespace {

constexpr int NameRole = Qt::UserRole + 1;    // the full property name, "Font.Name"
constexpr int ChoicesRole = Qt::UserRole + 2; // the values a drop-down offers

QStringList FormTexts(const std::vector<std::string>& values) {
    QStringList list;
    for (const std::string& v : values)
        list << FromBytes(v);
    return list;
}

// The value column's editor: a drop-down for the rows that offer choices, a line otherwise.
class TValueDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QStringList choices = index.data(ChoicesRole).toStringList();
        if (choices.isEmpty()) return QStyledItemDelegate::createEditor(parent, option, index);
        auto* box = new QComboBox(parent);
        box->setEditable(true);
        box->addItems(choices);
        return box;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        if (auto* box = qobject_cast<QComboBox*>(editor))
            box->setCurrentText(index.data(Qt::EditRole).toString());
        else
            QStyledItemDelegate::setEditorData(editor, index);
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override {
        if (auto* box = qobject_cast<QComboBox*>(editor))
            model->setData(index, box->currentText(), Qt::EditRole);
        else
            QStyledItemDelegate::setModelData(editor, model, index);
    }
};

bool IsEvent(const TDesignProperty& p) {
    return p.Kind == TDesignValueKind::Ident && p.Name.size() > 2 && p.Name[0] == 'O' &&
           p.Name[1] == 'n' && p.Name.find('.') == std::string::npos;
}

bool SimpleKind(TDesignValueKind kind) {
    return kind == TDesignValueKind::Integer || kind == TDesignValueKind::String ||
           kind == TDesignValueKind::Ident || kind == TDesignValueKind::Boolean ||
           kind == TDesignValueKind::Float;
}

// The value as the grid shows it: strings without their quotes, as the form stores them.
QString ShownValue(const TDesignComponent& c, const TDesignProperty& p) {
    switch (p.Kind) {
    case TDesignValueKind::String:
        return FormString(c, p);
    case TDesignValueKind::Ident:
        return FromBytes(p.Str);
    case TDesignValueKind::List:
        return "(TStrings)";
    case TDesignValueKind::Collection:
        return "(TCollection)";
    case TDesignValueKind::Binary:
        return "(Binary)";
    default:
        return FromBytes(p.Text);
    }
}

// Colours and cursors are integers that have names: such a property takes either.
bool TakesNamedIntegers(const std::string& propName, const std::string& ident) {
    auto endsWith = [&](const char* tail) {
        size_t n = std::strlen(tail);
        return propName.size() >= n && rtl::SameText(propName.substr(propName.size() - n), tail);
    };
    bool named = ident.size() > 2 && ident[0] == 'c' && (ident[1] == 'l' || ident[1] == 'r');
    return named && (endsWith("Color") || endsWith("Cursor"));
}

} // namespace

// The inspector's form notifier: it shows changes, renames and the module's close.
class TObjectInspector::TNotifier : public TNotifierObject, public virtual IOTAFormNotifier {
public:
    explicit TNotifier(TObjectInspector* inspector) : inspector_(inspector) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAFormNotifier>(this, iid, obj);
    }
    void FormActivated() override {}
    void FormSaving() override {}
    void ComponentRenamed(TOTAHandle, const std::string&, const std::string&) override {
        if (inspector_) inspector_->Refresh();
    }
    void Modified() override {
        if (inspector_) inspector_->Refresh();
    }
    void Destroyed() override {
        if (inspector_) inspector_->SetFormEditor(nullptr);
    }
    void Forget() { inspector_ = nullptr; }

private:
    TObjectInspector* inspector_;
};

TObjectInspector::TObjectInspector(QWidget* parent)
    : QWidget(parent, parent ? Qt::WindowFlags() : Qt::Window) {
    setObjectName("PropertyInspector");
    setWindowTitle("Object Inspector");
    resize(240, 420);

    components_ = new QComboBox(this);
    components_->setObjectName("ComponentList");
    pages_ = new QTabBar(this);
    pages_->setObjectName("Pages");
    pages_->addTab("Properties");
    pages_->addTab("Events");
    pages_->setExpanding(false);
    grid_ = new QTreeWidget(this);
    grid_->setObjectName("PropertyGrid");
    grid_->setColumnCount(2);
    grid_->setHeaderHidden(true);
    grid_->setRootIsDecorated(true);
    grid_->setIndentation(10);
    grid_->setAlternatingRowColors(false);
    grid_->setUniformRowHeights(true);
    grid_->setEditTriggers(QAbstractItemView::SelectedClicked | QAbstractItemView::DoubleClicked |
                           QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    grid_->setItemDelegateForColumn(1, new TValueDelegate(grid_));
    grid_->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    grid_->header()->resizeSection(0, 110);
    grid_->header()->setStretchLastSection(true);
    grid_->setStyleSheet("QTreeWidget::item { border-bottom: 1px solid #c0c0c0; "
                         "border-right: 1px solid #c0c0c0; }");
    status_ = new QLabel(this);
    status_->setObjectName("Status");
    status_->setWordWrap(true);
    QPalette pal = status_->palette();
    pal.setColor(QPalette::WindowText, Qt::darkRed);
    status_->setPalette(pal);
    status_->hide();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    layout->addWidget(components_);
    layout->addWidget(pages_);
    layout->addWidget(grid_, 1);
    layout->addWidget(status_);

    popup_ = new QMenu(this);
    popup_->setObjectName("PopupMenu");
    QAction* expand = popup_->addAction("&Expand");
    expand->setObjectName("ExpandItem");
    connect(expand, &QAction::triggered, grid_, &QTreeWidget::expandAll);
    QAction* collapse = popup_->addAction("&Collapse");
    collapse->setObjectName("CollapseItem");
    connect(collapse, &QAction::triggered, grid_, &QTreeWidget::collapseAll);
    popup_->addSeparator();
    QAction* onTop = popup_->addAction("Stay on &Top");
    onTop->setObjectName("StayOnTopItem");
    onTop->setCheckable(true);
    connect(onTop, &QAction::toggled, this, [this](bool on) {
        bool shown = isVisible();
        setWindowFlag(Qt::WindowStaysOnTopHint, on);
        if (shown) show();
    });
    QAction* hideItem = popup_->addAction("&Hide");
    hideItem->setObjectName("HideItem");
    connect(hideItem, &QAction::triggered, this, &QWidget::hide);
    grid_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(grid_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& pos) { popup_->popup(grid_->viewport()->mapToGlobal(pos)); });

    connect(grid_, &QTreeWidget::itemChanged, this, &TObjectInspector::ItemChanged);
    connect(pages_, &QTabBar::currentChanged, this, [this] { Fill(); });
    connect(components_, qOverload<int>(&QComboBox::activated), this, [this](int index) {
        auto* c =
            reinterpret_cast<TDesignComponent*>(components_->itemData(index).value<quintptr>());
        if (editor_ && c && (c == editor_->Root() || editor_->Contains(c)))
            editor_->Select(c, false);
    });
}

TObjectInspector::~TObjectInspector() {
    Detach();
}

void TObjectInspector::Detach() {
    if (notifier_) notifier_->Forget();
    if (editor_) {
        editor_->RemoveNotifier(notifierIndex_);
        editor_->RemoveSelectionListener(selectionListener_);
    }
    notifier_ = nullptr;
    editor_ = nullptr;
    component_ = nullptr;
}

void TObjectInspector::SetFormEditor(TFormEditor* editor) {
    if (editor == editor_.get()) return;
    Detach();
    if (editor && editor->Root()) {
        editor_ = editor;
        notifier_ = MakeInterfaced<TNotifier>(this);
        notifierIndex_ = editor_->AddNotifier(_di_IOTANotifier(notifier_.get()));
        selectionListener_ = editor_->AddSelectionListener([this] { ShowSelection(); });
    }
    Report({});
    ShowSelection();
}

void TObjectInspector::ShowSelection() {
    component_ = nullptr;
    if (editor_) {
        const auto& selection = editor_->Selection();
        component_ = selection.empty() ? editor_->Root() : selection.front();
    }
    FillComponents();
    Fill();
}

void TObjectInspector::FillComponents() {
    components_->clear();
    if (!editor_) return;
    std::vector<TDesignComponent*> all{editor_->Root()};
    for (TDesignComponent* c : editor_->Root()->AllComponents())
        all.push_back(c);
    for (TDesignComponent* c : all) {
        components_->addItem(FromBytes(c->Name + ": " + c->ClassName),
                             QVariant::fromValue(reinterpret_cast<quintptr>(c)));
        if (c == component_) components_->setCurrentIndex(components_->count() - 1);
    }
}

void TObjectInspector::Fill() {
    filling_ = true;
    grid_->clear();
    if (component_) {
        bool events = pages_->currentIndex() == 1;
        const auto& published = PublishedProperties(*component_);
        // Sorted by name, nested properties under the object that holds them.
        std::map<QString, const TDesignProperty*, bool (*)(const QString&, const QString&)> rows(
            [](const QString& a, const QString& b) {
                return a.compare(b, Qt::CaseInsensitive) < 0;
            });
        std::set<std::string> nestedObjects; // "Font" for a stored "Font.Name"
        for (const TDesignProperty& p : component_->Properties) {
            if (IsEvent(p) == events) rows[FromBytes(p.Name)] = &p;
            if (size_t dot = p.Name.find('.'); dot != std::string::npos)
                nestedObjects.insert(rtl::LowerCase(p.Name.substr(0, dot)));
        }
        // The published properties the component does not store, at their defaults. A
        // class-valued one whose nested properties are stored is the row that holds them.
        std::deque<TDesignProperty> defaults;
        std::map<QString, QString> objectTexts; // "Font" -> "(TFont)"
        for (const TLibraryProperty& lp : published) {
            if ((lp.Kind == TLibraryPropertyKind::Event) != events ||
                rtl::SameText(lp.Name, "Name"))
                continue;
            if (lp.Kind == TLibraryPropertyKind::Class)
                objectTexts[FromBytes(lp.Name)] = FromBytes(lp.Default);
            if (component_->FindProperty(lp.Name) || (lp.Kind == TLibraryPropertyKind::Class &&
                                                      nestedObjects.count(rtl::LowerCase(lp.Name))))
                continue;
            rows[FromBytes(lp.Name)] =
                &defaults.emplace_back(UnstoredDesignProperty(*component_, lp));
        }
        auto makeItem = [&](QTreeWidgetItem* parent, const QString& label, const QString& full,
                            const TDesignProperty* p) {
            auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(grid_);
            item->setText(0, label);
            item->setData(0, NameRole, full);
            if (p) {
                item->setText(1, ShownValue(*component_, *p));
                if (SimpleKind(p->Kind)) {
                    item->setFlags(item->flags() | Qt::ItemIsEditable);
                    const TLibraryProperty* lp = FindPublishedProperty(*component_, p->Name);
                    if (p->Kind == TDesignValueKind::Boolean)
                        item->setData(1, ChoicesRole, QStringList{"False", "True"});
                    else if (lp && lp->Kind == TLibraryPropertyKind::Ident && !lp->Values.empty())
                        item->setData(1, ChoicesRole, FormTexts(lp->Values));
                    else if (p->Kind == TDesignValueKind::Ident && p->Str.rfind("cl", 0) == 0)
                        item->setData(1, ChoicesRole, FormTexts(LibraryColorNames()));
                } else {
                    item->setForeground(1, QColor(0x80, 0x80, 0x80));
                }
                if (p->Kind == TDesignValueKind::String || p->Kind == TDesignValueKind::Integer ||
                    p->Kind == TDesignValueKind::Float)
                    item->setForeground(1, QColor(0x00, 0x00, 0x80));
            }
            return item;
        };
        std::map<QString, QTreeWidgetItem*> objects;
        if (!events) {
            auto* name = makeItem(nullptr, "Name", "Name", nullptr);
            name->setText(1, FromBytes(component_->Name));
            name->setFlags(name->flags() | Qt::ItemIsEditable);
            name->setForeground(1, QColor(0x00, 0x00, 0x80));
        }
        for (auto& [full, p] : rows) {
            int dot = full.indexOf('.');
            if (dot < 0) {
                makeItem(nullptr, full, full, p);
                continue;
            }
            QString object = full.left(dot);
            QTreeWidgetItem*& parent = objects[object];
            if (!parent) {
                parent = makeItem(nullptr, object, object, nullptr);
                parent->setText(1, objectTexts.count(object) ? objectTexts[object]
                                                             : "(T" + object + ")");
            }
            makeItem(parent, full.mid(dot + 1), full, p);
        }
        grid_->sortItems(0, Qt::AscendingOrder);
        // The name leads, as in the platform's inspector it is the first thing one looks for.
        if (!events)
            for (int i = 0; i < grid_->topLevelItemCount(); ++i)
                if (grid_->topLevelItem(i)->data(0, NameRole).toString() == "Name") {
                    grid_->insertTopLevelItem(0, grid_->takeTopLevelItem(i));
                    break;
                }
    }
    filling_ = false;
}

void TObjectInspector::Refresh() {
    // The component may have left the form's selection with a rename; the shown one stays.
    if (editor_ && component_ && component_ != editor_->Root() && !editor_->Contains(component_))
        component_ = editor_->Root();
    int index = components_->currentIndex();
    FillComponents();
    if (components_->currentIndex() < 0) components_->setCurrentIndex(index);
    // The rows keep their place and their open objects.
    QStringList open;
    for (int i = 0; i < grid_->topLevelItemCount(); ++i)
        if (grid_->topLevelItem(i)->isExpanded())
            open << grid_->topLevelItem(i)->data(0, NameRole).toString();
    Fill();
    for (int i = 0; i < grid_->topLevelItemCount(); ++i)
        if (open.contains(grid_->topLevelItem(i)->data(0, NameRole).toString()))
            grid_->topLevelItem(i)->setExpanded(true);
}

QTreeWidgetItem* TObjectInspector::FindItem(const QString& name) const {
    for (int i = 0; i < grid_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = grid_->topLevelItem(i);
        if (item->data(0, NameRole).toString().compare(name, Qt::CaseInsensitive) == 0) return item;
        for (int k = 0; k < item->childCount(); ++k)
            if (item->child(k)->data(0, NameRole).toString().compare(name, Qt::CaseInsensitive) ==
                0)
                return item->child(k);
    }
    return nullptr;
}

QStringList TObjectInspector::PropertyNames() const {
    QStringList names;
    for (int i = 0; i < grid_->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = grid_->topLevelItem(i);
        if (item->childCount() == 0) names << item->data(0, NameRole).toString();
        for (int k = 0; k < item->childCount(); ++k)
            names << item->child(k)->data(0, NameRole).toString();
    }
    return names;
}

QString TObjectInspector::ValueText(const QString& name) const {
    QTreeWidgetItem* item = FindItem(name);
    return item ? item->text(1) : QString();
}

bool TObjectInspector::IsEditable(const QString& name) const {
    QTreeWidgetItem* item = FindItem(name);
    return item && (item->flags() & Qt::ItemIsEditable);
}

QString TObjectInspector::ErrorText() const {
    return status_->text();
}

void TObjectInspector::Report(const QString& error) {
    status_->setText(error);
    status_->setVisible(!error.isEmpty());
}

bool TObjectInspector::EditValue(const QString& name, const QString& text) {
    if (!editor_ || !component_) {
        Report("No component is selected");
        return false;
    }
    std::string propName = ToolsAPI::ToBytes(name);
    std::string value = ToolsAPI::ToBytes(text.trimmed());
    TDesignComponent* c = component_;
    if (name.compare("Name", Qt::CaseInsensitive) == 0) {
        try {
            editor_->RenameComponent(c, value);
        } catch (const rtl::Exception& e) {
            Report(FromBytes(e.Message()));
            Refresh();
            return false;
        }
        Report({});
        Refresh();
        emit PropertyEdited(name);
        return true;
    }
    const TDesignProperty* old = c->FindProperty(propName);
    // A published property the component does not store is edited from its default; the edit
    // stores it.
    TDesignProperty unstored;
    if (!old)
        if (const TLibraryProperty* lp = FindPublishedProperty(*c, propName)) {
            unstored = UnstoredDesignProperty(*c, *lp);
            old = &unstored;
        }
    if (!old || !SimpleKind(old->Kind)) {
        Report(name + " can't be edited here");
        return false;
    }
    std::string textForm = value;
    TDesignValueKind oldKind = old->Kind;
    if (oldKind == TDesignValueKind::String) {
        // A string takes what was typed as it stands, blanks included, with every character: in
        // the form's code page where that holds them and the value was no wide string, else as
        // a wide string.
        textForm =
            FormStringValue(text.toStdU16String(), FormCodePage(*c), IsWideDesignString(*old));
    } else if (oldKind == TDesignValueKind::Boolean) {
        if (rtl::SameText(value, "True"))
            textForm = "True";
        else if (rtl::SameText(value, "False"))
            textForm = "False";
    }
    TDesignProperty parsed;
    QString refusal = "'" + text + "' is not a valid value of " + name;
    try {
        parsed = ParseDesignProperty(propName, textForm);
    } catch (const rtl::Exception&) {
        Report(refusal);
        Refresh();
        return false;
    }
    // The value must be of the property's kind; integers and identifiers stand for each
    // other where the identifier names a colour or a cursor, as those properties take both.
    bool fits = parsed.Kind == oldKind;
    if (oldKind == TDesignValueKind::Float && parsed.Kind == TDesignValueKind::Integer) {
        parsed = ParseDesignProperty(propName, textForm + ".0");
        textForm = parsed.Text;
        fits = true;
    }
    if ((oldKind == TDesignValueKind::Integer && parsed.Kind == TDesignValueKind::Ident &&
         TakesNamedIntegers(old->Name, parsed.Str)) ||
        (oldKind == TDesignValueKind::Ident && parsed.Kind == TDesignValueKind::Integer &&
         TakesNamedIntegers(old->Name, old->Str)))
        fits = true;
    if (!fits) {
        Report(refusal);
        Refresh();
        return false;
    }
    if (parsed.Text == old->Text) {
        Report({});
        return true;
    }
    _di_IOTAComponent ref = editor_->Wrap(c);
    if (!ref->SetPropByName(old->Name, textForm)) {
        Report(refusal);
        Refresh();
        return false;
    }
    Report({});
    emit PropertyEdited(name);
    return true;
}

void TObjectInspector::ItemChanged(QTreeWidgetItem* item, int column) {
    if (filling_ || column != 1) return;
    QString name = item->data(0, NameRole).toString();
    QString text = item->text(1);
    // The edit rebuilds the grid: it runs once the item has finished telling of its change.
    QMetaObject::invokeMethod(
        this, [this, name, text] { EditValue(name, text); }, Qt::QueuedConnection);
}

} // namespace workbench::designer
