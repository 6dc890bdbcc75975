// screenshots FOLDER: takes a picture of every page of the windows and of the indicator into the folder,
// light and dark, in both languages. Run with QT_SCALE_FACTOR for other sizes; tools/take-screenshots does.

#include "app/services/AppServices.h"
#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "dictation/DictationModeTexts.h"
#include "tests/support/FakeFileChooser.h"
#include "tools/screenshots/Album.h"
#include "tools/screenshots/SampleHome.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDController.h"
#include "ui/WindowController.h"
#include "ui/presentation/Desk.h"

#include <QApplication>
#include <QPalette>
#include <QScopeGuard>
#include <QWindow>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

void chooseTab(QWindow *window, int index)
{
    for (QObject *tabs : window->findChildren<QObject *>(u"recordTabs"_s))
        tabs->setProperty("currentIndex", index);
}

/// The page of meetings with recordings that are not dealt with.
void photographLeftovers(const SampleHome &home, MeetingTranscriber &meeting, WindowController &windows,
                         Desk &desk, const Album &album)
{
    home.leaveRecordings();
    spawn(meeting.findLeftovers());
    desk.setPage(u"meeting"_s);
    windows.showMain();
    QWindow *main = windows.mainWindow();
    const QSize size = main->size();
    album.take(main, u"leftovers"_s);
    main->resize(main->minimumSize());
    album.take(main, u"leftovers-small"_s);
    main->resize(size);
    main->close();
    while (!meeting.leftovers().isEmpty())
        meeting.dismissLeftover(meeting.leftovers().constFirst().audioFileName);
}

/// The indicator as it is while somebody dictates, and while that is worked on.
void photographIndicator(AppSettings &settings, const Album &album)
{
    DictationHUDModel hud(settings);
    HUDController controller(hud, QStringLiteral(ORVANE_RESOURCES), [](const QString &) {});
    QList<float> levels;
    for (int i = 0; i < 48; ++i)
        levels.append(0.15F + 0.6F * float(std::abs(std::sin(i * 0.7) * std::sin(i * 0.23))));
    hud.setState(DictationState::Recording);
    hud.setWaveform(levels);
    controller.show();
    settle();
    const auto isIndicator = [](const QWindow *window) { return window->flags().testFlag(Qt::Tool); };
    const QWindowList windows = QGuiApplication::allWindows();
    QWindow *indicator = *std::ranges::find_if(windows, isIndicator);
    album.takeIndicator(indicator, u"dictation"_s);
    const bool isRussian = settings.interfaceLanguage() == "ru"_L1;
    hud.setLiveText(isRussian
                        ? LiveText{.settled = u"Давайте перенесём обсуждение бюджета на четверг. К этому "
                                              "времени Мария соберёт цифры"_s,
                                   .unsettled = u"по каждому отделу и пришлёт"_s}
                        : LiveText{.settled = u"Let us move the talk about the budget to Thursday. By then "
                                              "Maria will have the figures"_s,
                                   .unsettled = u"of each department and send"_s});
    album.takeIndicator(indicator, u"dictation-words"_s);
    hud.setState(DictationState::Correcting, DictationMode::Correct);
    album.takeIndicator(indicator, u"dictation-working"_s);
    hud.setNotice(DictationModeTexts::description(DictationMode::Email));
    album.takeIndicator(indicator, u"dictation-notice"_s);
}

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
    const QSize size = main->size();
    main->resize(main->minimumSize());
    for (int i = 0; i < tabs.size(); ++i) {
        chooseTab(main, i);
        album.take(main, tabs.at(i) + u"-small"_s);
    }
    for (const QString &page : {u"file"_s, u"meeting"_s, u"first"_s}) {
        desk.setPage(page);
        album.take(main, page + u"-small"_s);
    }
    main->resize(size);
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
            const Album album{
                .folder = QDir(QString::fromLocal8Bit(argv[1])), .isDark = isDark, .language = language};
            photograph(windows, *desk, album);
            photographLeftovers(home, services.meeting(), windows, *desk, album);
            photographIndicator(services.settings(), album);
        }
    }
    return 0;
}
