#include "tests/e2e/WindowedTest.h"

#include "tests/support/Files.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace orvane::test {

WindowedTest::WindowedTest()
{
    m_program.installLanguageModel();
    m_program.placeEngine(u"whisper-server"_s, qEnvironmentVariable("ORVANE_TEST_ENGINE"));
    // The small model rambles on.
    m_program.placeEngine(u"llama-server"_s, QStringLiteral(ORVANE_RECORDING_ENGINE));
    m_program.setEnvironment(u"ORVANE_TEST_REQUESTS"_s, m_program.path(u"requests"_s));
    m_program.setEnvironment(u"ORVANE_TEST_ANSWER_TOKENS"_s, u"8"_s);
    m_program.setEnvironment(u"LLAMA_ARG_THREADS"_s, u"1"_s);
    m_program.setEnvironment(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    m_program.setEnvironment(u"QT_QUICK_BACKEND"_s, u"software"_s);
}

void WindowedTest::setPreferences(const QByteArray &interfaceLanguage) const
{
    m_program.setPreferences(R"({"selectedModelID": "tiny.en", "dictationLanguage": "en",
        "textCorrectionEnabled": true, "interfaceLanguage": ")" +
                             interfaceLanguage + R"("})");
}

QString WindowedTest::settingOf(const QString &key) const
{
    const QByteArray settings = contentOf(m_program.path(u"config/Orvane/settings.json"_s));
    return QJsonDocument::fromJson(settings).object()[key].toString();
}

void WindowedTest::cleanup()
{
    if (m_application && m_application->state() == QProcess::Running)
        quit();
}

void WindowedTest::launch(const QStringList &arguments)
{
    m_application = m_program.start(arguments);
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::Frame, u"Orvane"_s, &Element::isActive), patience);
}

void WindowedTest::quit()
{
    m_application->terminate();
    QVERIFY(m_application->waitForFinished(patience));
    QCOMPARE(m_application->exitCode(), 0);
    const QByteArray complaints = m_application->readAllStandardError();
    QVERIFY2(!complaints.contains("qrc:"), complaints.constData());
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.shown().isEmpty(), patience);
}

void WindowedTest::kill()
{
    m_application->kill();
    QVERIFY(m_application->waitForFinished(patience));
}

QString WindowedTest::transcript() const
{
    static const QRegularExpression time(u"^\\d+:\\d+ "_s);
    QStringList texts;
    for (const Element &element : m_windows.shown()) {
        if (element.role == Role::ListItem && element.name.contains(time))
            texts.append(QString(element.name).remove(time));
    }
    return texts.join(u' ');
}

QJsonObject WindowedTest::record() const
{
    return QJsonDocument::fromJson(contentOf(m_program.recordFiles().value(0))).object();
}

void WindowedTest::pressKeys(const QStringList &keys)
{
    QCOMPARE(QProcess::execute(u"xdotool"_s, QStringList{u"key"_s} + keys), 0);
}

QString WindowedTest::said()
{
    return u"And so my fellow Americans ask not what your country can do for you ask what you can do for "
           "your country"_s;
}

} // namespace orvane::test
