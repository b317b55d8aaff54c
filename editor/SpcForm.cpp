// The editor's window: its parts, its actions and their enabling, the file dialogs, and the
// settings it keeps between showings.
#include "editor/SpcForm.h"

#include "editor/SpcEditor.h"
#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"
#include "rtl/IniFiles.h"
#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace zelvane {

using namespace rtl;

namespace {

// The widget inside the scroll box: the columns' panels stand on it, and it draws the edges
// between them.
class TSpcContent : public QWidget {
public:
    TSpcContent(TSpcEditor* editor, QWidget* parent) : QWidget(parent), editor_(editor) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        editor_->ScrollContentPainted(painter);
    }
    void mousePressEvent(QMouseEvent*) override { setFocus(); }

private:
    TSpcEditor* editor_;
};

struct TActionSpec {
    const char* Name;
    int Image;
    const char* Caption;
    const char* Hint; // short hint, "|", long hint
    const char* Key;
};

constexpr TActionSpec kActions[] = {
    {"ActExit", 0, "Close window", "Close window|End work with specification", "Alt+X"},
    {"ActLoadSpc", 1, "Open specification", "Open specification|Open specification", "Ctrl+O"},
    {"ActSaveSpc", 2, "Save specification", "Save specification|Save specification", "Ctrl+S"},
    {"ActSaveAsSpc", 3, "Save as ...", "Save as ...|Save specification to selected file",
     "Ctrl+Shift+S"},
    {"ActAddNode", 4, "Add node", "Add new node|Add new node", ""},
    {"ActDelNode", 5, "Delete node", "Delete current node|Delete current node", ""},
    {"ActMoveUp", 6, "Move node", "Move node up|Move node one step up", ""},
    {"ActMoveDown", 7, "Move node", "Move node down|Move node one step down", ""},
    {"ActExpand", 8, "Unfold node", "Unfold node|Unfold node", ""},
    {"ActCollapse", 9, "Roll up node", "Roll up node|Roll up node", ""},
    {"ActNodeEdit", -1, "", "", "F2"},
    {"ActStore", -1, "", "", "Ctrl+S"},
};

// The tool buttons by the flag that shows them, in the bar's order; a separator closes each
// group but the last.
struct TButtonSpec {
    TSpcEdVisibleButton Flag;
    const char* Action;
    const char* Button;
    const char* SeparatorAfter;
};

constexpr TButtonSpec kButtons[] = {
    {vbExitEditor, "ActExit", "tbExit", "tbExitSep"},
    {vbLoadSpc, "ActLoadSpc", "tbLoad", nullptr},
    {vbSaveSpc, "ActSaveSpc", "tbSave", nullptr},
    {vbSaveSpcAs, "ActSaveAsSpc", "tbSaveAs", "tbSaveSep"},
    {vbAddNode, "ActAddNode", "tbAdd", nullptr},
    {vbDeleteNode, "ActDelNode", "tbDelete", nullptr},
    {vbMoveNodeUp, "ActMoveUp", "tbMoveUp", nullptr},
    {vbMoveNodeDown, "ActMoveDown", "tbMoveDown", "tbMoveSep"},
    {vbExpandNode, "ActExpand", "tbExpand", nullptr},
    {vbCollapseNode, "ActCollapse", "tbCollapse", nullptr},
};

constexpr const char* FileFilter =
    "Binary specification files (*%s);;Text specification files(*%s);;All files(*.*)";

} // namespace

// ---------------------------------------------------------------------------------------------
// Images

QIcon TSpcEditor::ToolImage(int index) {
    static const QStyle::StandardPixmap standard[] = {
        QStyle::SP_DialogCloseButton, QStyle::SP_DialogOpenButton, QStyle::SP_DialogSaveButton,
        QStyle::SP_DriveFDIcon,       QStyle::SP_FileDialogNewFolder, QStyle::SP_TrashIcon,
        QStyle::SP_ArrowUp,           QStyle::SP_ArrowDown,          QStyle::SP_ToolBarVerticalExtensionButton,
        QStyle::SP_ToolBarHorizontalExtensionButton, QStyle::SP_DirClosedIcon, QStyle::SP_DirOpenIcon,
        QStyle::SP_FileIcon,          QStyle::SP_FileLinkIcon,       QStyle::SP_DirLinkIcon,
    };
    if (index < 0 || index >= int(std::size(standard))) return {};
    return QApplication::style()->standardIcon(standard[index]);
}

