#include "tests/e2e/Surroundings.h"
#include "tests/support/AccessibleTree.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Element = AccessibleTree::Element;
using Role = AccessibleTree::Role;

namespace {

// Long enough for a busy machine under a sanitizer.
constexpr int patience = 120'000;
constexpr qint16 audible = 300; // of 32767
const QString said =
    u"And so my fellow Americans ask not what your country can do for you ask what you can do for "
    "your country"_s;

QByteArray address(const QString &recording)
{
    const auto segment = [](int start, int end, const QString &text) {
        return QJsonObject{{u"start"_s, start}, {u"end"_s, end}, {u"text"_s, text}};
    };
    return QJsonDocument(QJsonObject{{u"id"_s, u"0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF"_s},
                                     {u"kind"_s, u"file"_s},
                                     {u"title"_s, u"Address"_s},
                                     {u"createdAt"_s, u"2025-03-03T14:05:09Z"_s},
                                     {u"modelID"_s, u"tiny.en"_s},
                                     {u"languageCode"_s, u"en"_s},
                                     {u"durationMs"_s, 66'000},
                                     {u"sourceFilePath"_s, recording},
                                     {u"segments"_s, QJsonArray{segment(0, 60'000, u"ask not"_s),
                                                                segment(60'000, 66'000, u"ask"_s)}},
                                     {u"text"_s, u"ask not ask"_s}})
        .toJson();
}

} // namespace

/// What the windows of the real program hear and let hear, at a real sound server.
class SoundTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        XKeyboard::setLayouts(u"us"_s);
        m_program.placeEngine(u"whisper-server"_s, qEnvironmentVariable("ORVANE_TEST_ENGINE"));
        m_program.setEnvironment(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    }

    void cleanup()
    {
        m_application->terminate();
        QVERIFY(m_application->waitForFinished(patience));
        QCOMPARE(m_application->exitCode(), 0);
    }

    void dictatesIntoTheFirstPage()
    {
        m_program.setPreferences(R"({"interfaceLanguage": "ru"})");
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"Добро пожаловать в Orvane"_s), patience);
        auto speech = m_sound.startSpeaking(Surroundings::microphone, fixture(u"jfk.wav"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"Микрофон слышит вас."_s), patience);

        m_program.install(u"tiny.en"_s);
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Готово"_s), patience);
        speech.reset();
        goTo(Role::Text, u"Проба диктовки"_s); // which stands below the edge of the window
        pressTrigger();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        m_sound.speak(Surroundings::microphone, fixture(u"jfk.wav"_s));
        pressTrigger();
        QTRY_VERIFY_WITH_TIMEOUT(!tried().isEmpty(), patience);
        VERIFY_WORDS(tried(), said);
        QVERIFY(m_windows.press(Role::Button, u"Готово"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"Перетащите аудио или видео"_s), patience);
    }

    void playsARecord()
    {
        m_program.install(u"tiny.en"_s);
        m_program.setPreferences(R"({"interfaceLanguage": "en"})");
        const QString recording = m_program.path(u"address.wav"_s);
        QCOMPARE(QProcess::execute(u"ffmpeg"_s, {u"-nostdin"_s, u"-v"_s, u"error"_s, u"-stream_loop"_s,
                                                 u"5"_s, u"-i"_s, fixture(u"jfk.wav"_s), recording}),
                 0);
        m_program.addRecord(u"0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF"_s, address(recording));
        launch();
        QVERIFY(m_windows.press(Role::ListItem, u"Address"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Play"_s), patience);
        QVERIFY(loudness() < audible);

        QVERIFY(m_windows.press(Role::Button, u"Play"_s));
        QTRY_VERIFY_WITH_TIMEOUT(loudness() > audible, patience);
        QTRY_VERIFY_WITH_TIMEOUT(position() >= 1, patience);
        QVERIFY(m_windows.press(Role::Button, u"Pause"_s));
        QTRY_VERIFY_WITH_TIMEOUT(loudness() < audible, patience);
        const int paused = position();
        QVERIFY(paused < 60);

        QVERIFY(m_windows.press(Role::ListItem, u"1:00 ask"_s));
        QTRY_VERIFY_WITH_TIMEOUT(position() >= 60, patience);
        QTRY_VERIFY_WITH_TIMEOUT(loudness() > audible, patience);
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Play"_s), patience); // at its end
        QTRY_VERIFY_WITH_TIMEOUT(loudness() < audible, patience);
    }

private:
    void launch()
    {
        m_application = m_program.start({});
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::Frame, u"Orvane"_s, &Element::isActive), patience);
    }

    [[nodiscard]] QByteArray status() const { return m_program.run({u"status"_s}).output.trimmed(); }
    [[nodiscard]] QString tried() const { return m_windows.text(Role::Text, u"Проба диктовки"_s).trimmed(); }

    void pressTrigger()
    {
        constexpr int gap = 60; // ms
        m_keyboard.tap(XKeyboard::RightCtrl);
        QTest::qWait(gap);
        m_keyboard.tap(XKeyboard::RightCtrl);
    }

    /// By the Tab key.
    void goTo(Role role, const QString &name) const
    {
        constexpr int most = 30;
        for (int i = 0; i < most && !m_windows.is(role, name, &Element::isFocused); ++i) {
            QCOMPARE(QProcess::execute(u"xdotool"_s, {u"key"_s, u"Tab"_s}), 0);
            QTest::qWait(100);
        }
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(role, name, &Element::isFocused), patience);
    }

    /// The loudest sample that speakers get in half a second.
    [[nodiscard]] int loudness() const
    {
        QProcess recorder;
        recorder.setProcessEnvironment(m_sound.environment());
        recorder.start(u"parec"_s, {u"--raw"_s, u"--format=s16le"_s, u"--rate=16000"_s, u"--channels=1"_s,
                                    u"--latency-msec=50"_s, u"--device=mic_speech.monitor"_s});
        QByteArray heard;
        constexpr qsizetype halfASecond = 16'000;
        while (heard.size() < halfASecond && recorder.waitForReadyRead(patience))
            heard += recorder.readAll();
        recorder.kill();
        recorder.waitForFinished();
        int loudest = -1;
        for (qsizetype i = 0; i + 1 < heard.size(); i += 2) {
            qint16 sample = 0;
            std::memcpy(&sample, heard.constData() + i, sizeof sample);
            loudest = std::max(loudest, std::abs(int(sample)));
        }
        return loudest;
    }

    /// The player's, in seconds: the first of its two times.
    [[nodiscard]] int position() const
    {
        static const QRegularExpression time(u"^(\\d+):(\\d\\d)$"_s);
        for (const Element &element : m_windows.shown()) {
            if (const auto match = time.match(element.name); element.role == Role::Label && match.hasMatch())
                return match.captured(1).toInt() * 60 + match.captured(2).toInt();
        }
        return -1;
    }

    OrvaneProgram m_program;
    Surroundings m_surroundings{m_program};
    SoundServer &m_sound = m_surroundings.sound();
    AccessibleTree m_windows{m_surroundings.bus()};
    XKeyboard m_keyboard;
    std::unique_ptr<QProcess> m_application;
};

ORVANE_DISPLAY_TEST_MAIN(SoundTest, QGuiApplication)
#include "tst_sound.moc"
