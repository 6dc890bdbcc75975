#include "tests/meeting/MeetingHome.h"
#include "tests/support/FakeEngineHome.h"
#include "ui/MeetingNotices.h"
#include "ui/presentation/MeetingDesk.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

using Outcome = MeetingState::Outcome;

namespace {

const QByteArray speech = R"({"segments":[{"start":0,"end":1,"text":" one"}]})";

} // namespace

class TestMeetingDesk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void saysWhatBecameOfAMeeting_data();
    void saysWhatBecameOfAMeeting();
    void repeatsWhyNothingBegan();
    void warnsInALineOfItsOwn();
    void looksAtTheMachineWhileShown();
    void offersLeftovers();

private:
    void answer(const FakeAnswer &answer) const
    {
        m_engine->behave({.answers = {{u"/inference"_s, {answer}}}});
    }
    void record();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeEngineHome> m_engine;
    std::unique_ptr<MeetingHome> m_home;
    std::unique_ptr<MeetingDesk> m_desk;
    std::unique_ptr<MeetingNotices> m_notices;
    QStringList m_said;

    QString m_microphone;
    std::atomic<qint64> m_freeSpace = -1;
    QList<QUrl> m_opened;
    bool m_canOpen = true;
};

void TestMeetingDesk::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_engine = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
    answer({.body = speech});
    m_home = std::make_unique<MeetingHome>(m_folder->path(), m_engine->resources());
    const auto name = [this] {
        return [](QString microphone) -> QCoro::Task<QString> { co_return microphone; }(m_microphone);
    };
    const auto open = [this](const QUrl &file) {
        m_opened.append(file);
        return m_canOpen;
    };
    m_desk = std::make_unique<MeetingDesk>(
        m_home->meeting, MeetingDesk::Machine{.microphone = name,
                                              .freeSpace = [this]() -> qint64 { return m_freeSpace; },
                                              .open = open});
    m_notices = std::make_unique<MeetingNotices>(m_home->meeting);
    m_said.clear();
    connect(m_notices.get(), &MeetingNotices::notice, this,
            [this](const QString &text) { m_said.append(text); });
}

void TestMeetingDesk::cleanup()
{
    m_notices.reset();
    m_desk.reset();
    m_home.reset();
    QTRY_VERIFY(m_engine->allEnded());
    QCoreApplication::processEvents();
}

void TestMeetingDesk::record()
{
    m_desk->start();
    QTRY_VERIFY(m_desk->isRunning());
    m_home->microphone->current->hear(2);
}

void TestMeetingDesk::saysWhatBecameOfAMeeting_data()
{
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("said");
    QTest::newRow("saved") << Outcome::Saved << u"Совещание сохранено · 1 сегментов · аудио в истории"_s;
    QTest::newRow("partial") << Outcome::Partial << u"unplugged"_s;
    QTest::newRow("no speech") << Outcome::NoSpeech << u"Готово · речь не распознана (запись сохранена)"_s;
    QTest::newRow("failed") << Outcome::Failed << u"Ошибка расшифровки (запись сохранена: "_s;
    QTest::newRow("given up") << Outcome::Cancelled << u"Расшифровка отменена · аудиозапись сохранена"_s;
}

