#include "workbench/designer/DesignerWindow.h"

#include "toolsapi/Forms.h"

#include "toolsapi/QtBridge.h"
#include "workbench/designer/Controls.h"
#include "workbench/designer/Pictures.h"
#include "workbench/designer/VclValues.h"
#include "workbench/model/LibraryClasses.h"

#include "rtl/Filer.h"

#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QLabel>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainter>
#include <QTabBar>
#include <QTabWidget>

namespace workbench::designer {

using ToolsAPI::FromBytes;
using ToolsAPI::TDesignComponent;
using ToolsAPI::TOTAHandle;

// ---------------------------------------------------------------------------------------------

// The grab handles of the selected components, drawn over the form; it lets every mouse event
// through to the controls below.
class TSelectionOverlay : public QWidget {
public:
    explicit TSelectionOverlay(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
    }
    QList<QRect> Rects;
    bool Several = false;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        // One selected component has black handles; with several, each has grey ones.
        QColor fill = Several ? QColor(0x80, 0x80, 0x80) : Qt::black;
        const int s = 5;
        for (const QRect& r : Rects) {
            int xs[] = {r.left() - s / 2, r.center().x() - s / 2, r.right() - s / 2};
            int ys[] = {r.top() - s / 2, r.center().y() - s / 2, r.bottom() - s / 2};
            for (int i = 0; i < 3; ++i)
                for (int k = 0; k < 3; ++k)
                    if (i != 1 || k != 1) p.fillRect(xs[i], ys[k], s, s, fill);
        }
    }
};

// The window's form notifier: the editor tells it of changes, renames and the module's close.
class TDesignerWindow::TNotifier : public TNotifierObject, public virtual IOTAFormNotifier {
public:
    explicit TNotifier(TDesignerWindow* window) : window_(window) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAFormNotifier>(this, iid, obj);
    }
    void FormActivated() override {}
    void FormSaving() override {}
    void ComponentRenamed(TOTAHandle handle, const std::string&, const std::string&) override {
        if (window_) window_->Renamed(static_cast<const TDesignComponent*>(handle));
    }
    void Modified() override {
        if (window_) window_->Rebuild();
    }
    void Destroyed() override {
        if (window_) window_->Closed();
    }
    void Forget() { window_ = nullptr; }

private:
    TDesignerWindow* window_;
};

// ---------------------------------------------------------------------------------------------

TDesignerWindow::TDesignerWindow(TFormEditor* editor, TAncestorLookup lookup, QWidget* parent)
    : QWidget(parent, parent ? Qt::WindowFlags() : Qt::Window), editor_(editor),
      lookup_(std::move(lookup)) {
    if (!editor || !editor->Root())
        throw EModelError("A designer window needs a form editor with a form");
    // Built first: a form that can't be built leaves nothing registered with the editor.
    Build();
    notifier_ = MakeInterfaced<TNotifier>(this);
    notifierIndex_ = editor_->AddNotifier(_di_IOTANotifier(notifier_.get()));
    selectionListener_ = editor_->AddSelectionListener([this] { UpdateSelection(); });
    UpdateSelection();

    // The window stands where the form file places the form, with the form's client size.
    TDesignComponent* root = Root();
    move(int(root->IntProp("Left", 100)), int(root->IntProp("Top", 100)));
}

TDesignerWindow::~TDesignerWindow() {
    if (notifier_) notifier_->Forget();
    if (editor_) {
        editor_->RemoveNotifier(notifierIndex_);
        editor_->RemoveSelectionListener(selectionListener_);
    }
    // The controls go while this window can still filter their last events.
    delete overlay_;
    delete menu_;
    delete surface_;
    ClearWidgets();
}

TDesignComponent* TDesignerWindow::Root() const {
    return editor_ ? editor_->Root() : nullptr;
}

QWidget* TDesignerWindow::WidgetOf(const TDesignComponent* component) const {
    auto it = widgets_.find(component);
    return it == widgets_.end() ? nullptr : it->second;
}

TDesignComponent* TDesignerWindow::ComponentOf(const QWidget* widget) const {
    for (const QWidget* w = widget; w; w = w->parentWidget()) {
        if (w == this) return Root();
        auto it = components_.find(w);
        if (it != components_.end()) return it.value();
    }
    return nullptr;
}

