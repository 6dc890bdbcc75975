#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/ServicesHome.h"
#include "tests/support/SoundServer.h"
#include "tests/support/XDisplay.h"
#include "ui/DictationPanel.h"

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QScreen>
#include <QTest>
#include <QWindow>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

/// Null while it is not shown.
QWindow *capsule()
{
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        if (window->inherits("QQuickWindow") && window->isVisible())
            return window;
    }
    return nullptr;
}

/// What a screen reader reads of the capsule: its title and what stands below it. Empty while it is not
/// shown.
QStringList readOut()
{
    const QAccessibleInterface *scene = QAccessible::queryAccessibleInterface(capsule());
    if (!scene || !scene->child(0))
        return {};
    return {scene->child(0)->text(QAccessible::Name), scene->child(0)->text(QAccessible::Description)};
}

/// The words so far, as a screen reader reads them.
QString wordsReadOut(const QAccessibleInterface *within)
{
    for (int i = 0; within && i < within->childCount(); ++i) {
        const QAccessibleInterface *child = within->child(i);
        if (child->role() == QAccessible::StaticText && !child->state().invisible)
            return child->text(QAccessible::Name);
        if (const QString words = wordsReadOut(child); !words.isEmpty())
            return words;
    }
    return {};
}

QString wordsReadOut()
{
    return wordsReadOut(QAccessible::queryAccessibleInterface(capsule()));
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

        const QPoint cross(354, capsule()->height() - 100);
        QTest::mouseClick(capsule(), Qt::LeftButton, {}, cross);
        QTRY_COMPARE(readOut(), QStringList());
        QCOMPARE(services.dictation()->state(), DictationState::Idle);
    }

    void showsTheWordsWhenSpeechPauses()
    {
        if (!SoundServer::isInstalled())
            QSKIP("there is no PulseAudio to make a microphone with");
        const FakeEngineHome engine(u"whisper-server"_s);
        engine.behave({.answers = {{u"/inference"_s,
                                    {{.body = R"({"language":"russian","segments":[{"start":0,"end":2,)"
                                              R"("text":" Первые слова."}]})"}}}}});
        const QString capture = u"/orvane-capture.so"_s;
        QVERIFY(QFile::link(QStringLiteral(ORVANE_RESOURCES) + capture, engine.resources() + capture));
        SoundServer sound;
        sound.enter();
        sound.plugIn(u"mic"_s);
        const KeyTap keys;
        DictationPanel panel(QStringLiteral(ORVANE_RESOURCES), keys);
        ServicesHome home;
        AppServices services(home.onDesktop(engine.resources(), &panel));
        ServicesHome::install(services.models(), WhisperModel::catalog().first());

        services.dictation()->start();
        QTRY_VERIFY(!readOut().isEmpty());
        QTest::qWait(500);
        const QString tone = sound.control({u"load-module"_s, u"module-sine"_s, u"sink=mic_speech"_s});
        QTest::qWait(1500);
        QCOMPARE(wordsReadOut(), QString());
        sound.control({u"unload-module"_s, tone.trimmed()});
        QTRY_COMPARE(wordsReadOut(), u"Первые слова."_s);
        QCOMPARE(home.injector.texts, QStringList());

        services.dictation()->cancel();
        QTRY_COMPARE(readOut(), QStringList());
    }
};

ORVANE_DISPLAY_TEST_MAIN(TestDictationPanel, QApplication)
#include "tst_dictationpanel.moc"