void TestMeetingDesk::saysWhatBecameOfAMeeting()
{
    QFETCH(const Outcome, outcome);
    QFETCH(const QString, said);
    if (outcome == Outcome::NoSpeech)
        answer({.body = R"({"segments":[]})"});
    else if (outcome == Outcome::Failed)
        answer({.status = 500});
    else if (outcome == Outcome::Cancelled)
        answer(FakeAnswer::never());

    record();
    QCOMPARE(m_desk->statusText(), u"Идёт запись…"_s);
    if (outcome == Outcome::Partial)
        m_home->microphone->current->endByItself(u"unplugged"_s);
    else
        m_desk->stop();
    if (outcome == Outcome::Cancelled) {
        QTRY_COMPARE(m_engine->requests(u"/inference"_s).size(), 1);
        QVERIFY(m_desk->isTranscribing());
        m_desk->cancelTranscription();
    }
    QTRY_COMPARE(m_home->meeting.outcome(), outcome);

    QVERIFY(!m_desk->isTranscribing());
    const bool isSaved = outcome == Outcome::Saved || outcome == Outcome::Partial;
    QCOMPARE(!m_desk->lastRecordId().isEmpty(), isSaved);
    const QString shown = m_desk->statusText() + u'\n' + m_desk->errorText();
    QVERIFY2(shown.contains(said), qPrintable(shown));
    QTRY_VERIFY2(m_said.join(u'\n').contains(said), qPrintable(m_said.join(u'\n')));
    QCOMPARE(m_desk->leftovers()->count(), outcome == Outcome::Failed ? 1 : 0);
}

void TestMeetingDesk::repeatsWhyNothingBegan()
{
    record();
    m_desk->stop();
    QTRY_COMPARE(m_home->meeting.outcome(), Outcome::Saved);
    m_home->microphoneAccess->isAllowed = false;
    for (int i = 1; i <= 2; ++i) {
        m_said.clear();
        m_desk->start();
        QTRY_COMPARE(m_home->meeting.outcome(), Outcome::NotStarted);
        QTRY_COMPARE(m_said, QStringList(m_desk->errorText()));
        QVERIFY(m_said.constFirst().contains(u"Нет доступа к микрофону"_s));
        QCOMPARE(m_desk->statusText(), QString()); // not that of the one before
    }
}

void TestMeetingDesk::warnsInALineOfItsOwn()
{
    *m_home->freeSpace = 32'000 * 60 * 3;
    record();
    QTRY_COMPARE(m_desk->warning(), u"На диске осталось места на 3 мин"_s);
    QCOMPARE(m_desk->statusText(), u"Идёт запись…"_s);
    m_desk->stop();
    QTRY_COMPARE(m_home->meeting.outcome(), Outcome::Saved);
    QCOMPARE(m_desk->warning(), QString());
}

void TestMeetingDesk::looksAtTheMachineWhileShown()
{
    m_microphone = u"Webcam"_s;
    m_freeSpace = 32'000LL * 3600 * 212 + 1;
    QCOMPARE(m_desk->surroundings(), QString());
    m_desk->setShown(true);
    QTRY_COMPARE(m_desk->surroundings(), u"Webcam · на диске места на 212 ч"_s);
    m_desk->setShown(false);
    m_microphone.clear();
    m_freeSpace = 32'000 * 60 * 90;
    m_desk->setShown(true);
    QTRY_COMPARE(m_desk->surroundings(), u"Микрофон не найден · на диске места на 90 мин"_s);
}

void TestMeetingDesk::offersLeftovers()
{
    answer({.status = 500});
    record();
    m_desk->stop();
    QTRY_COMPARE(m_desk->leftovers()->count(), 1);
    QVERIFY(
        m_desk->leftovers()->rows().constFirst().value(u"title"_s).toString().startsWith(u"Совещание · "_s));
    const QString audio = m_home->recordings().filePath(m_home->audio().constFirst());
    QSignalSpy refused(m_desk.get(), &MeetingDesk::refused);
    m_desk->playLeftover(0);
    m_canOpen = false;
    m_desk->playLeftover(0);
    m_desk->playLeftover(1); // none
    QCOMPARE(m_opened, QList<QUrl>(2, QUrl::fromLocalFile(audio)));
    QCOMPARE(refused.size(), 1);

    const EngineTurns::Turn turn = m_home->turns.take();
    m_desk->transcribeLeftover(0);
    QCOMPARE(refused.size(), 2);
    QVERIFY(!m_desk->isTranscribing());
    m_desk->dismissLeftover(0);
    QCOMPARE(m_desk->leftovers()->count(), 0);
    QVERIFY(QFile::exists(audio));
}

QTEST_GUILESS_MAIN(TestMeetingDesk)
#include "tst_meetingdesk.moc"