TDesignComponent* TDesignerWindow::ComponentAt(const QPoint& windowPos) const {
    QWidget* w = childAt(windowPos);
    return w ? ComponentOf(w) : (rect().contains(windowPos) ? Root() : nullptr);
}

QList<QRect> TDesignerWindow::SelectionRects() const {
    return overlay_ ? overlay_->Rects : QList<QRect>();
}

TDesignComponent* TDesignerWindow::RealOf(const TDesignComponent* shown) const {
    auto it = real_.find(shown);
    return it == real_.end() ? const_cast<TDesignComponent*>(shown) : it->second;
}

void TDesignerWindow::Register(QWidget* widget, const TDesignComponent& shown) {
    TDesignComponent* real = RealOf(&shown);
    components_.insert(widget, real);
    // A frame's component that the form does not change shows as part of the frame.
    if (real == &shown || !widgets_.count(real)) widgets_[real] = widget;
    if (real == &shown || real->Name == shown.Name) real->Widget = widget;
}

void TDesignerWindow::ClearWidgets() {
    if (TDesignComponent* root = Root()) {
        root->Widget = nullptr;
        if (root->Owner) root->Owner->Widget = nullptr;
        for (TDesignComponent* c : root->AllComponents())
            c->Widget = nullptr;
    }
    components_.clear();
    widgets_.clear();
    real_.clear();
    merged_.clear();
}

std::unique_ptr<TDesignComponent> TDesignerWindow::Merge(const TDesignComponent* own,
                                                         const TDesignComponent* ancestor,
                                                         TDesignComponent* fallback, int depth) {
    if (depth > 32) throw EModelError("Frames are nested too deeply");
    auto m = std::make_unique<TDesignComponent>();
    const TDesignComponent* base = own ? own : ancestor;
    m->ClassName = base->ClassName;
    m->Ancestors = base->Ancestors;
    if (own && ancestor && m->Ancestors.empty()) m->Ancestors = ancestor->Ancestors;
    m->Name = base->Name;
    m->Inline = base->Inline;
    m->Inherited = base->Inherited;
    if (ancestor)
        for (const auto& p : ancestor->Properties)
            m->SetProperty(p);
    if (own)
        for (const auto& p : own->Properties)
            m->SetProperty(p);
    TDesignComponent* real = own ? const_cast<TDesignComponent*>(own) : fallback;
    real_[m.get()] = real;
    std::vector<const TDesignComponent*> used;
    if (ancestor)
        for (int i = 0; i < ancestor->ChildCount(); ++i) {
            const TDesignComponent* a = ancestor->Child(i);
            const TDesignComponent* match = nullptr;
            if (own)
                for (int k = 0; k < own->ChildCount(); ++k)
                    if (rtl::SameText(own->Child(k)->Name, a->Name)) match = own->Child(k);
            if (match) used.push_back(match);
            m->AddChild(Merge(match, a, real, depth + 1));
        }
    if (own)
        for (int k = 0; k < own->ChildCount(); ++k)
            if (std::find(used.begin(), used.end(), own->Child(k)) == used.end())
                m->AddChild(Merge(own->Child(k), nullptr, real, depth + 1));
    return m;
}

QWidget* TDesignerWindow::BuildOne(const TDesignComponent& shown, QWidget* parent, int depth) {
    if (depth > rtl::MaxNestingDepth) throw EModelError("Controls are nested too deeply");
    const TDesignComponent* c = &shown;
    // An inline frame shows its class's components under what this form changes of them.
    if (shown.Inline && lookup_ && depth < 32 && !real_.count(&shown)) {
        if (const TDesignComponent* ancestor = lookup_(shown.ClassName)) {
            merged_.push_back(Merge(&shown, ancestor, RealOf(&shown), 0));
            c = merged_.back().get();
            // The frame's own place is the form's, not the frame file's.
            auto* m = merged_.back().get();
            for (const char* name : {"Left", "Top", "Width", "Height"})
                if (const auto* p = shown.FindProperty(name)) m->SetProperty(*p);
        }
    }
    TControlKind kind = ControlKindOf(*c);
    QWidget* w = nullptr;
    if (auto* tabs = qobject_cast<QTabWidget*>(parent); tabs && kind == TControlKind::TabSheet) {
        w = CreateControl(*c, nullptr);
        w->setFont(tabs->font());
        TDesignComponent* owner = ComponentOf(tabs);
        // The page control's image list gives each tab the image of its sheet's ImageIndex.
        QList<QImage> images = owner ? ImagesOf(*owner, "Images") : QList<QImage>();
        int index = int(c->IntProp("ImageIndex", 0));
        QIcon icon;
        if (index >= 0 && index < images.size()) {
            icon = QIcon(QPixmap::fromImage(images[index]));
            tabs->setIconSize(images[index].size());
        }
        tabs->addTab(w, icon, TextProp(*c, "Caption"));
        if (owner && rtl::SameText(owner->StrProp("ActivePage"), c->Name))
            tabs->setCurrentWidget(w);
    } else {
        w = CreateControl(*c, parent);
    }
    Register(w, *c);
    if (IsContainer(kind)) BuildChildren(*c, w, depth + 1);
    // An inline frame that the form sizes otherwise than its own file lays out its parts anew.
    if (c != &shown) {
        const TDesignComponent* ancestor = lookup_(shown.ClassName);
        int dx = int(shown.IntProp("Width", 0) - ancestor->IntProp("Width", 0));
        int dy = int(shown.IntProp("Height", 0) - ancestor->IntProp("Height", 0));
        if (shown.FindProperty("Width") && ancestor->FindProperty("Width") && (dx || dy))
            Stretch(w, dx, dy, 0);
    }
    return w;
}

