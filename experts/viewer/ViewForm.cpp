#include "experts/viewer/ViewForm.h"

#include "foundation/AppUtils.h"
#include "host/CrtlUtils.h"
#include "host/ExpData.h"
#include "host/OTAUtils.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "persistence/DataHndl2.h"
#include "rtl/FileStreams.h"
#include "rtl/Menus.h"
#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QChildEvent>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace zelvane {

using namespace rtl;
using namespace ToolsAPI;

namespace {

// The object of a list item: the index of its module in the window's module list.
constexpr int ModuleRole = Qt::UserRole;

// One row per mode: the control in front, the one behind, the host of a borrowed window, and
// the texts.
struct TViewModeInfo {
    QWidget* Front = nullptr;
    QWidget* Back = nullptr;
    QWidget* Host = nullptr;
    int ChoiceText = 0;
    int Caption = 0;
};


Qt::PenStyle ToQtPen(TPenStyle style) {
    switch (style) {
    case psSolid:
    case psInsideFrame:
        return Qt::SolidLine;
    case psDash:
        return Qt::DashLine;
    case psDot:
        return Qt::DotLine;
    case psDashDot:
        return Qt::DashDotLine;
    case psDashDotDot:
        return Qt::DashDotDotLine;
    case psClear:
        return Qt::NoPen;
    }
    return Qt::SolidLine;
}


// The open module of the file (compared with case), and its form or source editor.
// The open modules of the info's file, compared with case.
std::vector<_di_IOTAModule> OpenModulesOf(const _di_IOTAModuleInfo& info) {
    std::vector<_di_IOTAModule> found;
    _di_IOTAModuleServices services = IDEService<IOTAModuleServices>();
    if (!services) return found;
    std::string file = info->GetFileName();
    for (int i = 0; i < services->GetModuleCount(); ++i)
        if (_di_IOTAModule module = services->GetModule(i); module && module->GetFileName() == file)
            found.push_back(module);
    return found;
}

_di_IOTAEditor EditorOfModule(const _di_IOTAModule& module, TViewModuleMode mode) {
    if (!module) return nullptr;
    if (mode == svmForm) return GetFormEditorFromModule(module);
    return GetSourceEditorFromModule(module);
}

// The form or source editor of the first open module of the info's file that has one.
bool FindOpenedEditor(const std::vector<_di_IOTAModule>& modules, TViewModuleMode mode,
                      _di_IOTAEditor& editor) {
    editor = nullptr;
    for (const _di_IOTAModule& module : modules)
        if ((editor = EditorOfModule(module, mode))) return true;
    return false;
}

// The DT_PATH_ELLIPSIS rule: the end of the path, from its last delimiter, stays whole, and
// the middle gives way to "..." until the text fits.
QString PathEllipsis(const QString& path, const QFontMetrics& fm, int width) {
    if (fm.horizontalAdvance(path) <= width) return path;
    int cut = int(std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\'))));
    QString tail = cut >= 0 ? path.mid(cut) : path;
    QString head = cut >= 0 ? path.left(cut) : QString();
    const QString dots = QStringLiteral("...");
    while (!head.isEmpty()) {
        head.chop(1);
        QString text = head + dots + tail;
        if (fm.horizontalAdvance(text) <= width) return text;
    }
    return dots + tail;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The status bar: three panels, the last drawn by the window (the file, cut in the middle when
// it is long) and reaching to the edge.

// The last panel's text is the file, cut in the middle to fit when EllipsisFilePath is on.
class TPathPanel : public QLabel {
public:
    TPathPanel(QWidget* parent, const TViewFormMng* manager) : QLabel(parent), manager_(manager) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        QRect r = contentsRect().adjusted(1, 0, -14, 0);
        QString shown = manager_->EllipsisFilePath ? PathEllipsis(text(), p.fontMetrics(), r.width())
                                                   : text();
        p.drawText(r, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shown);
    }

private:
    const TViewFormMng* manager_;
};

class TViewStatusBar : public QWidget {
public:
    TViewStatusBar(QWidget* parent, const TViewFormMng* manager) : QWidget(parent) {
        setObjectName(QStringLiteral("StatusBar"));
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 1, 0, 1);
        layout->setSpacing(2);
        for (int i = 0; i < 3; ++i) {
            Panels[i] = i == 2 ? new TPathPanel(this, manager) : new QLabel(this);
            Panels[i]->setObjectName(QStringLiteral("StatusPanel%1").arg(i));
            Panels[i]->setFrameStyle(QFrame::Panel | QFrame::Sunken);
            layout->addWidget(Panels[i], i == 2 ? 1 : 0);
        }
        SetWidths(25, 72);
    }
    QLabel* Panels[3];

    void SetText(int panel, const QString& text) { Panels[panel]->setText(text); }
    void SetWidths(int w0, int w1) {
        for (int i = 0; i < 2; ++i) {
            int w = i == 0 ? w0 : w1;
            Panels[i]->setFixedWidth(w);
            Panels[i]->setVisible(w > 0);
        }
    }
};

// ---------------------------------------------------------------------------------------------
// The list's items, drawn as the settings say: the fonts of forms, units with a form and units
// without, and the line between the groups.

class TModuleListDelegate : public QStyledItemDelegate {
public:
    TModuleListDelegate(TViewForm* form, const TViewFormMng* manager)
        : QStyledItemDelegate(form), form_(form), manager_(manager) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {option.rect.width(), std::max(13, option.fontMetrics.height() + 2)};
    }

    void paint(QPainter* p, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        bool selected = option.state & QStyle::State_Selected;
        const QPalette& pal = option.palette;
        p->save();
        p->fillRect(option.rect, selected ? pal.highlight() : pal.base());
        QFont font = option.font;
        QColor color = selected ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::Text);
        if (manager_->ExtendedDrawing) {
            const TFont* own = manager_->GetFormFont();
            if (form_->ViewMode() == svmUnit) {
                _di_IOTAModuleInfo info = form_->ModuleAt(index.row());
                own = info && !info->GetFormName().empty() ? manager_->GetFormUnitFont()
                                                           : manager_->GetUnitFont();
            }
            font = ToQFont(*own);
            if (!selected) color = ToQColor(own->Color);
        }
        QRect r = option.rect;
        if (option.direction == Qt::RightToLeft)
            r.setRight(r.right() - 2);
        else
            r.setLeft(r.left() + 2);
        p->setFont(font);
        p->setPen(color);
        p->drawText(r, Qt::AlignVCenter | Qt::TextSingleLine |
                           (option.direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft),
                    index.data().toString());
        if (form_->ViewMode() == svmUnit && manager_->GroupedUnits && manager_->SeparatorAllowed &&
            index.row() == form_->SeparatorIndex() && index.row() != 0) {
            p->setPen(QPen(ToQColor(manager_->SeparatorColor), 1, ToQtPen(manager_->SeparatorStyle)));
            p->drawLine(r.left(), option.rect.top(), option.rect.right(), option.rect.top());
        }
        if (option.state & QStyle::State_HasFocus) {
            p->setPen(QPen(pal.color(QPalette::WindowText), 1, Qt::DotLine));
            p->drawRect(option.rect.adjusted(0, 0, -1, -1));
        }
        p->restore();
    }

private:
    TViewForm* form_;
    const TViewFormMng* manager_;
};

