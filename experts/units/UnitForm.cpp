#include "experts/units/UnitForm.h"

#include "experts/units/UnitMng.h"
#include "foundation/AppUtils.h"
#include "host/CrtlUtils.h"
#include "host/OTAUtils.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/Menus.h"
#include "rtl/SysUtils.h"
#include "toolsapi/Forms.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zelvane {

using namespace rtl;
using namespace ToolsAPI;

namespace {

// The object of a list item: the item's index in the tab row at the last fill or write-back.
constexpr int ObjectRole = Qt::UserRole;

struct TUnitItem {
    QString Text;
    int Object = 0;
};

std::vector<TUnitItem> ItemsOf(const QListWidget* list) {
    std::vector<TUnitItem> items;
    items.reserve(size_t(list->count()));
    for (int i = 0; i < list->count(); ++i) {
        QListWidgetItem* item = list->item(i);
        items.push_back({item->text(), item->data(ObjectRole).toInt()});
    }
    return items;
}

// Puts the items into the list. A list of the same length is changed in place, row by row, so
// that a sort or a move costs no new items; the selection is cleared either way.
void SetItemsOf(QListWidget* list, const std::vector<TUnitItem>& items) {
    list->clearSelection();
    if (list->count() != int(items.size())) {
        list->clear();
        QStringList texts;
        texts.reserve(qsizetype(items.size()));
        for (const TUnitItem& item : items)
            texts.append(item.Text);
        list->addItems(texts);
    }
    for (int i = 0; i < list->count(); ++i) {
        QListWidgetItem* item = list->item(i);
        const TUnitItem& want = items[size_t(i)];
        if (item->text() != want.Text) item->setText(want.Text);
        if (item->data(ObjectRole).toInt() != want.Object) item->setData(ObjectRole, want.Object);
    }
}

std::string ItemText(const QListWidget* list, int index) {
    return ToBytes(list->item(index)->text());
}

int ItemObject(const QListWidget* list, int index) {
    return list->item(index)->data(ObjectRole).toInt();
}

QAction* MakeAction(QWidget* form, const char* name, QStyle::StandardPixmap icon) {
    auto* action = new QAction(form->style()->standardIcon(icon), QString(), form);
    action->setObjectName(QString::fromLatin1(name));
    action->setProperty("Category", QStringLiteral("UnitMng"));
    action->setShortcutContext(Qt::WindowShortcut);
    form->addAction(action);
    return action;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The list box

TUnitListBox::TUnitListBox(QWidget* parent) : QListWidget(parent) {}

int TUnitListBox::ItemAtPos(QPoint pos) const {
    QListWidgetItem* item = itemAt(pos);
    return item ? row(item) : count();
}

void TUnitListBox::mousePressEvent(QMouseEvent* event) {
    pressed_ = DragAllowed && event->button() == Qt::LeftButton &&
               event->modifiers() == Qt::NoModifier;
    dragging_ = false;
    pressPos_ = event->position().toPoint();
    // A press on the selection keeps it, so that the whole block can be dragged.
    QListWidgetItem* item = itemAt(pressPos_);
    pressedOnSelection_ = pressed_ && item && item->isSelected();
    if (pressedOnSelection_) {
        selectionModel()->setCurrentIndex(indexFromItem(item), QItemSelectionModel::NoUpdate);
        return;
    }
    QListWidget::mousePressEvent(event);
}

void TUnitListBox::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_ || !(event->buttons() & Qt::LeftButton)) return QListWidget::mouseMoveEvent(event);
    QPoint pos = event->position().toPoint();
    if (!dragging_) {
        if ((pos - pressPos_).manhattanLength() < QApplication::startDragDistance()) return;
        dragging_ = true;
        emit DragStarted();
    }
    accepted_ = false;
    emit DragOver(ItemAtPos(pos), accepted_);
    viewport()->setCursor(accepted_ ? Qt::DragMoveCursor : Qt::ForbiddenCursor);
}