void TDesignerWindow::BuildChildren(const TDesignComponent& shown, QWidget* parent, int depth) {
    for (int i = 0; i < shown.ChildCount(); ++i) {
        const TDesignComponent* child = shown.Child(i);
        TControlKind kind = ControlKindOf(*child);
        if (kind == TControlKind::NonVisual) {
            // Non-visual components stand as icons on the form itself; what they hold (menu
            // items, actions) has no place of its own.
            if (parent != surface_) continue;
            QWidget* icon = CreateControl(*child, surface_);
            Register(icon, *child);
            if (Root()->InheritsFrom("TDataModule")) {
                // The data module's designer names each icon beneath it.
                auto* label = new QLabel(FromBytes(child->Name), surface_);
                label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
                label->setGeometry(icon->x() - 22, icon->y() + 30, 72, 16);
                components_.insert(label, RealOf(child));
            }
            continue;
        }
        QWidget* w = BuildOne(*child, parent, depth);
        // A border around the client area, as a windowed control's BorderWidth leaves: the
        // places of the controls in it count from inside the border.
        int border = int(std::clamp<int64_t>(shown.IntProp("BorderWidth", 0), 0, 1000));
        if (border > 0 && w->parentWidget() == parent) w->move(w->pos() + QPoint(border, border));
    }
}

void TDesignerWindow::Build() {
    ++buildCount_;
    TDesignComponent* root = Root();
    TControlKind kind = ControlKindOf(*root);
    bool dataModule = root->InheritsFrom("TDataModule");
    setObjectName(FromBytes(root->Name));
    setProperty("className", FromBytes(root->ClassName));
    QString caption = TextProp(*root, "Caption");
    setWindowTitle(caption.isEmpty() ? FromBytes(root->Name) : caption);

    QFont font = VclFont(*root, QApplication::font());
    setFont(font);

    // The form's main menu: the captions of its top items in a bar above the client area.
    menu_ = nullptr;
    if (kind == TControlKind::Form) {
        std::string menuName = root->StrProp("Menu");
        if (TDesignComponent* m = menuName.empty() ? nullptr : root->FindComponent(menuName)) {
            menu_ = new QMenuBar(this);
            menu_->setNativeMenuBar(false);
            menu_->setObjectName("FormMenu");
            menu_->setFocusPolicy(Qt::NoFocus);
            for (int i = 0; i < m->ChildCount(); ++i)
                menu_->addAction(TextProp(*m->Child(i), "Caption"));
            widgets_[m] = menu_;
            components_.insert(menu_, m);
            m->Widget = menu_;
        }
    }
    int menuHeight = menu_ ? menu_->sizeHint().height() : 0;

    // The client size: ClientWidth and ClientHeight where the form stores them, else the outer
    // size less the borders, the caption and the menu of the platform's windows.
    int clientWidth = std::clamp(ClientWidthOf(*root), 40, 4000);
    int clientHeight = std::clamp(ClientHeightOf(*root), 20, 4000);

    surface_ = new QWidget(this);
    surface_->setObjectName("FormSurface");
    surface_->setAutoFillBackground(true);
    QPalette pal = surface_->palette();
    QColor face =
        dataModule ? QColor(Qt::white) : ColorProp(*root, "Color", VclColor("clBtnFace").value());
    pal.setColor(QPalette::Window, face);
    pal.setColor(QPalette::WindowText, FontColor(*root, Qt::black));
    surface_->setPalette(pal);
    surface_->setFont(font);
    surface_->setGeometry(0, menuHeight, clientWidth, clientHeight);
    if (menu_) menu_->setGeometry(0, 0, clientWidth, menuHeight);
    resize(clientWidth, clientHeight + menuHeight);

    // The window is the form, and a data module's designer window is what owns the module.
    root->Widget = this;
    if (root->Owner) root->Owner->Widget = this;
    widgets_[root] = this;
    BuildChildren(*root, surface_, 1);

    overlay_ = new TSelectionOverlay(this);
    overlay_->setGeometry(rect());
    overlay_->raise();

    // The controls take no input of their own: every event comes here first.
    surface_->installEventFilter(this);
    for (QWidget* w : surface_->findChildren<QWidget*>()) {
        w->installEventFilter(this);
        w->setFocusPolicy(Qt::NoFocus);
    }
    if (menu_) menu_->installEventFilter(this);
    for (QWidget* w : surface_->findChildren<QWidget*>())
        w->show();
    surface_->show();
    if (menu_) menu_->show();
    overlay_->show();
    UpdateSelection();
}

