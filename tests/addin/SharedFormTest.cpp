// The window experts' forms: their place comes from the expert's form settings, a form without
// one is centred, and the place goes back to the settings on the hot key, or on closing when
// that is asked for.
#include "host/ExpShrForm.h"

#include "foundation/AppUtils.h"

#include <QAction>
#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

using namespace zelvane;

namespace {

class TTestManager : public TSharedManager {
    RTL_CLASS(TTestManager, TSharedManager)
};
RTL_IMPLEMENT_CLASS(TTestManager)

// A window system that keeps placements as the platform's does: by window, as given, and a
// manager whose form settings the form uses.
class SharedForm : public ::testing::Test {
protected:
    SharedForm() {
        TWindowSystem ws = WindowSystem();
        ws.GetWindowPlacement = [this](HWND wnd, TWindowPlacement& p) {
            auto* w = static_cast<QWidget*>(wnd);
            p.Length = kWindowPlacementLength;
            p.ShowCmd = SW_SHOWNORMAL;
            p.NormalPosition = {w->x(), w->y(), w->x() + w->width(), w->y() + w->height()};
            return true;
        };
        ws.SetWindowPlacement = [](HWND wnd, const TWindowPlacement& p) {
            static_cast<QWidget*>(wnd)->setGeometry(p.NormalPosition.Left, p.NormalPosition.Top,
                                                    p.NormalPosition.Right - p.NormalPosition.Left,
                                                    p.NormalPosition.Bottom - p.NormalPosition.Top);
            return true;
        };
        old_ = SetWindowSystem(ws);
    }
    ~SharedForm() override { SetWindowSystem(old_); }

    TWindowSystem old_;
    TTestManager manager;
};

TEST_F(SharedForm, AFirstShowingIsCentredTheHotKeyOrAskedClosingStoresThePlaceAndItComesBack) {
    manager.GetFormSetting()->SavePlacementShortCut = "Ctrl+Alt+P";
    auto form = MakeForm<TSharedForm>(nullptr, &manager);
    EXPECT_EQ(form->scSavePlacement()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+P")));
    form->resize(200, 100);
    form->show();
    QRect screen = QGuiApplication::primaryScreen()->geometry();
    EXPECT_EQ(form->pos(), QPoint((screen.width() - 200) / 2, (screen.height() - 100) / 2));

    form->move(10, 20);
    form->close();
    EXPECT_EQ(manager.GetFormSetting()->FormPlacement, "") << "closing stores nothing unasked";
    form->scSavePlacement()->trigger();
    EXPECT_EQ(manager.GetFormSetting()->FormPlacement, "0,1,0,0,0,0,10,20,210,120");
    // The stored place comes back, and closing stores it when asked.
    manager.GetFormSetting()->FormPlacement = "0,1,0,0,0,0,30,40,330,240";
    manager.GetFormSetting()->AutoSavePlacement = true;
    form = MakeForm<TSharedForm>(nullptr, &manager);
    form->show();
    EXPECT_EQ(form->geometry(), QRect(30, 40, 300, 200));
    form->move(50, 60);
    form->close();
    EXPECT_EQ(manager.GetFormSetting()->FormPlacement, "0,1,0,0,0,0,50,60,350,260");
}

} // namespace
