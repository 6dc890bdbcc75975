#include "audio/AudioDecoder.h"
#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "engine/EngineProcessRegistry.h"
#include "engine/ProcessControl.h"
#include "recognition/TranscriptionService.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"
#include "tests/support/WordError.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QtEndian>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace orvane;
using NonSpeech = WhisperServerEngine::NonSpeech;
using Segments = QList<RawSegment>;

namespace {

const QString said = u"And so my fellow Americans ask not what your country can do for you "
                     "ask what you can do for your country"_s;
constexpr int patience = 300'000; // a machine that builds something beside

QString textOf(const Segments &segments)
{
    QString text;
    for (const RawSegment &segment : segments)
        text += segment.text;
    return text;
}

} // namespace

class TestRealEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const QString &path : {m_engineFile, recording(), model(), model(u"base"_s)})
            QVERIFY2(QFile::exists(path), qPrintable(u"«%1» is missing; ./test provides it"_s.arg(path)));
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_registry = std::make_unique<EngineProcessRegistry>(m_folder->filePath(u"pids.txt"_s));
        m_engine = std::make_unique<WhisperServerEngine>(
            EngineServer::SearchPath{.resources = {}, .folders = {QFileInfo(m_engineFile).path()}},
            *m_registry, m_folder->path());
    }

    void cleanup()
    {
        const auto stopped = finished(m_engine->stopAndWait());
        QVERIFY(!FakeEngineHome::isRunning(server()));
        m_engine.reset();
        QTRY_COMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{u"pids.txt"_s});
    }

    void recognisesSpeech()
    {
        const auto load = finished(m_engine->load(model(u"base"_s)));
        QCOMPARE(load.error(), QString());
        const TaskResult file(m_engine->infer(recording(), u"auto"_s));
        const TaskResult samples = transcribe(speech(), model(u"base"_s));
        QTRY_VERIFY_WITH_TIMEOUT(file.isDone() && samples.isDone(), patience);
        QCOMPARE(file.error() + samples.error(), QString());
        for (const auto &[segments, language] : {file.value(), samples.value()}) {
            QCOMPARE(language, u"english"_s);
            VERIFY_WORDS(textOf(segments), said);
            qint64 end = 0;
            for (const RawSegment &segment : segments) {
                QVERIFY(segment.start >= end && segment.end > segment.start);
                end = segment.end;
            }
            QVERIFY2(end > 8000 && end <= 11'100, qPrintable(QString::number(end)));
        }
    }

    void rejectsWhatIsNoAudio()
    {
        QVERIFY(finished(m_engine->load(model())).succeeded());
        const auto result = finished(m_engine->infer(m_fixtures + u"/russian.txt"_s, u"en"_s));
        QCOMPARE(result.failedAs<EngineServer::EngineError>()->kind(),
                 EngineServer::EngineError::Kind::requestRejected);
    }

    void killedInRequest()
    {
        QVERIFY(finished(m_engine->load(model())).succeeded());
        const TaskResult killed = transcribe(speech(10), model());
        QVERIFY(beginsComputing());
        ::kill(pid_t(server()), SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(killed.isDone(), patience);
        QVERIFY2(killed.error().startsWith(u"Ошибка распознавания: "_s), qPrintable(killed.error()));

        const TaskResult next = transcribe(speech(), model());
        QTRY_VERIFY_WITH_TIMEOUT(next.isDone(), patience);
        QCOMPARE(next.error(), QString());
        VERIFY_WORDS(textOf(next.value().segments), said);
    }

    void cancelledFileFreesTheServer()
    {
        const AudioDecoder decoder{QStringLiteral(ORVANE_RESOURCES)};
        const EngineTurns turns;
        TranscriptPipeline pipeline(*m_engine, decoder);
        TranscriptionService service(
            {.engine = *m_engine, .pipeline = pipeline, .turns = turns, .saveRecord = {}});
        const QString path = m_folder->filePath(u"long.wav"_s);
        {
            WavFileWriter writer(path, sampleRate);
            writer.append(speech(30));
            writer.finalize();
        }
        QVERIFY(finished(m_engine->load(model())).succeeded());
        const qint64 pid = server();
        const TaskResult file(service.transcribe({.audioPath = path,
                                                  .model = ModelFile::atPath(model()),
                                                  .language = u"en"_s,
                                                  .history = TranscriptionService::History::Skip}));
        QVERIFY(beginsComputing());
        service.cancel();
        QVERIFY(!turns.isTaken());
        QTRY_VERIFY_WITH_TIMEOUT(file.isCancelled(), patience);
        QElapsedTimer time;
        time.start();
        while (isComputing() && time.elapsed() < patience) { // the pass that it is in
        }
        const qint64 freeAfter = time.elapsed();
        time.start();
        const TaskResult next = transcribe(speech(), model());
        QTRY_VERIFY_WITH_TIMEOUT(next.isDone(), patience);
        const qint64 onePass = time.elapsed();
        QCOMPARE(next.error(), QString());
        VERIFY_WORDS(textOf(next.value().segments), said);
        qInfo("free after %lld ms, a pass takes %lld ms", freeAfter, onePass);
        QVERIFY(freeAfter < 5 * onePass); // of the file's eleven
        QFile::remove(path);
        if (freeAfter < 1500)
            QCOMPARE(server(), pid); // no need to launch it anew
    }

private:
    [[nodiscard]] QString recording() const { return m_fixtures + u"/jfk.wav"_s; }
    [[nodiscard]] QString model(const QString &name = u"tiny.en"_s) const
    {
        return m_models + u"/ggml-%1.bin"_s.arg(name);
    }

    [[nodiscard]] std::vector<float> speech(int repetitions = 1) const
    {
        QFile file(recording());
        if (!file.open(QFile::ReadOnly))
            return {};
        const QByteArray bytes = file.readAll().mid(44); // mono, 16 kHz, 16 bit
        std::vector<float> samples;
        for (int i = 0; i < repetitions; ++i) {
            for (qsizetype at = 0; at + 1 < bytes.size(); at += 2)
                samples.push_back(float(qFromLittleEndian<qint16>(bytes.constData() + at)) / 32768);
        }
        return samples;
    }

    [[nodiscard]] TaskResult<RecognisedSpeech> transcribe(std::vector<float> samples,
                                                          const QString &modelPath, std::stop_token stop = {})
    {
        return TaskResult(
            m_engine->transcribe(std::move(samples), modelPath, u"en"_s, NonSpeech::Keep, stop));
    }

    /// The process of the server, by the file that the registry keeps.
    [[nodiscard]] qint64 server() const
    {
        QFile file(m_folder->filePath(u"pids.txt"_s));
        return file.open(QFile::ReadOnly) ? file.readAll().split('\n').last().toLongLong() : 0;
    }

    /// Looks for a moment; beside other programs the server gets little of the processor.
    [[nodiscard]] bool isComputing() const
    {
        const std::chrono::milliseconds before = ProcessControl::processorTime(server());
        QTest::qWait(300);
        return ProcessControl::processorTime(server()) - before >= std::chrono::milliseconds(20);
    }

    /// Not by QTRY_VERIFY, which looks again after it has been true.
    [[nodiscard]] bool beginsComputing() const
    {
        for (const QDeadlineTimer deadline(patience); !deadline.hasExpired();) {
            if (isComputing())
                return true;
        }
        return false;
    }

    const QString m_engineFile = qEnvironmentVariable("ORVANE_TEST_ENGINE");
    const QString m_fixtures = qEnvironmentVariable("ORVANE_TEST_FIXTURES");
    const QString m_models = qEnvironmentVariable("ORVANE_TEST_MODELS");
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
};

QTEST_GUILESS_MAIN(TestRealEngine)
#include "tst_realengine.moc"