void TUnitListBox::mouseReleaseEvent(QMouseEvent* event) {
    bool drop = dragging_ && accepted_;
    bool wasDragging = dragging_;
    pressed_ = dragging_ = accepted_ = false;
    viewport()->unsetCursor();
    if (drop) emit DragDropped();
    if (wasDragging) return;
    // A click on the selection that dragged nothing selects the one item, as any click does.
    if (std::exchange(pressedOnSelection_, false))
        if (QListWidgetItem* item = itemAt(event->position().toPoint()))
            setCurrentItem(item, QItemSelectionModel::ClearAndSelect);
    QListWidget::mouseReleaseEvent(event);
}

// ---------------------------------------------------------------------------------------------
// The window

TUnitForm::TUnitForm(QWidget* owner, TUnitManager* manager)
    : TSharedForm(owner, manager), manager_(manager) {
    setObjectName(QStringLiteral("UnitForm"));
    setWindowFlags(Qt::Tool | Qt::WindowStaysOnTopHint | Qt::WindowTitleHint |
                   Qt::WindowCloseButtonHint);
    setAttribute(Qt::WA_DeleteOnClose);
    resize(199, 316);
    setMinimumSize(199, 173);

    acShow_ = MakeAction(this, "acShow", QStyle::SP_DialogOpenButton);
    acClose_ = MakeAction(this, "acClose", QStyle::SP_DialogDiscardButton);
    acMoveUp_ = MakeAction(this, "acMoveUp", QStyle::SP_ArrowLeft);
    acMoveDown_ = MakeAction(this, "acMoveDown", QStyle::SP_ArrowRight);
    acSort_ = MakeAction(this, "acSort", QStyle::SP_ArrowDown);
    acFilter_ = MakeAction(this, "acFilter", QStyle::SP_FileDialogContentsView);
    acRefresh_ = MakeAction(this, "acRefresh", QStyle::SP_BrowserReload);
    acRefresh_->setShortcut(QKeySequence(Qt::Key_F5));
    scExit()->setIcon(style()->standardIcon(QStyle::SP_DialogCloseButton));
    scExit()->setToolTip(QStringLiteral("Exit"));

    toolBar_ = new QToolBar(this);
    toolBar_->setObjectName(QStringLiteral("ToolBar1"));
    toolBar_->setIconSize(QSize(16, 16));
    // Flat and tight, so that the ten buttons fit the window's least width.
    toolBar_->setStyleSheet(QStringLiteral("QToolBar { spacing: 0px; padding: 0px; border: 0px; }"
                                           "QToolButton { padding: 1px; }"));
    toolBar_->addAction(scExit());
    toolBar_->addSeparator();
    toolBar_->addActions({acShow_, acClose_});
    toolBar_->addSeparator();
    toolBar_->addActions({acMoveUp_, acMoveDown_});
    toolBar_->addSeparator();
    toolBar_->addActions({acSort_, acFilter_});
    if (QWidget* exitButton = toolBar_->widgetForAction(scExit())) {
        exitButton->setObjectName(QStringLiteral("ToolButton1"));
        exitButton->installEventFilter(this);
    }

    auto* panel3 = new QFrame(this);
    panel3->setObjectName(QStringLiteral("Panel3"));
    panel3->setFixedHeight(2);
    filterPanel_ = new QWidget(this);
    filterPanel_->setObjectName(QStringLiteral("FilterPanel"));
    filterPanel_->setFixedHeight(23);
    filterPanel_->hide();
    filterCombo_ = new QComboBox(filterPanel_);
    filterCombo_->setObjectName(QStringLiteral("FilterCombo"));
    filterCombo_->setEditable(true);
    filterCombo_->setInsertPolicy(QComboBox::NoInsert);
    filterCombo_->installEventFilter(this);
    filterCombo_->lineEdit()->installEventFilter(this);
    auto* filterLayout = new QHBoxLayout(filterPanel_);
    filterLayout->setContentsMargins(0, 0, 0, 0);
    filterLayout->addWidget(filterCombo_);

    unitList_ = new TUnitListBox(this);
    unitList_->setObjectName(QStringLiteral("UnitList"));
    unitList_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    unitList_->setUniformItemSizes(true);
    unitList_->setContextMenuPolicy(Qt::CustomContextMenu);
    unitList_->installEventFilter(this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addWidget(toolBar_);
    layout->addWidget(panel3);
    layout->addWidget(filterPanel_);
    layout->addWidget(unitList_, 1);

    timer_ = new QTimer(this);
    timer_->setObjectName(QStringLiteral("Timer"));
    timer_->setInterval(100);
    pmSettings_ = new QMenu(this);
    pmSettings_->setObjectName(QStringLiteral("pmSettings"));

    // Esc takes the filter panel away first; the exit button closes at once.
    disconnect(scExit(), &QAction::triggered, this, nullptr);
    connect(scExit(), &QAction::triggered, this, [this] { scExitExecute(); });
    connect(acShow_, &QAction::triggered, this, [this] { acShowExecute(); });
    connect(acClose_, &QAction::triggered, this, [this] { acCloseExecute(); });
    connect(acMoveUp_, &QAction::triggered, this, [this] { MoveItems(-1); });
    connect(acMoveDown_, &QAction::triggered, this, [this] { MoveItems(1); });
    connect(acSort_, &QAction::triggered, this, [this] { SortUnits(); });
    connect(acFilter_, &QAction::triggered, this, [this] { acFilterExecute(); });
    connect(acRefresh_, &QAction::triggered, this, [this] {
        FillUnitList();
        FocusList();
    });
    connect(timer_, &QTimer::timeout, this, [this] { TimerTimer(); });
    connect(unitList_, &QListWidget::itemDoubleClicked, this, [this] { acShowExecute(); });
    connect(unitList_, &QListWidget::itemSelectionChanged, this, [this] { UpdateActions(); });
    connect(unitList_, &QWidget::customContextMenuRequested, this, [this](QPoint pos) {
        pmSettingsPopup();
        pmSettings_->popup(unitList_->viewport()->mapToGlobal(pos));
    });
    connect(unitList_, &TUnitListBox::DragStarted, this, [this] { dragStart_ = GetFirstSelected(); });
    connect(unitList_, &TUnitListBox::DragOver, this,
            [this](int index, bool& accept) { UnitListDragOver(index, accept); });
    connect(unitList_, &TUnitListBox::DragDropped, this, [this] { UnitListDragDrop(); });
}

TUnitForm::~TUnitForm() {
    timer_->stop();
    // A window destroyed without closing (the add-in unloading) gives the IDE back all the same.
    if (!formStates_.empty()) EnableAppForms();
    StoreHistory();
}

void TUnitForm::StoreHistory() {
    TStringList* history = manager_->GetHistoryList();
    history->Clear();
    for (int i = 0; i < filterCombo_->count(); ++i)
        history->Add(ToBytes(filterCombo_->itemText(i)));
}

void TUnitForm::FormCreate() {
    DisableAppForms();
    FillUnitList();
    FillSettingMenu();
    TSharedForm::FormCreate();
}

void TUnitForm::SetProperties() {
    TSharedForm::SetProperties();
    filterCombo_->clear();
    TStringList* history = manager_->GetHistoryList();
    for (int i = 0; i < history->Count(); ++i)
        filterCombo_->addItem(FromBytes((*history)[i]));
    filterCombo_->setEditText(QString());
    unitList_->DragAllowed = manager_->DragModeAllowed;
    setWindowTitle(FromBytes(LocaleStr(SUnitManagerCaption)));
    struct TActionSetting {
        QAction* Action;
        const char* Hint;
        const TShortCutString* ShortCut;
    };
    const TActionSetting settings[] = {
        {acShow_, "Open unit", &manager_->ShowUnitShortCut},
        {acClose_, "Close units", &manager_->CloseUnitShortCut},
        {acMoveUp_, "Move units", &manager_->MoveUpUnitShortCut},
        {acMoveDown_, "Move units", &manager_->MoveDownUnitShortCut},
        {acSort_, "Sort units", &manager_->SortUnitsShortCut},
        {acFilter_, "Apply filter", &manager_->FilterUnitsShortCut},
    };
    for (const TActionSetting& s : settings) {
        s.Action->setToolTip(QString::fromLatin1(s.Hint));
        s.Action->setText(QString::fromLatin1(s.Hint));
        s.Action->setShortcuts(ShortCutToKeySequences(TextToShortCut(*s.ShortCut)));
    }
}

void TUnitForm::WriteFormData() {
    TSharedForm::WriteFormData();
    UpdateFilterControl(manager_->FilterPanelVisible);
}

void TUnitForm::ReadFormData() {
    TSharedForm::ReadFormData();
    manager_->FilterPanelVisible = !filterPanel_->isHidden();
}

void TUnitForm::showEvent(QShowEvent* event) {
    TSharedForm::showEvent(event);
    if (filterPanel_->isHidden())
        unitList_->setFocus();
    else
        filterCombo_->setFocus();
}

void TUnitForm::closeEvent(QCloseEvent* event) {
    TSharedForm::closeEvent(event);
    timer_->stop();
    // The window goes later; its settings are the expert's at once.
    StoreHistory();
    // Hidden first, so that the window the focus goes to stays the active one.
    hide();
    try {
        EnableAppForms();
        // The editor shows the page of the tab that is current now.
        if (ITabControl* tabs = Tabs()) tabs->Change();
    } catch (...) {
        CheckAddErrorLog(manager_);
        if (Application) Application->HandleException(manager_);
    }
}

bool TUnitForm::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (watched->objectName() == QStringLiteral("ToolButton1")) exitByMouse_ = true;
        break;
    case QEvent::MouseButtonDblClick:
        if (watched == filterCombo_->lineEdit()) FilterUnits();
        break;
    case QEvent::KeyPress: {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter) break;
        if (watched == unitList_) {
            acShowExecute();
            return true;
        }
        if (watched == filterCombo_ || watched == filterCombo_->lineEdit()) {
            FilterUnits();
            return true;
        }
        break;
    }
    default:
        break;
    }
    return TSharedForm::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------------