// ---------------------------------------------------------------------------------------------
// Making

TSpcForm::TSpcForm(TSpcEditor* editor)
    : QDialog(QApplication::activeWindow()), editor_(editor) {
    setObjectName("SpcForm");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMinMaxButtonsHint, true);
    setFont(ToolsAPI::ToQFont(editor->TreeFont).family());
    resize(545, 389);
    MakeActions();
    MakeLayout();
    qApp->installEventFilter(this);
    auto* updater = new QTimer(this);
    connect(updater, &QTimer::timeout, this, &TSpcForm::UpdateActions);
    updater->start(200);
}

TSpcForm::~TSpcForm() {
    qApp->removeEventFilter(this);
    if (treeView_) treeView_->blockSignals(true);
}

QAction* TSpcForm::AddAction(const char* name, int image, const QString& caption,
                             const QString& hint, const QKeySequence& key) {
    auto* action = new QAction(caption, this);
    action->setObjectName(name);
    if (image >= 0) action->setIcon(TSpcEditor::ToolImage(image));
    action->setToolTip(hint.section('|', 0, 0));
    action->setStatusTip(hint.section('|', 1));
    // The form dispatches the keys itself, in the order of the actions.
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetShortcut);
    actions_.push_back(action);
    return action;
}

QAction* TSpcForm::Action(const char* name) const {
    for (QAction* action : actions_)
        if (action->objectName() == name) return action;
    return nullptr;
}

void TSpcForm::MakeActions() {
    for (const TActionSpec& spec : kActions)
        AddAction(spec.Name, spec.Image, spec.Caption, spec.Hint,
                  QKeySequence::fromString(spec.Key));
    Action("ActMoveUp")->setData(0);
    Action("ActMoveDown")->setData(1);
    auto selected = [this] { return treeView_->currentItem(); };
    connect(Action("ActExit"), &QAction::triggered, this, &QWidget::close);
    connect(Action("ActLoadSpc"), &QAction::triggered, this, [this] { editor_->Load(); });
    connect(Action("ActSaveSpc"), &QAction::triggered, this, [this] {
        editor_->DoSaveChanges();
        UpdateActions();
    });
    connect(Action("ActSaveAsSpc"), &QAction::triggered, this, [this] { editor_->SaveAs(); });
    connect(Action("ActAddNode"), &QAction::triggered, this,
            [this, selected] { editor_->AddNode(selected()); });
    connect(Action("ActDelNode"), &QAction::triggered, this,
            [this, selected] { editor_->DeleteNode(selected()); });
    for (const char* name : {"ActMoveUp", "ActMoveDown"}) {
        QAction* action = Action(name);
        connect(action, &QAction::triggered, this, [this, action, selected] {
            bool down = action->data().toInt() == 1;
            editor_->MoveNode(selected(), down ? nmDown : nmUp, down ? 1 : -1);
        });
    }
    connect(Action("ActExpand"), &QAction::triggered, this, [this] { ExpandOrCollapse(true); });
    connect(Action("ActCollapse"), &QAction::triggered, this, [this] { ExpandOrCollapse(false); });
    connect(Action("ActStore"), &QAction::triggered, this, [this] { SaveSetting(true); });
}

