#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "tests/support/ServicesHome.h"
#include "tests/support/SoundServer.h"
#include "tests/support/XDisplay.h"
#include "ui/DictationPanel.h"

#include <QAccessible>
#include <QApplication>
#include <QScreen>
#include <QTest>
#include <QWindow>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

/// What a screen reader reads of the capsule: its title and what stands below it. Empty while it is not
/// shown.
QStringList readOut()
{
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        const QAccessibleInterface *scene = QAccessible::queryAccessibleInterface(window);
        if (!window->inherits("QQuickWindow") || !window->isVisible() || !scene || !scene->child(0))
            continue;
        const QAccessibleInterface *capsule = scene->child(0);
        return {capsule->text(QAccessible::Name), capsule->text(QAccessible::Description)};
    }
    return {};
}

/// Whether the newest of the 48 levels is drawn as loud.
bool waveformIsHigh()
{
    const QRgb accent = qRgb(0xff, 0x6b, 0x57);
    const QImage level =
        QGuiApplication::primaryScreen()->grabWindow(0, 450 + 340, 594 + 65, 20, 1).toImage();
    for (int x = 0; x < level.width(); ++x)
        if (level.pixel(x, 0) == accent)
            return true;
    return false;
}

} // namespace

/// A dictation as the capsule shows it, with a real microphone.
class TestDictationPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhatTheDictationHears()
    {
        if (!SoundServer::isInstalled())
            QSKIP("there is no PulseAudio to make a microphone with");
        SoundServer sound;
        sound.enter();
        sound.plugIn(u"mic"_s);
        const KeyTap keys; // none works
        DictationPanel panel(QStringLiteral(ORVANE_RESOURCES), keys);
        ServicesHome home;
        AppServices services(home.onDesktop(QStringLiteral(ORVANE_RESOURCES), &panel));
        services.settings().setInterfaceLanguage(u"ru"_s);
        ServicesHome::install(services.models(), WhisperModel::catalog().first());

        services.dictation()->start();
        const QString listening = u"Слушаю…"_s;
        QTRY_COMPARE(readOut(), (QStringList{listening, u"orvane toggle или меню — готово · ✕ — отмена"_s}));
        QTRY_COMPARE(readOut(), (QStringList{listening, u"Нет звука с микрофона — проверьте его"_s}));
        QVERIFY(!waveformIsHigh());
        sound.control({u"load-module"_s, u"module-sine"_s, u"sink=mic_speech"_s});
        QTRY_VERIFY(waveformIsHigh());
        QTRY_COMPARE(readOut().value(1), u"orvane toggle или меню — готово · ✕ — отмена"_s);

        services.dictation()->cancel();
        QTRY_COMPARE(readOut(), QStringList());
    }
};

ORVANE_DISPLAY_TEST_MAIN(TestDictationPanel, QApplication)
#include "tst_dictationpanel.moc"
