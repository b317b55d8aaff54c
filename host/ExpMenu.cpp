// The experts' menu: the "Z&elvane" item in the IDE's main menu, its items made from the
// settings tree's menu data, their actions in the IDE's action list, and the command table that
// carries a click or a hot key to the expert's procedure.
#include "host/ExpMenu.h"

#include "host/ExpMng.h"
#include "rtl/Menus.h"
#include "toolsapi/Forms.h"
#include "toolsapi/QtBridge.h"
#include "toolsapi/ToolsAPI.h"

#include <QAction>
#include <QActionGroup>
#include <QIcon>
#include <QMenu>
#include <QMenuBar>

#include <set>

namespace zelvane {

using namespace rtl;
using ToolsAPI::Application;
using ToolsAPI::FromBytes;
using ToolsAPI::ToBytes;

RTL_IMPLEMENT_CLASS(TExpAction)
RTL_IMPLEMENT_CLASS(TExpMenuItem)

namespace {

constexpr const char* TopItemName = "ZelvaneMenu";
constexpr const char* TopItemCaption = "Z&elvane";
constexpr const char* ItemNamePrefix = "ZelvaneMenuItem";

// The platform's caption comparison: accelerator marks left out, case ignored.
bool SameCaption(const QString& caption, const std::string& text) {
    QString a = caption, b = FromBytes(text);
    return a.remove(QLatin1Char('&')).compare(b.remove(QLatin1Char('&')), Qt::CaseInsensitive) == 0;
}

int FindCaption(const QList<QAction*>& items, const std::string& caption) {
    for (int i = 0; i < items.size(); ++i)
        if (!items[i]->isSeparator() && SameCaption(items[i]->text(), caption)) return i;
    return -1;
}

// Inserts the entry into the widget's actions at the index; past the end it is appended.
void InsertEntry(QWidget* parent, int index, QAction* entry) {
    QList<QAction*> items = parent->actions();
    parent->insertAction(index >= 0 && index < items.size() ? items[index] : nullptr, entry);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Actions

TExpAction::TExpAction() : action_(new QAction()) {
    QObject::connect(action_, &QAction::triggered, action_, [this](bool checked) {
        // A radio item shows the choice that its command makes; the click itself checks nothing.
        if (action_->isCheckable()) action_->setChecked(!checked);
        // As the IDE's action dispatch: what the command raises goes to the application.
        try {
            if (OnExecute) OnExecute(this);
        } catch (...) {
            if (Application) Application->HandleException(this);
        }
    });
    if (Application) Application->SetActionUpdate(action_, [this](QAction*) { Update(); });
}

TExpAction::~TExpAction() {
    if (Application) Application->SetActionUpdate(action_, nullptr);
    delete action_;
}

std::string TExpAction::Caption() const {
    return ToBytes(action_->text());
}

void TExpAction::SetCaption(const std::string& value) {
    action_->setText(FromBytes(value));
}

TShortCut TExpAction::ShortCut() const {
    return ToolsAPI::KeySequenceToShortCut(action_->shortcut());
}

void TExpAction::SetShortCut(TShortCut value) {
    action_->setShortcuts(ToolsAPI::ShortCutToKeySequences(value));
}

bool TExpAction::Enabled() const {
    return action_->isEnabled();
}

void TExpAction::SetEnabled(bool value) {
    action_->setEnabled(value);
}

bool TExpAction::Checked() const {
    return action_->isChecked();
}

void TExpAction::SetChecked(bool value) {
    action_->setCheckable(true);
    action_->setChecked(value);
}

void TExpAction::Update() {
    if (OnUpdate) OnUpdate(this);
}

// ---------------------------------------------------------------------------------------------
// Menu items

TExpMenuItem::TExpMenuItem(TExpAction* action) : entry_(action->Action()), action_(action) {
    changed_ = QObject::connect(entry_, &QAction::changed, entry_, [this] { MenuChanged(); });
    MenuChanged();
}

TExpMenuItem::TExpMenuItem(const std::string& caption) : entry_(new QAction()), ownsEntry_(true) {
    if (caption == "-")
        entry_->setSeparator(true);
    else
        entry_->setText(FromBytes(caption));
}

std::unique_ptr<TExpMenuItem> TExpMenuItem::MakeTop(const std::string& name,
                                                    const std::string& caption) {
    std::unique_ptr<TExpMenuItem> item(new TExpMenuItem());
    item->subMenu_ = std::make_unique<QMenu>(FromBytes(caption));
    item->subMenu_->setObjectName(QString::fromStdString(name));
    item->entry_ = item->subMenu_->menuAction();
    return item;
}

TExpMenuItem::~TExpMenuItem() {
    QObject::disconnect(changed_);
    Clear();
    bool entryOfMenu = subMenu_ && entry_ == subMenu_->menuAction();
    if (subMenu_ && !entryOfMenu) entry_->setMenu(static_cast<QMenu*>(nullptr));
    subMenu_.reset();
    if (ownsEntry_) delete entry_;
}

QMenu* TExpMenuItem::SubMenu() {
    if (!subMenu_) {
        subMenu_ = std::make_unique<QMenu>(entry_->text());
        entry_->setMenu(subMenu_.get());
    }
    return subMenu_.get();
}

bool TExpMenuItem::IsLine() const {
    return entry_->isSeparator();
}

std::string TExpMenuItem::Name() const {
    return entry_->objectName().toStdString();
}

void TExpMenuItem::SetName(const std::string& name) {
    entry_->setObjectName(QString::fromStdString(name));
}

std::string TExpMenuItem::Caption() const {
    return ToBytes(entry_->text());
}

void TExpMenuItem::SetImageIndex(int32_t index) {
    imageIndex_ = index;
    SetItemImage(entry_, index);
}

void TExpMenuItem::SetRadioItem(bool value) {
    entry_->setCheckable(value);
}

void TExpMenuItem::Add(std::unique_ptr<TExpMenuItem> child) {
    SubMenu()->addAction(child->Entry());
    children_.push_back(std::move(child));
}

void TExpMenuItem::Clear() {
    while (!children_.empty()) {
        if (subMenu_) subMenu_->removeAction(children_.back()->Entry());
        children_.pop_back();
    }
}

void TExpMenuItem::MenuChanged() {
    if (!action_) return;
    if (SavedShortCut == 0)
        SavedShortCut = action_->ShortCut();
    else if (action_->ShortCut() != SavedShortCut)
        action_->SetShortCut(SavedShortCut);
}

void SetItemImage(QAction* entry, int32_t imageIndex) {
    ToolsAPI::_di_INTAServices services = ToolsAPI::IDEService<ToolsAPI::INTAServices>();
    entry->setIcon(imageIndex >= 0 && services ? services->GetImage(imageIndex) : QIcon());
}

// ---------------------------------------------------------------------------------------------
// Building and removing the menu

void TExpManager::CreateExpertMenu() {
    AddTopMMenuItem();
    AddMMenuItems();
}

// The top item goes beside the item that the settings name: in the main menu, or in the first
// submenu that holds it. With no such item it goes before the last top-level item.
void TExpManager::AddTopMMenuItem() {
    ToolsAPI::_di_INTAServices services = ToolsAPI::IDEService<ToolsAPI::INTAServices>();
    QMenuBar* bar = services ? services->GetMainMenu() : nullptr;
    if (!bar || !services->GetActionList()) return;

    QWidget* parent = bar;
    int index = FindCaption(bar->actions(), data_->MainMenuSearchItem);
    for (QAction* top : bar->actions()) {
        if (index >= 0) break;
        if (!top->menu()) continue;
        index = FindCaption(top->menu()->actions(), data_->MainMenuSearchItem);
        if (index >= 0) parent = top->menu();
    }
    bool found = index >= 0;
    if (!found) index = int(bar->actions().size()) - 1;
    bool before = !found || data_->InsertMenuBeforeItem;

    topItem_ = TExpMenuItem::MakeTop(TopItemName, TopItemCaption);
    QMenu* menu = topItem_->SubMenu();
    QObject::connect(menu, &QMenu::aboutToShow, menu, [this, menu] { ExpMenuClick(menu); });
    int at = before ? index : index + 1;
    InsertEntry(parent, at, topItem_->Entry());

    if (found && data_->MenuHaveLineBefore) {
        lineBefore_ = std::make_unique<TExpMenuItem>("-");
        parent->insertAction(topItem_->Entry(), lineBefore_->Entry());
    }
    if (found && data_->MenuHaveLineAfter) {
        lineAfter_ = std::make_unique<TExpMenuItem>("-");
        InsertEntry(parent, int(parent->actions().indexOf(topItem_->Entry())) + 1,
                    lineAfter_->Entry());
    }
}

TExpAction* TExpManager::NewAction(const std::string& caption, TExpActionList& list) {
    auto action = std::make_unique<TExpAction>();
    action->SetCaption(caption);
    action->OnExecute = TNotifyEvent::Of<&TExpManager::CommonExpertExecProc>(this);
    ToolsAPI::IDEService<ToolsAPI::INTAServices>()->GetActionList()->addAction(action->Action());
    list.push_back(std::move(action));
    return list.back().get();
}

// One action and one item per item of the menu data, in its order; each item is announced to
// the experts as soon as it is made. A key that an earlier item has already is not given again:
// it runs the first item that has it, and the later one shows none (its stored key is kept, for
// the user to change in the settings).
void TExpManager::AddMMenuItems() {
    ToolsAPI::_di_INTAServices services = ToolsAPI::IDEService<ToolsAPI::INTAServices>();
    if (!topItem_ || !services || !services->GetActionList()) return;
    itemCounter_ = 1;
    TExpMenuData* menuData = ExpData->MenuData();
    execProcs_.assign(size_t(menuData->Count()), {});
    std::set<TShortCut> keys;
    for (int i = 0; i < menuData->Count(); ++i) {
        TExpMenuItemData* data = menuData->Item(i);
        if (data->HaveLineBefore) topItem_->Add(std::make_unique<TExpMenuItem>("-"));
        TExpAction* action = NewAction(data->Caption, expActions_);
        TShortCut key = TextToShortCut(data->ShortCutText);
        if (key != 0 && keys.insert(key).second) action->SetShortCut(key);
        action->OnUpdate = data->OnUpdate;
        execProcs_[size_t(i)] = {action, data->OnExecute};

        auto item = std::make_unique<TExpMenuItem>(action);
        item->SetName(ItemNamePrefix + std::to_string(itemCounter_++));
        item->SetImageIndex(data->ImageIndex);
        TExpMenuItem* made = item.get();
        topItem_->Add(std::move(item));
        MenuNotify(made, data);
    }
}

// Items go before actions, so that no item is left with a dead action.
void TExpManager::DeleteExpertMenu() {
    langItem_ = nullptr;
    topItem_.reset();
    lineBefore_.reset();
    lineAfter_.reset();
    langActions_.clear();
    settingActions_.clear();
    expActions_.clear();
}

// ---------------------------------------------------------------------------------------------
// The submenus

TExpMenuItem* TExpManager::CreateNewItem(const std::string& caption, const TNotifyEvent& proc,
                                         TExpMenuItem* parent, TExpActionList& list) {
    std::unique_ptr<TExpMenuItem> item;
    if (proc) {
        TExpAction* action = NewAction(caption, list);
        execProcs_.push_back({action, proc});
        item = std::make_unique<TExpMenuItem>(action);
    } else {
        item = std::make_unique<TExpMenuItem>(caption);
    }
    item->SetName(ItemNamePrefix + std::to_string(itemCounter_++));
    // The entries are radio items: one shows a mark only while its action is checked, which is
    // how the language entries show the choice.
    TExpMenuItem* made = item.get();
    parent->Add(std::move(item));
    return made;
}

void TExpManager::CreateSettingSubMenu(TExpMenuItem* parent) {
    if (!parent) return;
    ClearItems(parent, settingActions_);
    auto item = [&](const char* caption, const TNotifyEvent& proc) {
        return CreateNewItem(caption, proc, parent, settingActions_);
    };
    item("Edit...", TNotifyEvent::Of<&TExpManager::EditSettings2>(this))->SetImageIndex(36);
    item("Load default", TNotifyEvent::Of<&TExpManager::LoadDefaultSettings>(this));
    item("-", nullptr);
    langItem_ = item("Language", nullptr);
    CreateLangSubMenu(langItem_);
}

void TExpManager::ClearItems(TExpMenuItem* parent, TExpActionList& list) {
    parent->Clear();
    list.clear();
}

// ---------------------------------------------------------------------------------------------
// From a click to the expert

void TExpManager::ExpMenuClick(QMenu* menu) {
    if (!topItem_ || menu != topItem_->SubMenu()) return;
    if (!layoutSwitched_) SetEngLayout();
    for (int i = topItem_->Count() - 1; i >= 0; --i) {
        TExpMenuItem* item = topItem_->Item(i);
        if (item->OnMenuOpen) item->OnMenuOpen(item);
    }
    layoutSwitched_ = true;
}

bool TExpManager::FindExecProc(const TExpAction* action, TNotifyEvent& proc) const {
    proc = nullptr;
    for (const TExecProcRec& rec : execProcs_)
        if (rec.Action == action) {
            proc = rec.Proc;
            return true;
        }
    return false;
}

void TExpManager::CommonExpertExecProc(TObject* Sender) {
    TExpAction* action = nullptr;
    if (auto* item = Is<TExpMenuItem>(Sender))
        action = item->Action();
    else
        action = Is<TExpAction>(Sender);
    TNotifyEvent proc;
    if (action && FindExecProc(action, proc) && proc) proc(Sender);
}

void TExpManager::PrivateExpertExecProc(TObject* Sender, const TNotifyEvent& Proc) {
    if (Proc) Proc(Sender);
}

void SetSenderEnabled(rtl::TObject* Sender, bool enabled) {
    if (auto* action = rtl::Is<TExpAction>(Sender))
        action->SetEnabled(enabled);
    else if (auto* item = rtl::Is<TExpMenuItem>(Sender))
        item->Entry()->setEnabled(enabled);
}

} // namespace zelvane