void TSpcForm::MakeLayout() {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    toolBar_ = new QToolBar(this);
    toolBar_->setObjectName("ToolBar");
    for (const TButtonSpec& spec : kButtons) {
        QAction* action = Action(spec.Action);
        toolBar_->addAction(action);
        toolBar_->widgetForAction(action)->setObjectName(spec.Button);
        if (spec.SeparatorAfter) toolBar_->addSeparator()->setObjectName(spec.SeparatorAfter);
    }
    layout->addWidget(toolBar_);

    splitter_ = new QSplitter(Qt::Horizontal, this);
    splitter_->setObjectName("Splitter1");
    splitter_->setHandleWidth(3);
    treeView_ = new QTreeWidget(splitter_);
    treeView_->setObjectName("TreeView");
    treeView_->setHeaderHidden(true);
    treeView_->setIndentation(19);
    treeView_->setFont(ToolsAPI::ToQFont(editor_->TreeFont));
    treeView_->setSelectionBehavior(QAbstractItemView::SelectRows);
    connect(treeView_, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* current, QTreeWidgetItem* previous) {
                if (reverting_) return;
                if (previous && !editor_->SpcTreeChanging(current)) {
                    reverting_ = true;
                    treeView_->setCurrentItem(previous);
                    reverting_ = false;
                    editor_->FocusActiveControl();
                    return;
                }
                editor_->SpcTreeChange(current);
                UpdateActions();
            });

    paintPanel_ = new QWidget(splitter_);
    paintPanel_->setObjectName("PaintPanel");
    auto* paintLayout = new QVBoxLayout(paintPanel_);
    paintLayout->setContentsMargins(0, 0, 0, 0);
    paintLayout->setSpacing(0);
    headerPanel_ = new QWidget(paintPanel_);
    headerPanel_->setObjectName("HeaderPanel");
    auto* headerLayout = new QVBoxLayout(headerPanel_);
    headerLayout->setContentsMargins(0, 0, 0, 0);
    headerControl_ = new QHeaderView(Qt::Horizontal, headerPanel_);
    headerControl_->setObjectName("HeaderControl");
    headerControl_->setModel(new QStandardItemModel(0, 0, headerControl_));
    headerControl_->setSectionsClickable(false);
    headerControl_->setSectionResizeMode(QHeaderView::Interactive);
    headerControl_->setStretchLastSection(false);
    headerControl_->setMinimumSectionSize(0);
    headerControl_->viewport()->installEventFilter(this);
    headerLayout->addWidget(headerControl_);
    headerPanel_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    headerControl_->setFixedHeight(headerControl_->fontMetrics().height() + 8);
    paintLayout->addWidget(headerPanel_);
    connect(headerControl_, &QHeaderView::sectionResized, this,
            [this](int section, int, int size) {
                if (!headerDragging_) return;
                trackedSection_ = section;
                if (editor_->fullDragging_)
                    editor_->SectionResize(section);
                else
                    editor_->HeaderSectionTrack(section, size, false);
            });

    scrollBox_ = new QScrollArea(paintPanel_);
    scrollBox_->setObjectName("ScrollBox");
    scrollBox_->setFrameShape(QFrame::NoFrame);
    scrollBox_->setWidgetResizable(false);
    scrollBox_->setFocusPolicy(Qt::StrongFocus);
    scrollContent_ = new TSpcContent(editor_, scrollBox_);
    scrollContent_->setObjectName("ScrollContent");
    scrollContent_->setFocusPolicy(Qt::ClickFocus);
    scrollBox_->setWidget(scrollContent_);
    scrollBox_->viewport()->installEventFilter(this);
    connect(scrollBox_->horizontalScrollBar(), &QScrollBar::valueChanged, headerControl_,
            &QHeaderView::setOffset);
    paintLayout->addWidget(scrollBox_, 1);
    trackLine_ = new QWidget(scrollBox_->viewport());
    trackLine_->setObjectName("TrackLine");
    trackLine_->setAutoFillBackground(true);
    QPalette linePalette = trackLine_->palette();
    linePalette.setColor(QPalette::Window, Qt::darkGray);
    trackLine_->setPalette(linePalette);
    trackLine_->hide();

    splitter_->addWidget(treeView_);
    splitter_->addWidget(paintPanel_);
    splitter_->setStretchFactor(1, 1);
    splitter_->setSizes({190, 352});
    layout->addWidget(splitter_, 1);

    statusBar_ = new QStatusBar(this);
    statusBar_->setObjectName("StatusBar");
    statusBar_->setSizeGripEnabled(false);
    for (int i = 0; i < 2; ++i) {
        statusPanels_[i] = new QLabel(statusBar_);
        statusPanels_[i]->setObjectName(QString("StatusPanel%1").arg(i));
        statusBar_->addWidget(statusPanels_[i], i);
    }
    statusPanels_[0]->setFixedWidth(80);
    statusBar_->hide();
    layout->addWidget(statusBar_);
}

void TSpcForm::UpdateSBState(bool show) {
    statusBar_->setVisible(show);
}