// ---------------------------------------------------------------------------------------------
// The panels

TFormPanel::TFormPanel(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("FormPanel"));
    // The panel is disabled so that the form in it takes no input, but the form is shown as it
    // is: a disabled control here paints in the colours of an enabled one.
    QPalette shown = palette();
    for (int role = 0; role < QPalette::NColorRoles; ++role)
        shown.setColor(QPalette::Disabled, QPalette::ColorRole(role),
                       shown.color(QPalette::Active, QPalette::ColorRole(role)));
    setPalette(shown);
}

void TFormPanel::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (Warning.isEmpty()) return;
    QPainter p(this);
    p.setFont(WarningFont);
    p.setPen(palette().color(QPalette::Active, QPalette::WindowText));
    p.drawText(QPoint(1, 1 + p.fontMetrics().ascent()), Warning);
}

TUnitBox::TUnitBox(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("UnitBox"));
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
}

bool TUnitBox::event(QEvent* e) {
    bool result = QFrame::event(e);
    if (e->type() == QEvent::ChildAdded || e->type() == QEvent::Resize ||
        e->type() == QEvent::LayoutRequest)
        FillChildren();
    return result;
}

void TUnitBox::FillChildren() {
    for (QObject* child : children())
        if (auto* w = qobject_cast<QWidget*>(child); w && !w->isWindow())
            w->setGeometry(contentsRect());
}

// ---------------------------------------------------------------------------------------------
// The window