// The IDE's controls and forms

ITabControl* TUnitForm::Tabs() const {
    return TabsOf(tabControl_.data());
}

bool TUnitForm::FindEditWindowControls() {
    tabControl_ = TUnitManager::FindEditorTabControl();
    editorControl_ = tabControl_ ? tabControl_->window()->findChild<QWidget*>(
                                       QStringLiteral("Editor"))
                                 : nullptr;
    return tabControl_ != nullptr;
}

void TUnitForm::DisableAppForms() {
    prevActiveForm_ = Screen ? Screen->GetActiveForm() : nullptr;
    int count = Screen ? Screen->GetFormCount() : 0;
    formStates_.assign(size_t(count), {});
    // Each form's own state is taken before any is disabled: a window that stands inside
    // another reads as disabled as soon as the outer one is.
    for (int i = 0; i < count; ++i) {
        QWidget* form = Screen->GetForm(i);
        if (form && form != this)
            formStates_[size_t(i)] = {form, !form->testAttribute(Qt::WA_ForceDisabled)};
    }
    for (const TFormState& state : formStates_)
        if (state.Form) state.Form->setEnabled(false);
}

void TUnitForm::EnableAppForms() {
    // A form that went away meanwhile is passed over, as is this window's own empty slot.
    for (const TFormState& state : formStates_)
        if (state.Form) state.Form->setEnabled(state.Enabled);
    formStates_.clear();
    QWidget* mainForm = Application ? Application->GetMainForm() : nullptr;
    // The first that can take the focus; given to a control of another window, the focus
    // brings that window to the front.
    for (QWidget* focus : {editorControl_.data(), prevActiveForm_.data(), mainForm})
        if (focus && focus->isVisible()) {
            focus->window()->activateWindow();
            focus->setFocus();
            break;
        }
}