void TDesignerWindow::Stretch(QWidget* container, int dx, int dy, int depth) {
    if (depth > rtl::MaxNestingDepth) return;
    for (QWidget* child : container->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        TDesignComponent* c = components_.value(child);
        if (!c || ControlKindOf(*c) == TControlKind::NonVisual) continue;
        // The parts of a frame take their Align from the frame's file, through the merged tree.
        const TDesignComponent* shown = c;
        for (const auto& [node, real] : real_)
            if (real == c && node->Name == c->Name) shown = node;
        std::string align = shown->StrProp("Align");
        // What a form file leaves out is the class's default: status bars sit at the bottom,
        // tool bars at the top.
        if (!shown->FindProperty("Align")) {
            TControlKind kind = ControlKindOf(*shown);
            if (kind == TControlKind::StatusBar) align = "alBottom";
            if (kind == TControlKind::ToolBar) align = "alTop";
        }
        std::string anchors = shown->StrProp("Anchors");
        if (anchors.empty()) anchors = "[akLeft, akTop]";
        bool left = anchors.find("akLeft") != std::string::npos;
        bool right = anchors.find("akRight") != std::string::npos;
        bool top = anchors.find("akTop") != std::string::npos;
        bool bottom = anchors.find("akBottom") != std::string::npos;
        QRect g = child->geometry();
        int oldWidth = g.width(), oldHeight = g.height();
        if (align == "alTop") {
            g.setWidth(g.width() + dx);
        } else if (align == "alBottom") {
            g.setWidth(g.width() + dx);
            g.moveTop(g.top() + dy);
        } else if (align == "alLeft") {
            g.setHeight(g.height() + dy);
        } else if (align == "alRight") {
            g.moveLeft(g.left() + dx);
            g.setHeight(g.height() + dy);
        } else if (align == "alClient") {
            g.setWidth(g.width() + dx);
            g.setHeight(g.height() + dy);
        } else {
            if (left && right)
                g.setWidth(g.width() + dx);
            else if (right)
                g.moveLeft(g.left() + dx);
            if (top && bottom)
                g.setHeight(g.height() + dy);
            else if (bottom)
                g.moveTop(g.top() + dy);
        }
        g.setWidth(std::max(0, g.width()));
        g.setHeight(std::max(0, g.height()));
        child->setGeometry(g);
        if (g.width() != oldWidth || g.height() != oldHeight)
            Stretch(child, g.width() - oldWidth, g.height() - oldHeight, depth + 1);
    }
}

void TDesignerWindow::Rebuild() {
    // The old widgets may be in the middle of an event: they go later.
    for (QWidget* old : {surface_, static_cast<QWidget*>(menu_), static_cast<QWidget*>(overlay_)})
        if (old) {
            old->hide();
            old->removeEventFilter(this);
            for (QWidget* w : old->findChildren<QWidget*>())
                w->removeEventFilter(this);
            old->setParent(nullptr);
            old->deleteLater();
        }
    surface_ = nullptr;
    menu_ = nullptr;
    overlay_ = nullptr;
    QSize keep = size();
    bool keepSize = buildCount_ > 0 && isVisible();
    ClearWidgets();
    Build();
    if (keepSize) resize(keep);
}