void TSpcForm::ResetScroll() {
    scrollBox_->horizontalScrollBar()->setValue(0);
    scrollBox_->verticalScrollBar()->setValue(0);
}

void TSpcForm::FocusScrollBox() {
    scrollBox_->setFocus();
}

void TSpcForm::ShowTrackLine(int x) {
    trackLine_->setGeometry(x, 0, 2, scrollBox_->viewport()->height());
    trackLine_->raise();
    trackLine_->show();
}

void TSpcForm::HideTrackLine() {
    trackLine_->hide();
}

// ---------------------------------------------------------------------------------------------
// Buttons and their enabling

void TSpcForm::ApplyVisibleButtons(TSpcEdVisibleButtons buttons) {
    bool anyVisible = false;
    bool groupVisible = false;
    QAction* lastSeparator = nullptr;
    for (const TButtonSpec& spec : kButtons) {
        bool visible = buttons.Contains(spec.Flag);
        Action(spec.Action)->setVisible(visible);
        groupVisible = groupVisible || visible;
        anyVisible = anyVisible || visible;
        if (!spec.SeparatorAfter) continue;
        QAction* separator = nullptr;
        for (QAction* a : toolBar_->actions())
            if (a->objectName() == spec.SeparatorAfter) separator = a;
        if (separator && !groupVisible) {
            toolBar_->removeAction(separator);
            delete separator;
        } else if (separator) {
            lastSeparator = separator;
        }
        groupVisible = false;
    }
    // No separator ends the bar.
    if (!groupVisible && lastSeparator) {
        toolBar_->removeAction(lastSeparator);
        delete lastSeparator;
    }
    toolBar_->setVisible(anyVisible);
}

void TSpcForm::UpdateActions() {
    QTreeWidgetItem* node = treeView_->currentItem();
    TInstDscr* dscr = TSpcEditor::NodeData(node);
    TPersistent* obj = dscr ? dscr->Instance : nullptr;
    Action("ActAddNode")->setEnabled(obj && editor_->IsValidInsObj(obj));
    Action("ActDelNode")->setEnabled(obj && editor_->IsValidDelObj(obj));
    Action("ActMoveUp")->setEnabled(obj && editor_->IsValidMoveObj(obj, nmUp));
    Action("ActMoveDown")->setEnabled(obj && editor_->IsValidMoveObj(obj, nmDown));
    Action("ActSaveSpc")->setEnabled(editor_->Modified());
    Action("ActExpand")->setEnabled(node != nullptr);
    Action("ActCollapse")->setEnabled(node != nullptr);
}

void TSpcForm::ExpandOrCollapse(bool expand) {
    QTreeWidgetItem* node = treeView_->currentItem();
    if (!node) return;
    bool recursive = !ServiceKeyPressed(VK_CONTROL);
    treeView_->setUpdatesEnabled(false);
    if (expand) {
        if (recursive)
            treeView_->expandRecursively(treeView_->currentIndex());
        else
            node->setExpanded(true);
        treeView_->scrollToItem(node);
    } else {
        if (recursive) {
            std::vector<QTreeWidgetItem*> stack{node};
            while (!stack.empty()) {
                QTreeWidgetItem* item = stack.back();
                stack.pop_back();
                item->setExpanded(false);
                for (int i = 0; i < item->childCount(); ++i) stack.push_back(item->child(i));
            }
        } else {
            node->setExpanded(false);
        }
    }
    treeView_->setUpdatesEnabled(true);
}

// Key preview: the form's actions see every key of the window first, in their order; a key of
// a disabled action passes to the next action with the same key.
bool TSpcForm::DispatchKey(QKeyEvent* event) {
    int key = event->key();
    if (key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Alt || key == 0)
        return false;
    QKeySequence pressed(QKeyCombination(event->modifiers() & ~Qt::KeypadModifier, Qt::Key(key)));
    for (QAction* action : actions_) {
        if (action->shortcut().isEmpty() || action->shortcut() != pressed) continue;
        if (!action->isVisible()) continue;
        UpdateActions();
        if (!action->isEnabled()) continue;
        action->trigger();
        return true;
    }
    return false;
}

// ---------------------------------------------------------------------------------------------
// Events