bool TUnitForm::ConfirmWindowOpen() const {
    return GetActiveForm("Confirm") != nullptr;
}

bool TUnitForm::Closing() const {
    return timer_->isActive();
}

// ---------------------------------------------------------------------------------------------
// Filling and filtering

void TUnitForm::FillUnitList() {
    if (!FindEditWindowControls())
        unitList_->clear();
    else
        DoFillUnitList();
    UpdateActions();
}

void TUnitForm::DoFillUnitList() {
    sourceEditors_.clear();
    GetOpenedSourceEditors(sourceEditors_, false);
    unitList_->setUpdatesEnabled(false);
    PopulateUnitList();
    SelectOnly(Tabs()->GetTabIndex());
    unitList_->setUpdatesEnabled(true);
}

void TUnitForm::PopulateUnitList() {
    std::vector<TTabEntry> tabs = Tabs()->GetTabs();
    std::vector<TUnitItem> items;
    items.reserve(tabs.size());
    for (size_t i = 0; i < tabs.size(); ++i)
        items.push_back({FromBytes(tabs[i].Text), int(i)});
    SetItemsOf(unitList_, items);
    sortDescending_ = false;
}

void TUnitForm::FilterUnits() {
    unitList_->setUpdatesEnabled(false);
    if (filtered_ && FindEditWindowControls()) PopulateUnitList();
    std::string text = Trim(ToBytes(filterCombo_->currentText()));
    if (!text.empty()) {
        SaveHistory(text);
        UpdateUnitList(text);
        filtered_ = true;
    } else {
        FillUnitList();
        filtered_ = false;
    }
    if (unitList_->count() > 0) SelectOnly(0);
    unitList_->setUpdatesEnabled(true);
    UpdateActions();
    if (manager_->JumpToUnitsOnApllyFilter && unitList_->count() > 0) FocusList();
}

