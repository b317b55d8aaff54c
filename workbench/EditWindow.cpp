#include "workbench/EditWindow.h"

#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"
#include "workbench/Application.h"

#include <QChildEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <unordered_set>

namespace workbench {

using namespace ToolsAPI;


// ---------------------------------------------------------------------------------------------
// The tab row

TEditTabControl::TEditTabControl(QWidget* parent) : QTabBar(parent) {
    setObjectName(QStringLiteral("TabControl"));
    setDocumentMode(true);
    setExpanding(false);
    setDrawBase(true);
    setUsesScrollButtons(true);
    setFocusPolicy(Qt::NoFocus);
    // A tab picked by the user fires OnChange; a tab set by code does not.
    connect(this, &QTabBar::currentChanged, this, [this](int) {
        if (!quiet_) Change();
    });
}

std::string TEditTabControl::GetTabText(int index) {
    if (index < 0 || index >= count())
        throw rtl::EListError("Tab index out of bounds (" + std::to_string(index) + ")");
    return ToBytes(tabText(index));
}

void* TEditTabControl::GetTabObject(int index) {
    if (index < 0 || index >= count())
        throw rtl::EListError("Tab index out of bounds (" + std::to_string(index) + ")");
    return reinterpret_cast<void*>(tabData(index).value<quintptr>());
}

std::vector<TTabEntry> TEditTabControl::GetTabs() {
    std::vector<TTabEntry> r;
    for (int i = 0; i < count(); ++i)
        r.push_back({GetTabText(i), GetTabObject(i)});
    return r;
}

void TEditTabControl::SetTabs(const std::vector<TTabEntry>& tabs) {
    quiet_ = true;
    int index = currentIndex();
    // A visible bar lays the whole row out again after each changed tab; hidden meanwhile, it
    // does so once, when it is shown again. Nothing is painted in between.
    const bool visible = isVisible();
    if (visible) {
        setUpdatesEnabled(false);
        hide();
    }
    // Tabs are rewritten in place, and only where they changed.
    while (count() > static_cast<int>(tabs.size()))
        removeTab(count() - 1);
    for (size_t i = 0; i < tabs.size(); ++i) {
        int t = static_cast<int>(i);
        if (t >= count()) addTab(QString());
        QString text = FromBytes(tabs[i].Text);
        if (tabText(t) != text) setTabText(t, text);
        setTabData(t, QVariant::fromValue(reinterpret_cast<quintptr>(tabs[i].Object)));
    }
    if (index >= count()) index = count() - 1;
    setCurrentIndex(index);
    if (visible) {
        show();
        setUpdatesEnabled(true);
    }
    quiet_ = false;
}

void TEditTabControl::SetTabIndex(int index) {
    quiet_ = true;
    if (index >= 0 && index < count()) setCurrentIndex(index);
    quiet_ = false;
}

void TEditTabControl::Change() {
    if (!onChange_) return;
    TTabChangeEvent handler = onChange_;
    handler(this);
}

void TEditTabControl::AddTab(const std::string& text, void* object) {
    quiet_ = true;
    int i = addTab(FromBytes(text));
    setTabData(i, QVariant::fromValue(reinterpret_cast<quintptr>(object)));
    quiet_ = false;
}

void TEditTabControl::RemoveTab(int index) {
    quiet_ = true;
    removeTab(index);
    quiet_ = false;
}

int TEditTabControl::IndexOfObject(const void* object) const {
    for (int i = 0; i < count(); ++i)
        if (tabData(i).value<quintptr>() == reinterpret_cast<quintptr>(object)) return i;
    return -1;
}

// ---------------------------------------------------------------------------------------------
// The edit window

TEditWindowForm::TEditWindowForm(TIDEModel* model, TEditWindow* window, QWidget* parent)
    : QWidget(parent, Qt::Window), model_(model), window_(window) {
    setObjectName(QStringLiteral("EditWindow_0"));
    setWindowTitle(QStringLiteral("Unit"));
    window_->SetForm(this);

    tabs_ = new TEditTabControl(this);
    editor_ = new TSourceEdit(this);
    editor_->SetKeyBindings(model_);
    auto* status = new QWidget(this);
    status->setObjectName(QStringLiteral("StatusBar"));
    auto* statusLayout = new QHBoxLayout(status);
    statusLayout->setContentsMargins(4, 1, 4, 1);
    auto label = [&](int width) {
        auto* l = new QLabel(status);
        l->setFrameShape(QFrame::Panel);
        l->setFrameShadow(QFrame::Sunken);
        if (width) l->setFixedWidth(width);
        statusLayout->addWidget(l);
        return l;
    };
    position_ = label(90);
    position_->setAlignment(Qt::AlignCenter);
    modified_ = label(80);
    mode_ = label(80);
    fileLabel_ = label(0);
    statusLayout->setStretchFactor(fileLabel_, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tabs_);
    layout->addWidget(editor_, 1);
    layout->addWidget(status);

    tabs_->SetOnChange([this](QObject*) { ShowCurrentTab(); });
    connect(editor_, &TSourceEdit::StateChanged, this, [this] { UpdateStatus(); });
    setFocusProxy(editor_);
    SyncPages();
}

bool TEditWindowForm::event(QEvent* e) {
    if (e->type() == QEvent::ChildAdded && static_cast<QChildEvent*>(e)->child() == editor_)
        if (auto* box = qobject_cast<QVBoxLayout*>(layout()); box && box->indexOf(editor_) < 0)
            box->insertWidget(1, editor_, 1);
    return QWidget::event(e);
}

TEditWindowForm::~TEditWindowForm() {
    if (window_ && window_->GetForm() == this) window_->SetForm(nullptr);
}

std::string TEditWindowForm::TabText(TEditView* view) {
    if (!view || !view->Attached()) return {};
    std::string name = rtl::ExtractFileName(view->Buffer().GetFileName());
    std::string ext = rtl::LowerCase(rtl::ExtractFileExt(name));
    if (ext == ".pas" || ext == ".cpp" || ext == ".dpr" || ext == ".dpk" || ext == ".bpr" ||
        ext == ".bpk")
        name = rtl::ChangeFileExt(name, "");
    return name;
}

std::vector<TEditView*> TEditWindowForm::ViewsOfWindow() const {
    std::vector<TEditView*> views;
    for (int m = 0; m < model_->GetModuleCount(); ++m) {
        _di_IOTAModule module = model_->GetModule(m);
        for (int e = 0; e < module->GetModuleFileCount(); ++e) {
            auto* source = dynamic_cast<TSourceEditor*>(module->GetModuleFileEditor(e).get());
            if (!source) continue;
            for (int v = 0; v < source->GetEditViewCount(); ++v) {
                TEditView* view = source->View(v);
                if (view && view->Window() == window_.get()) views.push_back(view);
            }
        }
    }
    return views;
}

void TEditWindowForm::SyncPages() {
    std::vector<TEditView*> views = ViewsOfWindow();
    // Sets on both sides, so that a row of thousands of pages syncs in linear time.
    const std::unordered_set<const void*> live(views.begin(), views.end());
    std::unordered_set<const void*> tabbed;
    // Tabs whose view went away.
    for (int i = tabs_->count() - 1; i >= 0; --i) {
        void* view = tabs_->GetTabObject(i);
        if (live.count(view))
            tabbed.insert(view);
        else
            tabs_->RemoveTab(i);
    }
    // Views without a tab.
    for (TEditView* view : views)
        if (!tabbed.count(view)) tabs_->AddTab(TabText(view), view);
    held_.assign(views.begin(), views.end());
    // The model's top view, when it is one of this window's.
    _di_IOTAEditView top = model_->GetTopView();
    for (TEditView* view : views)
        if (top && Identity(top.get()) == Identity(static_cast<IOTAEditView*>(view))) {
            tabs_->SetTabIndex(tabs_->IndexOfObject(view));
            break;
        }
    if (tabs_->currentIndex() < 0 && tabs_->count() > 0) tabs_->SetTabIndex(0);
    editor_->SetView(CurrentView());
    UpdateStatus();
}

TEditView* TEditWindowForm::CurrentView() const {
    int i = tabs_->currentIndex();
    if (i < 0) return nullptr;
    auto* view = static_cast<TEditView*>(tabs_->GetTabObject(i));
    for (auto& h : held_)
        if (h.get() == view) return view->Attached() ? view : nullptr;
    return nullptr;
}

void TEditWindowForm::ShowCurrentTab() {
    TEditView* view = CurrentView();
    if (view) {
        // The page of the tab comes to the front, in the model first.
        model_->BringToFront(view);
        model_->ShowEditor(view->Buffer().Module(), &view->Buffer());
    }
    editor_->SetView(view);
    UpdateStatus();
    emit PageChanged();
}

void TEditWindowForm::UpdateStatus() {
    TEditView* view = editor_->View();
    if (!view) {
        position_->clear();
        modified_->clear();
        mode_->clear();
        fileLabel_->clear();
        setWindowTitle(QStringLiteral("Unit"));
        return;
    }
    TSourceEditor& buffer = view->Buffer();
    position_->setText(QStringLiteral("%1: %2").arg(view->Cursor().Row).arg(view->Cursor().Col));
    modified_->setText(buffer.GetModified() ? QStringLiteral("Modified") : QString());
    mode_->setText(buffer.IsReadOnly()                          ? QStringLiteral("Read only")
                   : buffer.GetBufferOptions()->GetInsertMode() ? QStringLiteral("Insert")
                                                                : QStringLiteral("Overwrite"));
    fileLabel_->setText(FromBytes(buffer.GetFileName()));
    setWindowTitle(FromBytes(rtl::ExtractFileName(buffer.GetFileName())));
}

} // namespace workbench
