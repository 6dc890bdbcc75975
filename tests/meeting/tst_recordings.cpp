#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/localization/Localization.h"
#include "meeting/RecordingsFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

RecordedMeeting meetingOf(const QDateTime &startedAt)
{
    return {.audioFileName = {}, .modelID = u"base"_s, .languageCode = u"ru"_s, .startedAt = startedAt};
}

} // namespace

class TestRecordings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_root = std::make_unique<QTemporaryDir>(); }

    void differentNamesInOneSecond();
    void findsWhatWasCutOff_data();
    void findsWhatWasCutOff();
    void marksThatTellNothing();
    void keepsOffWhatIsRecorded();
    void titles();

private:
    [[nodiscard]] QString folder() const { return m_root->filePath(u"Orvane/Recordings"_s); }
    [[nodiscard]] QDir dir() const { return QDir(folder()); }
    [[nodiscard]] QByteArray contentOf(const QString &name) const
    {
        QFile file(dir().filePath(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_root;
    const QDateTime m_start{{2025, 3, 3}, {14, 5, 9, 250}};
};

void TestRecordings::differentNamesInOneSecond()
{
    RecordingsFolder recordings(folder());
    const RecordedMeeting first = recordings.create(meetingOf(m_start));
    const RecordedMeeting second = recordings.create(meetingOf(m_start.addMSecs(700)));
    QCOMPARE(first.audioFileName, u"Совещание 2025-03-03 14.05.09.wav"_s);
    QCOMPARE(second.audioFileName, u"Совещание 2025-03-03 14.05.09 (2).wav"_s);
    QVERIFY(recordings.leftovers().isEmpty()); // its own are none
    recordings.discard(second);
    QCOMPARE(dir().entryList(QDir::Files).size(), 2);
    recordings.forget(first);
    QCOMPARE(dir().entryList(QDir::Files), QStringList{first.audioFileName});
}

void TestRecordings::findsWhatWasCutOff_data()
{
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<bool>("isFinished");
    QTest::addColumn<qint64>("durationMs");
    constexpr qsizetype samples = 24'000;
    QTest::newRow("unfinished") << 44 + 2 * samples << false << qint64(1500);
    QTest::newRow("in the middle of a sample") << 44 + 2 * samples + 1 << false << qint64(1500);
    QTest::newRow("finished") << 44 + 2 * samples << true << qint64(1500);
    QTest::newRow("half a header") << qsizetype(20) << false << qint64(0);
}

void TestRecordings::findsWhatWasCutOff()
{
    QFETCH(const qsizetype, size);
    QFETCH(const bool, isFinished);
    QFETCH(const qint64, durationMs);
    const RecordedMeeting meeting = RecordingsFolder(folder()).create(meetingOf(m_start));
    const QString name = meeting.audioFileName;
    const std::vector<float> sound(24'001, 0.25F);
    {
        const QString path = dir().filePath(name);
        WavFileWriter writer(path, sampleRate);
        writer.append(std::span(sound).first(isFinished ? 24'000 : 24'001));
        if (isFinished)
            writer.finalize();
        QVERIFY(QFile::resize(path, size));
    }
    const QByteArray before = contentOf(name);

    const QList<RecordedMeeting> found = RecordingsFolder(folder()).leftovers();
    if (durationMs == 0) { // not worth offering, and not deleted either
        QVERIFY(found.isEmpty());
        QCOMPARE(dir().entryList(QDir::Files), QStringList{name});
        return;
    }
    RecordedMeeting expected = meeting;
    expected.durationMs = durationMs;
    QCOMPARE(found, QList{expected});
    const QByteArray after = contentOf(name);
    QCOMPARE(qFromLittleEndian<quint32>(after.constData() + 4), 48'036U);
    QCOMPARE(qFromLittleEndian<quint32>(after.constData() + 40), 48'000U);
    QCOMPARE(after.mid(44), before.mid(44));
    if (isFinished)
        QCOMPARE(after, before);
}

void TestRecordings::marksThatTellNothing()
{
    QVERIFY(dir().mkpath(u"."_s));
    const auto put = [this](const QString &name, const QByteArray &content) {
        QFile file(dir().filePath(name));
        QVERIFY(file.open(QFile::WriteOnly));
        file.write(content);
    };
    put(u"a.wav"_s, QByteArray(32'044, '\0')); // a power loss may leave zeros
    put(u"a.wav.unfinished.json"_s, "{\"model");
    put(u"gone.wav.unfinished.json"_s, meetingOf(m_start).json());
    put(u"of no interest.wav"_s, "RIFF");
    const QList<RecordedMeeting> found = RecordingsFolder(folder()).leftovers();
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().audioFileName, u"a.wav"_s);
    QCOMPARE(found.first().durationMs, 1000);
    QCOMPARE(found.first().languageCode, u"auto"_s);
    QVERIFY(found.first().startedAt.secsTo(QDateTime::currentDateTime()) < 60);
    QVERIFY(contentOf(u"a.wav"_s).startsWith("RIFF"));
    QCOMPARE(contentOf(u"of no interest.wav"_s), "RIFF");
    QVERIFY(!QFile::exists(dir().filePath(u"gone.wav.unfinished.json"_s)));
}

/// Another program on the same folder, such as one that was started without a session bus.
void TestRecordings::keepsOffWhatIsRecorded()
{
    auto recording = std::make_unique<RecordingsFolder>(folder());
    const QString name = recording->create(meetingOf(m_start)).audioFileName;
    WavFileWriter(dir().filePath(name), sampleRate).append(std::vector<float>(16'000, 0.25F));
    const QByteArray before = contentOf(name);
    RecordingsFolder other(folder());
    QVERIFY(other.leftovers().isEmpty());
    QCOMPARE(contentOf(name), before);
    QCOMPARE(dir().entryList(QDir::Files).size(), 2);

    recording.reset(); // the program that recorded it has ended
    QCOMPARE(other.leftovers().size(), 1);
    QVERIFY(RecordingsFolder(folder()).leftovers().isEmpty()); // one program offers it
}

void TestRecordings::titles()
{
    QCOMPARE(meetingTitle(m_start), u"Совещание · 3 марта, 14:05"_s);
    Localization::setLanguage(u"en"_s);
    const QString english = meetingTitle(m_start);
    Localization::setLanguage(u"ru"_s);
    QCOMPARE(english, u"Meeting · 3 March, 14:05"_s);
}

QTEST_GUILESS_MAIN(TestRecordings)
#include "tst_recordings.moc"