void TUnitForm::UpdateUnitList(const std::string& text) {
    const std::string filter = AnsiLowerCase(text);
    std::vector<TUnitItem> items = ItemsOf(unitList_);
    std::erase_if(items, [&](const TUnitItem& item) {
        return AnsiLowerCase(ToBytes(item.Text)).find(filter) == std::string::npos;
    });
    SetItemsOf(unitList_, items);
}

void TUnitForm::SaveHistory(const std::string& text) {
    QString entry = FromBytes(text);
    if (filterCombo_->findText(entry, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
        filterCombo_->insertItem(0, entry);
    // One line at most goes per call, so a history far over the limit shrinks line by line.
    if (filterCombo_->count() > manager_->HistoryStoredCount)
        filterCombo_->removeItem(filterCombo_->count() - 1);
    filterCombo_->setEditText(entry);
}

void TUnitForm::UpdateFilterControl(bool visible) {
    filterPanel_->setVisible(visible);
    if (visible) {
        if (filterCombo_->count() > 0) filterCombo_->setEditText(filterCombo_->itemText(0));
        filterCombo_->setFocus();
    } else {
        FocusList();
    }
}

void TUnitForm::acFilterExecute() {
    manager_->FilterPanelVisible = !manager_->FilterPanelVisible;
    UpdateFilterControl(manager_->FilterPanelVisible);
}

void TUnitForm::scExitExecute() {
    if (!exitByMouse_ && !filterPanel_->isHidden()) {
        manager_->FilterPanelVisible = false;
        UpdateFilterControl(false);
        return;
    }
    close();
}

// ---------------------------------------------------------------------------------------------
// Sorting, moving and writing the order back

void TUnitForm::SortUnits() {
    // Each name turned into the runtime's text once, not at every comparison.
    struct TKeyed {
        std::string Key;
        TUnitItem Item;
    };
    std::vector<TKeyed> keyed;
    for (TUnitItem& item : ItemsOf(unitList_))
        keyed.push_back({ToBytes(item.Text), std::move(item)});
    std::stable_sort(keyed.begin(), keyed.end(), [](const TKeyed& a, const TKeyed& b) {
        return AnsiCompareText(a.Key, b.Key) < 0;
    });
    std::vector<TUnitItem> items;
    items.reserve(keyed.size());
    for (TKeyed& k : keyed)
        items.push_back(std::move(k.Item));
    if (sortDescending_) {
        std::reverse(items.begin(), items.end());
        sortDescending_ = false;
    } else {
        sortDescending_ = true;
    }
    unitList_->setUpdatesEnabled(false);
    SetItemsOf(unitList_, items);
    AssignItems();
    if (ITabControl* tabs = Tabs()) SelectOnly(tabs->GetTabIndex());
    unitList_->setUpdatesEnabled(true);
}

void TUnitForm::MoveItems(int delta) {
    if (filtered_ || delta == 0) return;
    selected_ = GetSelectedUnits();
    if (selected_.empty()) return;
    const int last = unitList_->count() - 1;
    // The whole selection stops together at the edge.
    if (delta > 0 ? selected_.back() + delta > last : selected_.front() + delta < 0) return;

    std::vector<TUnitItem> items = ItemsOf(unitList_);
    std::vector<int> order = selected_;
    if (delta > 0) std::reverse(order.begin(), order.end());
    int current = unitList_->currentRow();
    int newCurrent = -1;
    std::vector<int> targets;
    for (int from : order) {
        int to = from + delta;
        if (delta > 0)
            std::rotate(items.begin() + from, items.begin() + from + 1, items.begin() + to + 1);
        else
            std::rotate(items.begin() + to, items.begin() + from, items.begin() + from + 1);
        targets.push_back(to);
        if (from == current) newCurrent = to;
    }
    unitList_->setUpdatesEnabled(false);
    SetItemsOf(unitList_, items);
    for (int t : targets)
        unitList_->item(t)->setSelected(true);
    unitList_->selectionModel()->setCurrentIndex(
        unitList_->model()->index(newCurrent >= 0 ? newCurrent : targets.front(), 0),
        QItemSelectionModel::NoUpdate);
    AssignItems();
    unitList_->setUpdatesEnabled(true);
    unitList_->scrollToItem(unitList_->currentItem());
}

void TUnitForm::AssignItems() {
    ITabControl* tabs = Tabs();
    const int count = unitList_->count();
    if (tabs) {
        std::vector<TTabEntry> row = tabs->GetTabs();
        // A row that changed behind the window's back (a page closed or renamed) is not
        // overwritten with a stale list: the list is filled from it instead.
        bool stale = int(row.size()) != count;
        for (int i = 0; i < count && !stale; ++i) {
            int old = ItemObject(unitList_, i);
            stale = old < 0 || old >= int(row.size()) || row[size_t(old)].Text != ItemText(unitList_, i);
        }
        if (stale) {
            FillUnitList();
            return;
        }
        const int active = tabs->GetTabIndex();
        int newIndex = count == 0 ? 0 : count;
        std::vector<TTabEntry> entries(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            int old = ItemObject(unitList_, i);
            if (old == active) newIndex = i;
            entries[size_t(i)] = row[size_t(old)];
        }
        tabs->SetTabs(entries);
        tabs->SetTabIndex(newIndex);
    }
    for (int i = 0; i < count; ++i)
        if (ItemObject(unitList_, i) != i) unitList_->item(i)->setData(ObjectRole, i);
}

void TUnitForm::UnitListDragOver(int index, bool& accept) {
    accept = unitList_->selectedItems().size() > 0 &&
             (index < GetFirstSelected() || index > GetLastSelected());
    if (!accept) return;
    dropIndex_ = index;
    if (index < unitList_->count())
        unitList_->selectionModel()->setCurrentIndex(unitList_->model()->index(index, 0),
                                                     QItemSelectionModel::NoUpdate);
}

void TUnitForm::UnitListDragDrop() {
    const int target = dropIndex_;
    dropIndex_ = -1;
    if (target < 0 || dragStart_ < 0) return;
    int delta = target - dragStart_;
    // Dropped beyond the block, the block ends on the target.
    if (target > dragStart_) delta = delta - int(GetSelectedUnits().size()) + 1;
    unitList_->selectionModel()->setCurrentIndex(unitList_->model()->index(dragStart_, 0),
                                                 QItemSelectionModel::NoUpdate);
    MoveItems(delta);
}

// ---------------------------------------------------------------------------------------------
// Selection

int TUnitForm::GetSelectedUnit() const {
    return unitList_->selectionModel()->hasSelection() ? unitList_->currentRow() : -1;
}

std::vector<int> TUnitForm::GetSelectedUnits() const {
    std::vector<int> rows;
    for (const QModelIndex& index : unitList_->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

int TUnitForm::GetFirstSelected() const {
    std::vector<int> rows = GetSelectedUnits();
    return rows.empty() ? -1 : rows.front();
}

int TUnitForm::GetLastSelected() const {
    std::vector<int> rows = GetSelectedUnits();
    return rows.empty() ? -1 : rows.back();
}

void TUnitForm::SelectOnly(int index) {
    unitList_->clearSelection();
    if (index < 0 || index >= unitList_->count()) return;
    unitList_->setCurrentRow(index, QItemSelectionModel::ClearAndSelect);
    unitList_->scrollToItem(unitList_->item(index));
}

void TUnitForm::FocusList() {
    unitList_->setFocus();
}

// ---------------------------------------------------------------------------------------------
// Activating and closing units

bool TUnitForm::HasDublicate(const std::string& name) const {
    const std::string wanted = ExtractFileNameEx(name);
    bool found = false;
    for (IOTASourceEditor* editor : sourceEditors_) {
        if (!SameText(ExtractFileNameEx(editor->GetFileName()), wanted)) continue;
        if (found) return true;
        found = true;
        if (editor->GetEditViewCount() > 1) return true;
    }
    return false;
}

bool TUnitForm::HasDublicate() const {
    return std::any_of(selected_.begin(), selected_.end(),
                       [this](int i) { return HasDublicate(ItemText(unitList_, i)); });
}

bool TUnitForm::HasProjectModule() const {
    _di_IOTAProject project = GetActiveProject();
    if (!project) return false;
    const std::string name = ExtractFileNameEx(project->GetFileName());
    return std::any_of(selected_.begin(), selected_.end(),
                       [&](int i) { return SameText(name, ItemText(unitList_, i)); });
}

int TUnitForm::FindSourceEditor(const std::string& name) const {
    const std::string wanted = ExtractFileNameEx(name);
    for (size_t i = 0; i < sourceEditors_.size(); ++i)
        if (SameText(ExtractFileNameEx(sourceEditors_[i]->GetFileName()), wanted)) return int(i);
    return -1;
}

void TUnitForm::acShowExecute() {
    OpenUnit();
    if (manager_->CloseFormOnShowUnit) close();
}

void TUnitForm::OpenUnit() {
    int index = GetSelectedUnit();
    if (index >= 0) OpenSelectedUnit(index, !HasDublicate(ItemText(unitList_, index)));
    FocusList();
}

void TUnitForm::OpenSelectedUnit(int index, bool byEditor) {
    // The edit window stands disabled like every other form; it takes the page enabled.
    QWidget* editForm = editorControl_ ? editorControl_->window() : nullptr;
    if (editForm) editForm->setEnabled(true);
    if (byEditor) {
        int editor = FindSourceEditor(ItemText(unitList_, index));
        if (editor >= 0) sourceEditors_[size_t(editor)]->Show();
    } else if (ITabControl* tabs = Tabs(); tabs && index >= 0) {
        // Names the source editors can't tell apart go by the tab.
        tabs->SetTabIndex(ItemObject(unitList_, index));
        tabs->Change();
        if (editorControl_) editorControl_->setFocus();
    }
    if (editForm) editForm->setEnabled(false);
}

void TUnitForm::acCloseExecute() {
    try {
        CloseUnits();
    } catch (...) {
        // The list never goes on showing units that were closed already.
        if (Application) Application->ProcessMessages();
        FillUnitList();
        throw;
    }
}

void TUnitForm::CloseUnits() {
    selected_ = GetSelectedUnits();
    if (!HasDublicate() && !HasProjectModule()) {
        for (auto it = selected_.rbegin(); it != selected_.rend(); ++it) {
            int editor = FindSourceEditor(ItemText(unitList_, *it));
            if (editor < 0) continue;
            _di_IOTAModule module = sourceEditors_[size_t(editor)]->GetModule();
            sourceEditors_.erase(sourceEditors_.begin() + editor);
            if (module) module->Close();
            if (Application) Application->ProcessMessages();
        }
        selected_.clear();
        FillUnitList();
        FocusList();
    } else if (!selected_.empty()) {
        // Page by page, each after the IDE's prompt for the one before has gone.
        timer_->start();
        UpdateActions();
    }
}

void TUnitForm::CloseOpenedUnit() {
    _di_IOTAEditorServices services = IDEService<IOTAEditorServices>();
    _di_IOTAEditView view = services ? services->GetTopView() : nullptr;
    if (_di_IOTAEditActions actions = view ? Query<IOTAEditActions>(view) : nullptr)
        actions->ClosePage();
}

void TUnitForm::TimerTimer() {
    if (selected_.empty() && !ConfirmWindowOpen()) {
        timer_->stop();
        FillUnitList();
        FocusList();
        return;
    }
    // The user is answering the IDE's prompt.
    if (ConfirmWindowOpen()) return;
    int index = selected_.back();
    selected_.pop_back();
    if (index < unitList_->count()) {
        OpenSelectedUnit(index, false);
        CloseOpenedUnit();
    }
    if (Application) Application->ProcessMessages();
}

// ---------------------------------------------------------------------------------------------
// The commands' state and the settings menu

void TUnitForm::UpdateActions() {
    const bool any = unitList_->count() > 0;
    const bool idle = !Closing();
    acShow_->setEnabled(any && idle);
    acClose_->setEnabled(any && idle);
    acMoveUp_->setEnabled(!filtered_ && any && idle);
    acMoveDown_->setEnabled(!filtered_ && any && idle);
    acSort_->setEnabled(!filtered_ && any && idle);
    acFilter_->setEnabled((filtered_ || any) && idle);
}

void TUnitForm::FillSettingMenu() {
    const char* captions[] = {"Drag modules by mouse", "Form close on module activation",
                              "Show filter panel", "Move focus after filtering"};
    for (int tag = 1; tag <= 4; ++tag) {
        QAction* item = pmSettings_->addAction(QString::fromLatin1(captions[tag - 1]));
        item->setCheckable(true);
        item->setData(tag);
        connect(item, &QAction::triggered, this, [this, tag] { SettingItemClick(tag); });
    }
}

void TUnitForm::pmSettingsPopup() {
    const bool values[] = {manager_->DragModeAllowed, manager_->CloseFormOnShowUnit,
                           manager_->FilterPanelVisible, manager_->JumpToUnitsOnApllyFilter};
    const QList<QAction*> items = pmSettings_->actions();
    for (int i = 0; i < items.size() && i < 4; ++i)
        items[i]->setChecked(values[i]);
}

void TUnitForm::SettingItemClick(int tag) {
    switch (tag) {
    case 1:
        manager_->DragModeAllowed = !manager_->DragModeAllowed;
        unitList_->DragAllowed = manager_->DragModeAllowed;
        break;
    case 2:
        manager_->CloseFormOnShowUnit = !manager_->CloseFormOnShowUnit;
        break;
    case 3:
        manager_->FilterPanelVisible = !manager_->FilterPanelVisible;
        UpdateFilterControl(manager_->FilterPanelVisible);
        break;
    case 4:
        manager_->JumpToUnitsOnApllyFilter = !manager_->JumpToUnitsOnApllyFilter;
        break;
    }
}

} // namespace zelvane