void TDesignerWindow::Renamed(const TDesignComponent* component) {
    if (QWidget* w = WidgetOf(component)) {
        w->setObjectName(FromBytes(component->Name));
        if (component == Root()) setWindowTitle(windowTitle());
    }
}

void TDesignerWindow::closeEvent(QCloseEvent* e) {
    TModelModule* module = editor_ ? editor_->Module() : nullptr;
    bool closed = true;
    if (module && !borrowed_) {
        // A close that fails (a save refused by the disk, a notifier that raises) leaves the
        // module open, and so the window; the error is reported as the application reports one.
        try {
            closed = module->Close();
        } catch (...) {
            closed = false;
            if (ToolsAPI::Application) ToolsAPI::Application->HandleException(nullptr);
        }
    }
    if (closed)
        e->accept();
    else
        e->ignore();
}

void TDesignerWindow::Closed() {
    TFormEditor* editor = editor_.get();
    hide();
    emit EditorClosed(editor);
    deleteLater();
}

void TDesignerWindow::UpdateSelection() {
    if (!overlay_ || !editor_) return;
    overlay_->Rects.clear();
    const auto& selection = editor_->Selection();
    overlay_->Several = selection.size() > 1;
    for (TDesignComponent* c : selection) {
        QWidget* w = WidgetOf(c);
        if (!w || w == this || !w->isVisibleTo(this)) continue;
        overlay_->Rects << QRect(w->mapTo(this, QPoint(0, 0)), w->size());
    }
    overlay_->update();
}

void TDesignerWindow::ShowForm() {
    show();
    raise();
    activateWindow();
    if (editor_) editor_->Activate();
    emit FormActivated(editor_.get());
}

void TDesignerWindow::Borrow(QWidget* host) {
    if (!host || borrowed_) return;
    savedPos_ = pos();
    savedVisible_ = isVisible();
    savedFlags_ = windowFlags();
    hide();
    setParent(host);
    move(0, 0);
    show();
    borrowed_ = true;
}

void TDesignerWindow::GiveBack() {
    if (!borrowed_) return;
    hide();
    setParent(nullptr, savedFlags_);
    move(savedPos_);
    borrowed_ = false;
    if (savedVisible_) show();
}

bool TDesignerWindow::event(QEvent* e) {
    if (e->type() == QEvent::WindowActivate && editor_ && !borrowed_) {
        editor_->Activate();
        emit FormActivated(editor_.get());
    }
    return QWidget::event(e);
}

void TDesignerWindow::resizeEvent(QResizeEvent* e) {
    QWidget::resizeEvent(e);
    int menuHeight = menu_ ? menu_->height() : 0;
    if (surface_) {
        QSize old = surface_->size();
        surface_->resize(width(), height() - menuHeight);
        // The form's controls follow its size as their Align and Anchors tell.
        Stretch(surface_, surface_->width() - old.width(), surface_->height() - old.height(), 0);
    }
    if (menu_) menu_->resize(width(), menuHeight);
    if (overlay_) overlay_->setGeometry(rect());
    UpdateSelection();
}

bool TDesignerWindow::eventFilter(QObject* watched, QEvent* e) {
    auto* w = qobject_cast<QWidget*>(watched);
    if (!w) return false;
    switch (e->type()) {
    case QEvent::MouseButtonPress: {
        auto* me = static_cast<QMouseEvent*>(e);
        // A tab of a page control turns the page, as in the platform's designer.
        if (auto* bar = qobject_cast<QTabBar*>(w)) {
            int index = bar->tabAt(me->position().toPoint());
            if (index >= 0) bar->setCurrentIndex(index);
        }
        TDesignComponent* c = ComponentOf(w);
        if (c && editor_) {
            editor_->Select(c, me->modifiers() & Qt::ShiftModifier);
            emit ComponentClicked(c);
        }
        return true;
    }
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ContextMenu:
    case QEvent::FocusIn:
        return true;
    case QEvent::Show:
    case QEvent::Resize:
    case QEvent::Move:
        UpdateSelection();
        return false;
    default:
        return false;
    }
}

} // namespace workbench::designer