void TSpcForm::setVisible(bool visible) {
    if (visible && !isVisible()) RestoreWinPlacement(0);
    QDialog::setVisible(visible);
}

void TSpcForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    RestoreWinPlacement(1);
    editor_->state_.Include(esFormShowing);
}

void TSpcForm::hideEvent(QHideEvent* event) {
    editor_->state_.Exclude(esFormShowing);
    QDialog::hideEvent(event);
}

void TSpcForm::closeEvent(QCloseEvent* event) {
    if (closing_) return event->accept();
    if (!editor_->Release()) return event->ignore();
    closing_ = true;
    editor_->state_.Include(esFormDestroying);
    SaveSetting(editor_->FormOptions.Contains(foAutoSaveParams));
    treeView_->blockSignals(true);
    treeView_->clear();
    event->accept();
    QDialog::done(QDialog::Rejected);
    editor_->state_.Exclude(esFormDestroying);
    if (editor_->form_ == this) editor_->form_ = nullptr;
    editor_->closedForm_ = this;
    deleteLater();
}

void TSpcForm::reject() {
    close();
}

bool TSpcForm::event(QEvent* event) {
    if (event->type() == QEvent::Type(WM_SPC_SHOWTOPITEM)) {
        if (!closing_) editor_->ShowTreeTopItem();
        return true;
    }
    return QDialog::event(event);
}

bool TSpcForm::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyPress:
        if (auto* w = qobject_cast<QWidget*>(watched); w && w->window() == this && isActiveWindow())
            if (DispatchKey(static_cast<QKeyEvent*>(event))) return true;
        break;
    case QEvent::MouseButtonPress:
        if (watched == headerControl_->viewport()) headerDragging_ = true;
        break;
    case QEvent::MouseButtonRelease:
        if (watched == headerControl_->viewport() && headerDragging_) {
            headerDragging_ = false;
            if (trackedSection_ >= 0 && !editor_->fullDragging_)
                editor_->HeaderSectionTrack(trackedSection_, 0, true);
            trackedSection_ = -1;
        }
        break;
    case QEvent::Resize:
        if (watched == scrollBox_->viewport()) editor_->UpdateContentSize();
        break;
    default:
        break;
    }
    return QDialog::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------------
// Settings

void TSpcForm::GetIniParams(std::string& iniFile, std::string& section) const {
    iniFile = editor_->IniFileName;
    if (iniFile.empty())
        iniFile = GetAppIniFileName();
    else if (ExtractFilePath(iniFile).empty())
        iniFile = GetAppDir() + iniFile;
    section = editor_->IniSection.empty() ? "SpcEditor" : editor_->IniSection;
}

void TSpcForm::ReadSettingList(TStringList& list) {
    std::string iniFile, section;
    GetIniParams(iniFile, section);
    editor_->ReadFormSetting(iniFile, section, &list);
    storedSetting_ = list.GetText();
}

void TSpcForm::LoadSetting() {
    TStringList list;
    ReadSettingList(list);
    auto readInt = [&](const char* key, int& value) {
        std::string text = list.Values(key);
        if (!text.empty()) value = StrToInt(text);
    };
    int treeWidth = 190;
    readInt("TreeWidth", treeWidth);
    splitter_->setSizes({treeWidth, std::max(1, width() - treeWidth - splitter_->handleWidth())});
    LoadDir = list.Values("LoadDir");
    SaveDir = list.Values("SaveDir");
    readInt("LabelSectionWidth", editor_->LabelAreaInfo().DefAreaWidth);
    readInt("ControlSectionWidth", editor_->ControlAreaInfo().DefAreaWidth);
}

void TSpcForm::SaveSetting(bool full) {
    TStringList list;
    if (full) {
        list.Add("WindowPlacement=" + GetWinPlacement(this));
        list.Add("TreeWidth=" + IntToStr(treeView_->width()));
        list.Add("LabelSectionWidth=" + IntToStr(headerControl_->sectionSize(0)));
        list.Add("ControlSectionWidth=" + IntToStr(headerControl_->sectionSize(1)));
    } else {
        list.SetText(storedSetting_);
    }
    if (!LoadDir.empty()) list.SetValue("LoadDir", LoadDir);
    if (!SaveDir.empty()) list.SetValue("SaveDir", SaveDir);
    storedSetting_ = list.GetText();
    if (list.Count() == 0) return;
    std::string iniFile, section;
    GetIniParams(iniFile, section);
    editor_->WriteFormSetting(iniFile, section, &list);
}

