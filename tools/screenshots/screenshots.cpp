// screenshots FOLDER: takes a picture of every page of the windows into the folder, light and dark, in both
// languages. Run with QT_SCALE_FACTOR for other sizes; tools/take-screenshots does.

#include "app/services/AppServices.h"
#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "tests/support/FakeFileChooser.h"
#include "tools/screenshots/SampleHome.h"
#include "ui/WindowController.h"
#include "ui/presentation/Desk.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QQuickWindow>
#include <QScopeGuard>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

const QStringList picturesOfReadme = {u"transcript-light-ru.png"_s, u"corrected-light-ru.png"_s,
                                      u"first-dark-en.png"_s, u"models-dark-en.png"_s};

/// Lets the windows draw and what is read come.
void settle()
{
    QElapsedTimer time;
    for (time.start(); time.elapsed() < 500;)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

void chooseTab(QWindow *window, int index)
{
    for (QObject *tabs : window->findChildren<QObject *>(u"recordTabs"_s))
        tabs->setProperty("currentIndex", index);
}

/// The window on a desktop, at half the size of a screen of high resolution.
QImage onDesktop(const QImage &window)
{
    constexpr int around = 56;
    constexpr int shadow = 24;
    constexpr qreal corner = 12;
    const qreal scale = window.devicePixelRatio();
    QImage desktop((window.deviceIndependentSize().toSize() + QSize(2 * around, 2 * around)) * scale,
                   QImage::Format_RGB32);
    desktop.setDevicePixelRatio(scale);
    QPainter painter(&desktop);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF all(QPointF(), desktop.deviceIndependentSize());
    QLinearGradient sky(all.topLeft(), all.bottomRight());
    sky.setColorAt(0, QColor(u"#f3c9a5"_s));
    sky.setColorAt(0.45, QColor(u"#cf8f8a"_s));
    sky.setColorAt(1, QColor(u"#4b5a7d"_s));
    painter.fillRect(all, sky);
    const QRectF frame(QPointF(around, around), window.deviceIndependentSize());
    painter.setPen(Qt::NoPen);
    for (int i = shadow; i > 0; i -= 2) {
        painter.setBrush(QColor(0, 0, 0, 6));
        painter.drawRoundedRect(frame.adjusted(-i, 4 - i, i, 8 + i), corner + i, corner + i);
    }
    QPainterPath shape;
    shape.addRoundedRect(frame, corner, corner);
    painter.setClipPath(shape);
    painter.drawImage(frame.topLeft(), window);
    return desktop;
}

struct Album
{
    QDir folder;
    QString variant;

    void take(QWindow *window, const QString &page) const
    {
        settle();
        const QString name = u"%1-%2.png"_s.arg(page, variant);
        const QImage picture = static_cast<QQuickWindow *>(window)->grabWindow();
        save(picture, name);
        if (picturesOfReadme.contains(name))
            save(onDesktop(picture), u"desktop-"_s + name);
    }

    void save(const QImage &picture, const QString &name) const
    {
        const QString file = folder.filePath(name);
        if (!picture.save(file))
            qFatal("cannot write %s", qPrintable(file));
        std::printf("%s\n", qPrintable(file));
    }
};

void photograph(WindowController &windows, Desk &desk, const Album &album)
{
    windows.showMain();
    QWindow *main = windows.mainWindow();
    for (const QString &page : {u"file"_s, u"meeting"_s, u"first"_s}) {
        desk.setPage(page);
        album.take(main, page);
    }
    desk.openRecord(SampleHome::meeting().toString());
    const QStringList tabs = {u"transcript"_s, u"corrected"_s, u"protocol"_s, u"questions"_s, u"log"_s};
    for (int i = 0; i < tabs.size(); ++i) {
        settle();
        chooseTab(main, i);
        album.take(main, tabs.at(i));
    }
    for (const QString &page : {u"general"_s, u"models"_s, u"correction"_s, u"prompt"_s, u"check"_s}) {
        windows.showSettings(page);
        album.take(windows.settingsWindow(), page);
    }
    windows.settingsWindow()->close();
    main->close();
    settle();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1])))
        return 2;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const auto finish = qScopeGuard(endAbandonedTasks);
    SampleHome home;
    AppServices services(home.onDesktop(QStringLiteral(ORVANE_RESOURCES)));
    services.settings().setDetectSpeakers(true);
    services.settings().setModelRepository(u"https://models.example.org"_s);
    services.settings().setCorrectionEngine(CorrectionEngine::Local);
    KeyTap keys;
    test::FakeFileChooser files;
    Desk *desk = nullptr;
    WindowController windows({.settings = services.settings(),
                              .defaults = services.defaults(),
                              .makeDesk =
                                  [&] {
                                      auto made = std::make_unique<Desk>(services, keys, files);
                                      desk = made.get();
                                      return made;
                                  },
                              .moduleFolder = QStringLiteral(ORVANE_RESOURCES)});
    for (const bool isDark : {false, true}) {
        QPalette palette = QApplication::palette();
        palette.setColor(QPalette::Window, isDark ? Qt::black : Qt::white);
        palette.setColor(QPalette::WindowText, isDark ? Qt::white : Qt::black);
        QApplication::setPalette(palette);
        for (const QString &language : {u"ru"_s, u"en"_s}) {
            services.settings().setInterfaceLanguage(language);
            windows.showMain();
            photograph(windows, *desk,
                       {.folder = QDir(QString::fromLocal8Bit(argv[1])),
                        .variant = (isDark ? u"dark-"_s : u"light-"_s) + language});
        }
    }
    return 0;
}
