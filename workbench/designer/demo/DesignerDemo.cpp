// A small program that shows the designer and the CPU window without the workbench's main
// window: a form of a project with the object inspector beside it, or the CPU window over a
// snapshot. With --screenshot it draws what it shows into a PNG file and quits, which is how the
// pictures of the documentation are made (under Xvfb).
//
//   designer_demo [--project FILE] [--form UNIT] [--select NAME] [--screenshot FILE]
//   designer_demo --cpu SNAPSHOT [--screenshot FILE]
#include "workbench/cpu/CPUView.h"
#include "workbench/designer/FormDesigners.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLinearGradient>
#include <QPainter>
#include <QTimer>

#include <cstdio>

using namespace workbench;

namespace {

// One window as the desktop shows it: a caption bar above what the window itself paints.
QImage Framed(QWidget* w) {
    QPixmap content = w->grab();
    const int caption = 20, border = 3;
    QImage image(content.width() + 2 * border, content.height() + caption + 2 * border,
                 QImage::Format_RGB32);
    QPainter p(&image);
    p.fillRect(image.rect(), QColor(0xD4, 0xD0, 0xC8));
    p.setPen(Qt::white);
    p.drawLine(0, 0, image.width() - 1, 0);
    p.drawLine(0, 0, 0, image.height() - 1);
    p.setPen(QColor(0x40, 0x40, 0x40));
    p.drawLine(image.width() - 1, 0, image.width() - 1, image.height() - 1);
    p.drawLine(0, image.height() - 1, image.width() - 1, image.height() - 1);
    QRect bar(border, border, content.width(), caption - 2);
    QLinearGradient g(bar.topLeft(), bar.topRight());
    g.setColorAt(0, QColor(0x0A, 0x24, 0x6A));
    g.setColorAt(1, QColor(0xA6, 0xCA, 0xF0));
    p.fillRect(bar, g);
    QFont f = QApplication::font();
    f.setBold(true);
    f.setPixelSize(11);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(bar.adjusted(4, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, w->windowTitle());
    p.drawPixmap(border, border + caption, content);
    return image;
}

void Save(const QList<QWidget*>& windows, const QString& file) {
    QList<QImage> images;
    int width = 16, height = 0;
    for (QWidget* w : windows) {
        images << Framed(w);
        width += images.back().width() + 16;
        height = std::max(height, images.back().height());
    }
    QImage desktop(width, height + 32, QImage::Format_RGB32);
    desktop.fill(QColor(0x3A, 0x6E, 0xA5));
    QPainter p(&desktop);
    int x = 16;
    for (const QImage& image : images) {
        p.drawImage(x, 16, image);
        x += image.width() + 16;
    }
    p.end();
    if (!desktop.save(file)) std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
}

QString Option(const QStringList& args, const QString& name, const QString& fallback = {}) {
    int i = args.indexOf(name);
    return i >= 0 && i + 1 < args.size() ? args[i + 1] : fallback;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QStringList args = app.arguments();
    QString shot = Option(args, "--screenshot");
    QString source = qEnvironmentVariable("ZELVANE_SOURCE_DIR", QDir::currentPath());
    try {
        if (args.contains("--cpu")) {
            std::unique_ptr<cpu::TCPUWindow> window(
                cpu::TCPUWindow::Load(Option(args, "--cpu").toStdString()));
            window->show();
            if (!shot.isEmpty()) {
                QTimer::singleShot(300, [&] {
                    Save({window.get()}, shot);
                    app.quit();
                });
            }
            return app.exec();
        }
        auto model = TIDEModel::Create();
        model->OpenProjectFile(
            Option(args, "--project", source + "/examples/Example.dpr").toStdString());
        QString unit = Option(args, "--form", "Main");
        auto module = model->OpenModuleFile(
            (QFileInfo(Option(args, "--project", source + "/examples/Example.dpr")).path() + "/" +
             unit + ".pas")
                .toStdString(),
            TOpenMode::Show);
        if (!module || !module->FormEditor()) {
            std::fprintf(stderr, "%s has no form\n", qPrintable(unit));
            return 1;
        }
        designer::TFormDesigners designers(model.get());
        designer::TObjectInspector inspector;
        designers.SetInspector(&inspector);
        designer::TDesignerWindow* window = designers.Open(module->FormEditor());
        inspector.SetFormEditor(module->FormEditor());
        inspector.move(8, 40);
        inspector.resize(230, window->height() + 60);
        window->move(260, 40);
        inspector.show();
        window->ShowForm();
        QString select = Option(args, "--select");
        if (!select.isEmpty())
            if (auto c = module->FormEditor()->FindComponent(select.toStdString()))
                c->Select(false);
        if (!shot.isEmpty()) {
            QTimer::singleShot(300, [&] {
                Save({&inspector, window}, shot);
                app.quit();
            });
        }
        int result = app.exec();
        model->CloseAll();
        return result;
    } catch (const rtl::Exception& e) {
        std::fprintf(stderr, "%s\n", e.Message().c_str());
        return 1;
    }
}