TViewForm::TViewForm(QWidget* owner, TViewFormMng* manager, TViewModuleMode mode)
    : TSharedForm(owner, manager), manager_(manager), viewMode_(mode) {
    setObjectName(QStringLiteral("ViewForm"));
    setWindowFlags(Qt::Dialog | Qt::WindowStaysOnTopHint | Qt::WindowTitleHint |
                   Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint |
                   Qt::WindowCloseButtonHint);
    resize(476, 263);
    handle_ = AllocateHWnd([this](TMessage& m) { WndProc(m); });

    auto* commonPanel = new QWidget(this);
    commonPanel->setObjectName(QStringLiteral("CommonPanel"));
    splitter_ = new QSplitter(Qt::Horizontal, commonPanel);
    splitter_->setObjectName(QStringLiteral("Splitter"));
    splitter_->setHandleWidth(3);
    splitter_->setChildrenCollapsible(false);

    modulePanel_ = new QWidget(splitter_);
    modulePanel_->setObjectName(QStringLiteral("ModulePanel"));
    modulePanel_->setMinimumWidth(100);
    moduleChoice_ = new QComboBox(modulePanel_);
    moduleChoice_->setObjectName(QStringLiteral("ModuleChoice"));
    moduleList_ = new QListWidget(modulePanel_);
    moduleList_->setObjectName(QStringLiteral("ModuleList"));
    moduleList_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    moduleList_->setMinimumSize(100, 65);
    moduleList_->setUniformItemSizes(true);
    moduleList_->setItemDelegate(new TModuleListDelegate(this, manager));
    auto* moduleLayout = new QVBoxLayout(modulePanel_);
    moduleLayout->setContentsMargins(2, 2, 2, 2);
    moduleLayout->setSpacing(2);
    moduleLayout->addWidget(moduleChoice_);
    moduleLayout->addWidget(moduleList_, 1);

    controlPanel_ = new QWidget(splitter_);
    controlPanel_->setObjectName(QStringLiteral("ControlPanel"));
    controlPanel_->setMinimumWidth(100);
    formBox_ = new QScrollArea(controlPanel_);
    formBox_->setObjectName(QStringLiteral("FormBox"));
    formBox_->setMinimumWidth(100);
    formHolder_ = new QWidget;
    formPanel_ = new TFormPanel(formHolder_);
    formPanel_->setGeometry(5, 5, 33, 33);
    formPanel_->setEnabled(false);
    formPanel_->installEventFilter(this);
    formHolder_->resize(43, 43);
    formBox_->setWidget(formHolder_);
    formBox_->setWidgetResizable(false);
    unitBox_ = new TUnitBox(controlPanel_);
    auto* controlLayout = new QVBoxLayout(controlPanel_);
    controlLayout->setContentsMargins(2, 2, 2, 2);
    controlLayout->addWidget(formBox_);
    controlLayout->addWidget(unitBox_);
    controlPanel_->hide();

    auto* toolPanel = new QWidget(commonPanel);
    toolPanel->setObjectName(QStringLiteral("ToolPanel"));
    toolPanel->setFixedWidth(89);
    btnOk_ = new QPushButton(QStringLiteral("OK"), toolPanel);
    btnOk_->setObjectName(QStringLiteral("btnOk"));
    btnOk_->setDefault(true);
    btnCancel_ = new QPushButton(toolPanel);
    btnCancel_->setObjectName(QStringLiteral("btnCancel"));
    btnMore_ = new QToolButton(toolPanel);
    btnMore_->setObjectName(QStringLiteral("btnMore"));
    btnMore_->setCheckable(true);
    btnMore_->setAutoRaise(true);
    auto* toolLayout = new QVBoxLayout(toolPanel);
    toolLayout->setContentsMargins(6, 6, 6, 6);
    toolLayout->addWidget(btnOk_);
    toolLayout->addWidget(btnCancel_);
    toolLayout->addStretch(1);
    toolLayout->addWidget(btnMore_);

    auto* commonLayout = new QHBoxLayout(commonPanel);
    commonLayout->setContentsMargins(0, 0, 0, 0);
    commonLayout->setSpacing(0);
    commonLayout->addWidget(splitter_, 1);
    commonLayout->addWidget(toolPanel);

    statusBar_ = new TViewStatusBar(this, manager);
    statusBar_->SetText(0, QStringLiteral("BIN"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(commonPanel, 1);
    layout->addWidget(statusBar_);

    popupMenu_ = new QMenu(this);
    popupMenu_->setObjectName(QStringLiteral("PopupMenu1"));
    n1_ = popupMenu_->addAction(QString());
    n1_->setObjectName(QStringLiteral("N1"));
    n3_ = popupMenu_->addAction(QString());
    n3_->setObjectName(QStringLiteral("N3"));
    for (QAction* item : {n1_, n3_})
        item->setCheckable(true);
    connect(n1_, &QAction::triggered, this, [this] { ToggleSetting(n1_, 1); });
    connect(n3_, &QAction::triggered, this, [this] { ToggleSetting(n3_, 2); });
    connect(popupMenu_, &QMenu::aboutToShow, this, [this] { PopupMenuPopup(); });
    for (QWidget* w : {static_cast<QWidget*>(moduleList_), static_cast<QWidget*>(moduleChoice_),
                       static_cast<QWidget*>(formBox_)}) {
        w->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(w, &QWidget::customContextMenuRequested, this,
                [this, w](const QPoint& pos) { popupMenu_->popup(w->mapToGlobal(pos)); });
    }

    // OK is the default button: Enter anywhere in the window chooses.
    auto* choose = new QAction(this);
    choose->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    choose->setShortcutContext(Qt::WindowShortcut);
    addAction(choose);
    connect(choose, &QAction::triggered, btnOk_, &QPushButton::click);
    connect(btnOk_, &QPushButton::clicked, this, [this] { SetModalResult(mrOk); });
    connect(btnCancel_, &QPushButton::clicked, this, [this] { SetModalResult(mrCancel); });
    connect(btnMore_, &QToolButton::clicked, this, [this] { SetEnhancedState(btnMore_->isChecked()); });
    connect(moduleChoice_, &QComboBox::activated, this,
            [this](int index) { SetViewMode(TViewModuleMode(std::clamp(index, 0, 1))); });
    connect(moduleList_, &QListWidget::currentRowChanged, this, [this] { PostProcessModule(); });
    connect(moduleList_, &QListWidget::itemClicked, this, [this] { PostProcessModule(); });
    connect(moduleList_, &QListWidget::itemDoubleClicked, this, [this] { SetModalResult(mrOk); });
    // The placement stored on its key takes the preview state with it.
    connect(scSavePlacement(), &QAction::triggered, this,
            [this] { manager_->FormEnhancedState = enhanced_; });
}

TViewForm::~TViewForm() {
    // Deleted without a close (the package going): what was borrowed goes home all the same.
    if (!released_) FormCloseQuery();
    DeallocateHWnd(handle_);
    OpenEditor = nullptr;
}

void TViewForm::SetProperties() {
    TSharedForm::SetProperties();
    n1_->setText(FromBytes(LocaleStr(SSynchronizeModules)));
    n3_->setText(FromBytes(LocaleStr(SDisplayScrollbars)));
    btnCancel_->setText(FromBytes(LocaleStr(SCancelButton)));
    btnMore_->setText(FromBytes(LocaleStr(SMoreButton) + " >>"));
}

void TViewForm::FormCreate() {
    GetEditorInfo();
    TSharedForm::FormCreate();
    FillActionList();
    GetProjectModules(modules_);
    FillModuleChoice();
    moduleChoice_->setCurrentIndex(int(viewMode_));
    ProcessViewMode();
    CheckDisplayScrollbars();
}

void TViewForm::WriteFormData() {
    enhanced_ = manager_->FormEnhancedState;
    btnMore_->setChecked(enhanced_);
    if (enhanced_) {
        BuildControls();
        PostProcessModule();
    }
    TSharedForm::WriteFormData();
}

void TViewForm::ReadFormData() {
    TSharedForm::ReadFormData();
    if (manager_->GetFormSetting()->AutoSavePlacement) manager_->FormEnhancedState = enhanced_;
}

void TViewForm::showEvent(QShowEvent* event) {
    TSharedForm::showEvent(event);
    if (!manager_->SetFocusToModules) {
        moduleChoice_->setFocus();
        return;
    }
    moduleList_->setFocus();
    if (manager_->SelectFocusedItem && moduleList_->count() > 0)
        if (QListWidgetItem* item = moduleList_->item(std::max(moduleList_->currentRow(), 0)))
            item->setSelected(true);
}

void TViewForm::closeEvent(QCloseEvent* event) {
    FormCloseQuery();
    TSharedForm::closeEvent(event);
}

void TViewForm::FormCloseQuery() {
    released_ = true;
    try {
        ReleaseShownForm();
        ReleaseEditors();
    } catch (...) {
        CheckAddErrorLog(nullptr);
        if (Application) Application->HandleException(nullptr);
    }
}

bool TViewForm::eventFilter(QObject* watched, QEvent* event) {
    // The scroll box's content follows the panel's size, with the panel's margin around it.
    if (watched == formPanel_ && (event->type() == QEvent::Resize || event->type() == QEvent::Move))
        formHolder_->resize(formPanel_->geometry().right() + 6, formPanel_->geometry().bottom() + 6);
    return TSharedForm::eventFilter(watched, event);
}

void TViewForm::WndProc(TMessage& message) {
    if (message.Msg == WM_VIEW_RETURNFOCUS) {
        auto* control = reinterpret_cast<QWidget*>(message.WParam);
        if (IsWindow(control) && control->window() == this) control->setFocus();
    } else if (message.Msg == WM_VIEW_PROCESSMODULE) {
        processPending_ = false;
        ProcessModule();
    }
}

// ---------------------------------------------------------------------------------------------
// The lists

_di_IOTAModuleInfo TViewForm::ModuleAt(int index) const {
    QListWidgetItem* item = moduleList_->item(index);
    if (!item) return nullptr;
    size_t at = size_t(item->data(ModuleRole).toInt());
    return at < modules_.size() ? modules_[at] : nullptr;
}

QString TViewForm::StatusText(int panel) const {
    return statusBar_->Panels[std::clamp(panel, 0, 2)]->text();
}

QString TViewForm::Warning() const {
    return formPanel_->Warning;
}

void TViewForm::FillModuleChoice() {
    moduleChoice_->clear();
    moduleChoice_->addItem(FromBytes(LocaleStr(SFormsChoice)));
    moduleChoice_->addItem(FromBytes(LocaleStr(SUnitsChoice)));
}

void TViewForm::FillModuleList() {
    struct TItem {
        std::string Name;
        int Module;
    };
    std::vector<TItem> items;
    for (size_t i = 0; i < modules_.size(); ++i) {
        const _di_IOTAModuleInfo& info = modules_[i];
        std::string name = viewMode_ == svmForm ? info->GetFormName() : info->GetName();
        std::string file = info->GetFileName();
        // Compiled packages and resources have no list entry; the test is a search of the
        // extension in one text, so that any part of those extensions is left out too.
        std::string ext = ExtractFileExt(file);
        if (name.empty() || file.empty() || std::string_view(".dcp.res").find(ext) != std::string::npos)
            continue;
        items.push_back({std::move(name), int(i)});
    }
    // The sort of the platform's string lists: without regard to case, stable for equal names.
    std::stable_sort(items.begin(), items.end(), [](const TItem& a, const TItem& b) {
        return AnsiCompareText(a.Name, b.Name) < 0;
    });
    if (viewMode_ == svmUnit && manager_->GroupedUnits) {
        // Units without a form go behind those with one, each group in its order.
        auto formless = std::stable_partition(items.begin(), items.end(), [this](const TItem& it) {
            return !modules_[size_t(it.Module)]->GetFormName().empty();
        });
        separatorIndex_ = int(formless - items.begin());
    }
    QSignalBlocker block(moduleList_);
    moduleList_->clear();
    for (const TItem& it : items) {
        auto* item = new QListWidgetItem(FromBytes(it.Name));
        item->setData(ModuleRole, it.Module);
        moduleList_->addItem(item);
    }
    // The focus stands on the first item, which nothing selects yet.
    if (moduleList_->count() > 0)
        moduleList_->setCurrentRow(0, QItemSelectionModel::NoUpdate);
}

void TViewForm::FillActionList() {
    // The window is modal, so the IDE's keys don't reach the experts; their commands are here.
    for (TExpMenuItemData* item : ExpMenuItems) {
        auto* action = new QAction(FromBytes(item->Caption), this);
        action->setObjectName(FromBytes(item->ItemID));
        action->setProperty("Category", QStringLiteral("FormActions"));
        action->setShortcuts(ShortCutToKeySequences(TextToShortCut(item->ShortCutText)));
        action->setShortcutContext(Qt::WindowShortcut);
        TNotifyEvent execute = item->OnExecute;
        connect(action, &QAction::triggered, this, [execute] {
            if (execute) execute(nullptr);
        });
        addAction(action);
        if (Application)
            Application->SetActionUpdate(action, [this](QAction* a) { CheckState(a); });
    }
}

void TViewForm::CheckState(QAction* action) {
    bool enabled = false;
    if (OpenEditor && OpenEditor->GetEditViewCount() > 0)
        if (_di_IOTAEditView view = OpenEditor->GetEditView(0))
            enabled = view->GetBlock() && view->GetBlock()->GetIsValid();
    action->setEnabled(enabled);
}

// ---------------------------------------------------------------------------------------------
// Modes and layout

void TViewForm::SetViewMode(TViewModuleMode mode) {
    if (mode == viewMode_) return;
    syncModule_ = nullptr;
    if ((manager_->SynchronizeModules || ServiceKeyPressed(VK_CONTROL)) && moduleList_->currentRow() != -1)
        syncModule_ = ModuleAt(moduleList_->currentRow());
    viewMode_ = mode;
    ReleaseShownForm();
    ProcessViewMode();
}

void TViewForm::ProcessViewMode() {
    FillModuleList();
    BuildControls();
    if ((manager_->SynchronizeModules || ServiceKeyPressed(VK_CONTROL)) && syncModule_) {
        for (int i = 0; i < moduleList_->count(); ++i)
            if (ModuleAt(i).get() == syncModule_.get()) {
                moduleList_->setCurrentRow(i);
                break;
            }
        syncModule_ = nullptr;
    }
    ProcessModule();
    setWindowTitle(FromBytes(LocaleStr(viewMode_ == svmForm ? SViewFormCaption : SViewUnitCaption)));
    moduleChoice_->setCurrentIndex(int(viewMode_));
}

void TViewForm::BuildControls() {
    BeginUpdateControl(this);
    QWidget* front = viewMode_ == svmForm ? static_cast<QWidget*>(formBox_) : unitBox_;
    QWidget* back = viewMode_ == svmForm ? static_cast<QWidget*>(unitBox_) : formBox_;
    if (enhanced_) {
        bool wasHidden = controlPanel_->isHidden();
        int oldWidth = width();
        back->hide();
        front->show();
        controlPanel_->show();
        if (wasHidden) {
            resize(oldWidth + 250, height());
            splitter_->setSizes({modulePanel_->width(), std::max(250, width() - 89 - modulePanel_->width())});
        }
        if (viewMode_ == svmForm)
            statusBar_->SetWidths(25, 75);
        else
            statusBar_->SetWidths(0, 0);
    } else {
        if (!controlPanel_->isHidden()) {
            int shrink = controlPanel_->width() + splitter_->handleWidth();
            controlPanel_->hide();
            resize(width() - shrink, height());
        }
        statusBar_->SetWidths(0, 0);
    }
    EndUpdateControl(this);
    RepaintControl(this, {rfAllChildren, rfUpdateNow});
}

void TViewForm::SetEnhancedState(bool value) {
    if (value == enhanced_) return;
    enhanced_ = value;
    btnMore_->setChecked(value);
    if (!value) ReleaseShownForm();
    BuildControls();
    ProcessModule();
}

void TViewForm::CheckDisplayScrollbars() {
    Qt::ScrollBarPolicy policy =
        manager_->DisplayFormScrollbars ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
    formBox_->setHorizontalScrollBarPolicy(policy);
    formBox_->setVerticalScrollBarPolicy(policy);
}

void TViewForm::PopupMenuPopup() {
    n3_->setChecked(viewMode_ == svmUnit ? manager_->DisplayUnitScrollbars
                                         : manager_->DisplayFormScrollbars);
    n1_->setChecked(manager_->SynchronizeModules);
}

void TViewForm::ToggleSetting(QAction* item, int tag) {
    // The item's own check has flipped already; in the unit mode the scroll bar item keeps the
    // check it had, as it always did.
    if (!(tag == 1 || viewMode_ == svmForm)) item->setChecked(!item->isChecked());
    bool checked = item->isChecked();
    if (tag == 1) {
        manager_->SynchronizeModules = checked;
    } else {
        if (viewMode_ == svmUnit)
            manager_->DisplayUnitScrollbars = checked;
        else
            manager_->DisplayFormScrollbars = checked;
        CheckDisplayScrollbars();
    }
}

void TViewForm::PostProcessModule() {
    if (processPending_) return;
    processPending_ = PostMessage(handle_, WM_VIEW_PROCESSMODULE, 0, 0);
    if (!processPending_) ProcessModule();
}

void TViewForm::ProcessModule() {
    try {
        DoProcessModule();
    } catch (...) {
        CheckAddErrorLog(nullptr);
        if (Application) Application->HandleException(nullptr);
    }
}

// ---------------------------------------------------------------------------------------------
// The preview

void TViewForm::DoProcessModule() {
    if (moduleList_->count() == 0) return;
    _di_IOTAModuleInfo info = ModuleAt(std::max(moduleList_->currentRow(), 0));
    if (!info) return;
    std::string file = info->GetFileName();
    if (viewMode_ == svmForm) file = ChangeFileExt(file, GetProjectFormExt());
    if (enhanced_ && viewMode_ == svmForm) {
        std::string designClass = info->GetDesignClass();
        statusBar_->SetText(1, FromBytes(designClass.empty() ? "TForm" : designClass));
    }
    statusBar_->SetText(2, FromBytes(file));
    if (!enhanced_) return;

    _di_IOTAEditor editor;
    std::vector<_di_IOTAModule> openModules = OpenModulesOf(info);
    bool wasOpen = FindOpenedEditor(openModules, viewMode_, editor);
    bool moduleWasOpen = !openModules.empty();
    _di_IOTAModule module = info->OpenModule();
    if (!wasOpen) editor = EditorOfModule(module, viewMode_);
    OpenEditor = Query<IOTASourceEditor>(editor).get();
    if (!editor) {
        // A module without what this mode shows (a form whose file is missing) stays open only
        // if it was open before.
        if (!moduleWasOpen && module) module->CloseModule(true);
        return;
    }
    if (viewMode_ == svmForm)
        ShowForm(info, wasOpen, file);
    else
        ShowUnit(editor, wasOpen);
}

void TViewForm::ShowForm(const _di_IOTAModuleInfo& info, bool wasOpen, std::string file) {
    if (file == shownFile_) {
        ShowStorageFormat(file);
        return;
    }
    ReleaseShownForm();
    formEditor_ = nullptr;
    shownControl_ = nullptr;
    wasOpen_ = false;
    shownFile_ = file;
    _di_IOTAModule module;
    if (!file.empty()) {
        try {
            wasOpen_ = wasOpen;
            module = info->OpenModule();
            formEditor_ = GetFormEditorFromModule(module);
            TDesignComponent* form = nullptr;
            if (formEditor_) {
                form = GetFormFromEditor(formEditor_);
                if (form) {
                    file = formEditor_->GetFileName();
                    statusBar_->SetText(2, FromBytes(file));
                }
            }
            shownControl_ = GetRootControl(form);
            if (!shownControl_) {
                FormWarning(FromBytes(LocaleStr(SClxFormsNotSupported)));
                if (!wasOpen_ && module) module->Close();
                formEditor_ = nullptr;
            } else {
                QWidget* control = shownControl_;
                wasVisible_ = IsWindowVisible(control);
                shownLeft_ = control->x();
                shownTop_ = control->y();
                ShowWindow(control, SW_HIDE);
                SetParent(control, formPanel_);
                SetWindowPos(control, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
                SetWindowPos(formPanel_, nullptr, 0, 0, control->width(), control->height(),
                             SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
                formEditor_->Show();
                // The show takes the focus; the list gets it back once the show is through.
                PostMessage(handle_, WM_VIEW_RETURNFOCUS, reinterpret_cast<uintptr_t>(moduleList_), 0);
            }
        } catch (...) {
            if (!wasOpen_ && module) module->Close();
            formEditor_ = nullptr;
            shownControl_ = nullptr;
            throw;
        }
    }
    ShowStorageFormat(file);
    shownFile_ = file;
}

void TViewForm::ShowUnit(const _di_IOTAEditor& editor, bool wasOpen) {
    EmbedEditorControl();
    TOpenedEditor* element = AddOpenedEditor(Query<IOTASourceEditor>(editor), wasOpen);
    editor->Show();
    // The show may have made the edit window anew.
    EmbedEditorControl();
    PostMessage(handle_, WM_VIEW_RETURNFOCUS, reinterpret_cast<uintptr_t>(moduleList_), 0);
    MakeEditorReadOnly(element);
}

void TViewForm::ShowStorageFormat(const std::string& file) {
    if (!FileExists(file)) return;
    TFileStream stream(file, fmOpenRead | fmShareDenyNone);
    TObjectStorageFormat format = osfBin;
    bool known = TestStreamFormat(&stream, format);
    statusBar_->SetText(0, QStringLiteral("%1").arg(known && format == osfText ? "TXT" : "BIN"));
}

void TViewForm::ReleaseShownForm() {
    if (formEditor_ && shownControl_) {
        QWidget* control = shownControl_;
        if (wasOpen_) {
            wasOpen_ = false;
            ShowWindow(control, SW_HIDE);
            SetParent(control, nullptr);
            control->move(shownLeft_, shownTop_);
            if (wasVisible_) {
                wasVisible_ = false;
                ShowWindow(control, SW_SHOW);
                activateWindow();
            }
        } else {
            ShowWindow(control, SW_HIDE);
            if (_di_IOTAModule module = formEditor_->GetModule()) module->CloseModule(true);
        }
    }
    formEditor_ = nullptr;
    shownControl_ = nullptr;
    shownFile_.clear();
    if (!formPanel_->Warning.isEmpty()) FormWarning(QString());
}

void TViewForm::ReleaseEditors() {
    std::vector<TOpenedEditor> editors = std::move(openedEditors_);
    openedEditors_.clear();
    for (TOpenedEditor& e : editors) {
        if (e.Keep) {
            if (manager_->EditorReadOnly && e.Editor->GetEditViewCount() > 0)
                e.Editor->GetEditView(0)->GetBuffer()->SetIsReadOnly(e.ReadOnly);
            continue;
        }
        _di_IOTAModule module = e.Editor->GetModule();
        e.Editor = nullptr;
        if (!module) continue;
        if (manager_->EditorReadOnly) {
            module->CloseModule(true);
        } else {
            if (manager_->EditorAutoSave) module->Save(false, true);
            module->Close();
        }
    }
    if (editorControl_ && editorParent_ && IsWindow(editWindow_.data())) {
        SetParent(editorControl_, editorParent_);
        if (activeEditor_) activeEditor_->Show();
        ShowWindow(editWindow_, SW_SHOW);
        // The IDE's idea of the focus is repaired after its window had been hidden.
        QWidget* main = Application ? Application->GetMainForm() : nullptr;
        if (main)
            PostMessage(main, WM_SETFOCUS, reinterpret_cast<uintptr_t>(editorControl_.data()),
                        reinterpret_cast<intptr_t>(editorControl_.data()));
        PostMessage(editorControl_, WM_SETFOCUS, reinterpret_cast<uintptr_t>(main),
                    reinterpret_cast<intptr_t>(main));
        PostMessage(editWindow_, WM_SETFOCUS, 0, 0);
    }
    activeEditor_ = nullptr;
    editWindow_ = nullptr;
    editorControl_ = nullptr;
    editorParent_ = nullptr;
}

void TViewForm::FormWarning(const QString& text) {
    if (text.isEmpty()) {
        formPanel_->Warning.clear();
        formPanel_->update();
        formPanel_->setGeometry(formPanel_->x(), formPanel_->y(), 30, 30);
        return;
    }
    formPanel_->WarningFont = unitBox_->font();
    QFontMetrics fm(formPanel_->WarningFont);
    formPanel_->setGeometry(formPanel_->x(), formPanel_->y(), fm.horizontalAdvance(text) + 2,
                            fm.height() + 2);
    formPanel_->Warning = text;
    formPanel_->update();
}

void TViewForm::GetEditorInfo() {
    editWindow_ = nullptr;
    editorControl_ = nullptr;
    editorParent_ = nullptr;
    activeEditor_ = GetActiveSourceEditor();
    if (QWidget* form = GetEditorForm()) {
        editWindow_ = form;
        editorControl_ = form->findChild<QWidget*>(QStringLiteral("Editor"));
    }
}

void TViewForm::EmbedEditorControl() {
    if (!editorControl_)
        if (QWidget* form = GetEditorForm2()) {
            editWindow_ = form;
            editorControl_ = form->findChild<QWidget*>(QStringLiteral("Editor"));
        }
    if (editorControl_ && editorControl_->parentWidget() != unitBox_) {
        editorParent_ = editorControl_->parentWidget();
        ShowWindow(editWindow_, SW_HIDE);
        SetParent(editorControl_, unitBox_);
    }
}

TViewForm::TOpenedEditor* TViewForm::AddOpenedEditor(const _di_IOTASourceEditor& editor,
                                                     bool wasOpen) {
    if (!editor) return nullptr;
    for (const TOpenedEditor& e : openedEditors_)
        if (e.Editor.get() == editor.get()) return nullptr;
    TOpenedEditor element{editor, wasOpen, false};
    if (_di_IOTAProject project = GetActiveProject())
        if (SameText(ExtractFileNameEx(editor->GetFileName()),
                     ExtractFileNameEx(project->GetFileName())))
            element.Keep = true;
    openedEditors_.push_back(std::move(element));
    return &openedEditors_.back();
}

void TViewForm::MakeEditorReadOnly(TOpenedEditor* element) {
    if (!element || !manager_->EditorReadOnly || element->Editor->GetEditViewCount() < 1) return;
    _di_IOTAEditBuffer buffer = element->Editor->GetEditView(0)->GetBuffer();
    element->ReadOnly = buffer->IsReadOnly();
    buffer->SetIsReadOnly(true);
}

} // namespace zelvane
