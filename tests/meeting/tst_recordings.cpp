#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/localization/Localization.h"
#include "meeting/RecordingsFolder.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QTemporaryDir>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestRecordings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_root = std::make_unique<QTemporaryDir>(); }

    void differentNamesInOneSecond()
    {
        RecordingsFolder recordings(dir().path());
        const RecordedMeeting first = recordings.create(m_meeting);
        RecordedMeeting later = m_meeting;
        later.startedAt = m_meeting.startedAt.addMSecs(700);
        const RecordedMeeting second = recordings.create(later);
        QCOMPARE(first.audioFileName, u"Совещание 2025-03-03 14.05.09.wav"_s);
        QCOMPARE(second.audioFileName, u"Совещание 2025-03-03 14.05.09 (2).wav"_s);
        QVERIFY(recordings.leftovers().meetings.isEmpty()); // its own are none
        recordings.discard(second);
        QCOMPARE(files().size(), 2);
        recordings.forget(first);
        QCOMPARE(files(), QStringList{first.audioFileName});
    }

    void findsWhatWasCutOff_data()
    {
        const Rows<qsizetype, bool> row("size", "isFinished");
        constexpr qsizetype whole = 44 + 2 * 24'000;
        row("in the middle of a sample", whole + 1, false);
        row("finished", whole, true);
        row("half a header", qsizetype(20), false);
    }

    void findsWhatWasCutOff()
    {
        QFETCH(const qsizetype, size);
        QFETCH(const bool, isFinished);
        RecordedMeeting expected = RecordingsFolder(dir().path()).create(m_meeting);
        const QString name = expected.audioFileName;
        {
            WavFileWriter writer(dir().filePath(name), sampleRate);
            writer.append(std::vector<float>(isFinished ? 24'000 : 24'001, 0.25F));
            if (isFinished)
                writer.finalize();
            QVERIFY(QFile::resize(dir().filePath(name), size));
        }
        const QByteArray before = content(name);

        const QList<RecordedMeeting> found = RecordingsFolder(dir().path()).leftovers().meetings;
        if (size < 44) { // not worth offering, and not deleted either
            QVERIFY(found.isEmpty());
            QCOMPARE(files(), QStringList{name});
            return;
        }
        expected.durationMs = 1500;
        QCOMPARE(found, QList{expected});
        const QByteArray after = content(name);
        QCOMPARE(qFromLittleEndian<quint32>(after.constData() + 4), 48'036U);
        QCOMPARE(qFromLittleEndian<quint32>(after.constData() + 40), 48'000U);
        QCOMPARE(after.mid(44), before.mid(44));
        if (isFinished)
            QCOMPARE(after, before);
    }

    void marksThatTellNothing()
    {
        QVERIFY(dir().mkpath(u"."_s));
        const auto put = [this](const QString &name, const QByteArray &content) {
            test::put(dir().filePath(name), content);
        };
        put(u"a.wav"_s, QByteArray(32'044, '\0')); // a power loss may leave zeros
        put(u"a.wav.unfinished.json"_s, "{\"model");
        put(u"gone.wav.unfinished.json"_s, m_meeting.json());
        put(u"of no interest.wav"_s, "RIFF");
        QVERIFY(dir().mkdir(u"b.wav"_s));
        put(u"b.wav.unfinished.json"_s, m_meeting.json());
        const auto [found, problem] = RecordingsFolder(dir().path()).leftovers();
        QCOMPARE(problem, u"Не удалось записать файл «b.wav»: это папка"_s);
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.first().audioFileName, u"a.wav"_s);
        QCOMPARE(found.first().durationMs, 1000);
        QCOMPARE(found.first().languageCode, u"auto"_s);
        QVERIFY(found.first().startedAt.secsTo(QDateTime::currentDateTime()) < 60);
        QVERIFY(content(u"a.wav"_s).startsWith("RIFF"));
        QCOMPARE(content(u"of no interest.wav"_s), "RIFF");
        QCOMPARE(files(), (QStringList{u"a.wav"_s, u"a.wav.unfinished.json"_s, u"b.wav.unfinished.json"_s,
                                       u"of no interest.wav"_s}));
    }

    /// Another program on the same folder, such as one that was started without a session bus.
    void keepsOffWhatIsRecorded()
    {
        auto recording = std::make_unique<RecordingsFolder>(dir().path());
        const QString name = recording->create(m_meeting).audioFileName;
        WavFileWriter(dir().filePath(name), sampleRate).append(std::vector<float>(sampleRate, 0.25F));
        const QByteArray before = content(name);
        RecordingsFolder other(dir().path());
        QVERIFY(other.leftovers().meetings.isEmpty());
        QCOMPARE(content(name), before);
        QCOMPARE(files().size(), 2);

        recording.reset(); // the program that recorded it has ended
        QCOMPARE(other.leftovers().meetings.size(), 1);
        QVERIFY(RecordingsFolder(dir().path()).leftovers().meetings.isEmpty()); // one program offers it
    }

    void titles()
    {
        QCOMPARE(meetingTitle(m_meeting.startedAt), u"Совещание · 3 марта, 14:05"_s);
        Localization::setLanguage(u"en"_s);
        const QString english = meetingTitle(m_meeting.startedAt);
        Localization::setLanguage(u"ru"_s);
        QCOMPARE(english, u"Meeting · 3 March, 14:05"_s);
    }

private:
    [[nodiscard]] QDir dir() const { return m_root->filePath(u"Orvane/Recordings"_s); }
    [[nodiscard]] QStringList files() const { return dir().entryList(QDir::Files, QDir::Name); }
    [[nodiscard]] QByteArray content(const QString &name) const
    {
        return test::contentOf(dir().filePath(name));
    }

    std::unique_ptr<QTemporaryDir> m_root;
    const RecordedMeeting m_meeting{.audioFileName = {},
                                    .modelID = u"base"_s,
                                    .languageCode = u"ru"_s,
                                    .startedAt = QDateTime({2025, 3, 3}, {14, 5, 9, 250})};
};

QTEST_GUILESS_MAIN(TestRecordings)
#include "tst_recordings.moc"