void TSpcForm::RestoreWinPlacement(int stage) {
    if (!placementRead_) {
        TStringList list;
        ReadSettingList(list);
        std::string text = list.Values("WindowPlacement");
        if (!text.empty()) {
            TWindowPlacement placement;
            try {
                StringToWinPlacement(text, placement);
                placement_ = placement;
            } catch (const EConvertError&) {
                // A damaged placement is passed over: the form centres.
            }
        }
    }
    if (placement_) {
        placement_->Length = kWindowPlacementLength;
        bool maximized = placement_->ShowCmd == 3;
        if (stage == 0 && maximized) {
            const TRect& r = placement_->NormalPosition;
            if (r.Right > r.Left && r.Bottom > r.Top)
                setGeometry(r.Left, r.Top, r.Right - r.Left, r.Bottom - r.Top);
            setWindowState(windowState() | Qt::WindowMaximized);
        } else if (stage == 1 && !maximized) {
            WindowSystem().SetWindowPlacement
                ? (void)WindowSystem().SetWindowPlacement(this, *placement_)
                : (void)0;
        }
    } else if (!placementRead_) {
        if (QScreen* screen = this->screen()) {
            QRect area = screen->availableGeometry();
            move(area.left() + (area.width() - width()) / 2,
                 area.top() + (area.height() - height()) / 2);
        }
    }
    if (placementRead_) placement_.reset();
    placementRead_ = true;
}

// ---------------------------------------------------------------------------------------------
// The editor's settings hooks

void TSpcEditor::ReadFormSetting(const std::string& iniFile, const std::string& section,
                                 TStrings* strings) {
    std::string iniData;
    if (CanReadFormSetting(iniFile, section, iniData)) {
        TIniFile ini(iniFile);
        ini.ReadSectionValues(section, strings);
    } else {
        strings->SetText(iniData);
    }
}

void TSpcEditor::WriteFormSetting(const std::string& iniFile, const std::string& section,
                                  TStrings* strings) {
    std::string iniData = strings->GetText();
    if (!CanWriteFormSetting(iniFile, section, iniData)) return;
    std::vector<TParamPair> pairs;
    TransformParams(strings, pairs);
    if (pairs.empty()) return;
    TIniFile ini(iniFile);
    for (const auto& [name, value] : pairs) ini.WriteString(section, name, value);
}

bool TSpcEditor::CanReadFormSetting(const std::string& iniFile, const std::string& section,
                                    std::string& iniData) {
    bool allow = true;
    if (OnReadFormSetting) OnReadFormSetting(iniFile, section, iniData, allow);
    return allow;
}

bool TSpcEditor::CanWriteFormSetting(const std::string& iniFile, const std::string& section,
                                     const std::string& iniData) {
    bool allow = true;
    if (OnWriteFormSetting) OnWriteFormSetting(iniFile, section, iniData, allow);
    return allow;
}

// ---------------------------------------------------------------------------------------------
// File dialogs

bool ExecuteSpcFileDialog(QWidget* parent, bool save, std::string& fileName, std::string& dir,
                          int& filterIndex, const std::string& title) {
    QFileDialog dialog(parent, ToolsAPI::FromBytes(title));
    dialog.setObjectName(save ? "SaveSpcDialog" : "LoadSpcDialog");
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    QStringList filters = QString::fromStdString(Format(FileFilter, {".sbn", ".stx"})).split(";;");
    dialog.setNameFilters(filters);
    if (filterIndex >= 1 && filterIndex <= filters.size())
        dialog.selectNameFilter(filters[filterIndex - 1]);
    if (!dir.empty()) dialog.setDirectory(ToolsAPI::FromBytes(dir));
    if (!fileName.empty()) dialog.selectFile(ToolsAPI::FromBytes(ExtractFileName(fileName)));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
    fileName = ToolsAPI::ToBytes(dialog.selectedFiles().first());
    dir = ExtractFilePath(fileName);
    filterIndex = int(filters.indexOf(dialog.selectedNameFilter())) + 1;
    return true;
}

} // namespace zelvane
