#include "engine/EngineProcessRegistry.h"
#include "recognition/WhisperServerEngine.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QtEndian>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace orvane;
using NonSpeech = WhisperServerEngine::NonSpeech;
using Segments = QList<RawSegment>;

namespace {

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
    void initTestCase();
    void init();
    void cleanup();

    void recognisesSpeech();
    void silenceGivesNothing();
    void rejectsWhatIsNoAudio();
    void killedInRequest();
    void modelSwitchWaitsForRequest();
    void abortedRequestFreesTheServer();

private:
    [[nodiscard]] QString recording() const { return m_fixtures + u"/jfk.wav"_s; }
    [[nodiscard]] QString model(const QString &name = u"tiny.en"_s) const
    {
        return m_models + u"/ggml-%1.bin"_s.arg(name);
    }
    [[nodiscard]] std::vector<float> speech(int repetitions = 1) const;
    [[nodiscard]] TaskResult<Segments> transcribe(std::vector<float> samples, const QString &modelPath,
                                                  std::stop_token stop = {});
    /// The process of the server, by the file that the registry keeps.
    [[nodiscard]] qint64 server() const;

    const QString m_engineFile = qEnvironmentVariable("ORVANE_TEST_ENGINE");
    const QString m_fixtures = qEnvironmentVariable("ORVANE_TEST_FIXTURES");
    const QString m_models = qEnvironmentVariable("ORVANE_TEST_MODELS");
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
};

void TestRealEngine::initTestCase()
{
    for (const QString &path : {m_engineFile, recording(), model(), model(u"base"_s)})
        QVERIFY2(QFile::exists(path), qPrintable(u"«%1» is missing; ./test provides it"_s.arg(path)));
}

void TestRealEngine::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_registry = std::make_unique<EngineProcessRegistry>(m_folder->filePath(u"pids.txt"_s));
    m_engine = std::make_unique<WhisperServerEngine>(
        EngineServer::SearchPath{.resources = {}, .folders = {QFileInfo(m_engineFile).path()}}, *m_registry,
        m_folder->path());
}

void TestRealEngine::cleanup()
{
    const TaskResult stopped(m_engine->stopAndWait());
    QTRY_VERIFY(stopped.isDone());
    QVERIFY(!FakeEngineHome::isRunning(server()));
    m_engine.reset();
    QTRY_COMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{u"pids.txt"_s});
}

std::vector<float> TestRealEngine::speech(int repetitions) const
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

TaskResult<Segments> TestRealEngine::transcribe(std::vector<float> samples, const QString &modelPath,
                                                std::stop_token stop)
{
    return TaskResult(m_engine->transcribe(std::move(samples), modelPath, u"en"_s, NonSpeech::Keep, stop));
}

qint64 TestRealEngine::server() const
{
    QFile file(m_folder->filePath(u"pids.txt"_s));
    return file.open(QFile::ReadOnly) ? file.readAll().split('\n').last().toLongLong() : 0;
}

void TestRealEngine::recognisesSpeech()
{
    const TaskResult load(m_engine->load(model(u"base"_s)));
    QTRY_VERIFY_WITH_TIMEOUT(load.isDone(), patience);
    QCOMPARE(load.error(), QString());
    const TaskResult file(m_engine->infer(recording(), u"auto"_s));
    const TaskResult samples = transcribe(speech(), model(u"base"_s));
    QTRY_VERIFY_WITH_TIMEOUT(file.isDone() && samples.isDone(), patience);
    QCOMPARE(file.error() + samples.error(), QString());
    for (const Segments &segments : {file.value(), samples.value()}) {
        QVERIFY2(
            textOf(segments).contains(u"ask not what your country can do for you"_s, Qt::CaseInsensitive),
            qPrintable(textOf(segments)));
        qint64 end = 0;
        for (const RawSegment &segment : segments) {
            QVERIFY(segment.start >= end && segment.end > segment.start);
            end = segment.end;
        }
        QVERIFY2(end > 8000 && end <= 11'100, qPrintable(QString::number(end)));
    }
}

void TestRealEngine::silenceGivesNothing()
{
    const std::vector<float> silence(32000);
    const TaskResult result(m_engine->transcribe(silence, model(u"base"_s), u"auto"_s, NonSpeech::Suppress));
    QTRY_VERIFY_WITH_TIMEOUT(result.isDone(), patience);
    QCOMPARE(result.error(), QString());
    QCOMPARE(textOf(result.value()), QString());
    QVERIFY(result.value().isEmpty());
}

void TestRealEngine::rejectsWhatIsNoAudio()
{
    const TaskResult load(m_engine->load(model()));
    QTRY_VERIFY_WITH_TIMEOUT(load.succeeded(), patience);
    const TaskResult result(m_engine->infer(m_fixtures + u"/russian.txt"_s, u"en"_s));
    QTRY_VERIFY_WITH_TIMEOUT(result.isDone(), patience);
    QCOMPARE(result.failedAs<EngineServer::EngineError>()->kind(),
             EngineServer::EngineError::Kind::requestRejected);
}

void TestRealEngine::killedInRequest()
{
    const TaskResult load(m_engine->load(model()));
    QTRY_VERIFY_WITH_TIMEOUT(load.succeeded(), patience);
    const TaskResult killed = transcribe(speech(10), model());
    QTRY_COMPARE(QDir(m_folder->path()).entryList({u"orvane-upload-*"_s}).size(), 1);
    ::kill(pid_t(server()), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(killed.isDone(), patience);
    QVERIFY2(killed.error().startsWith(u"Ошибка распознавания: "_s), qPrintable(killed.error()));

    const TaskResult next = transcribe(speech(), model());
    QTRY_VERIFY_WITH_TIMEOUT(next.isDone(), patience);
    QCOMPARE(next.error(), QString());
    QVERIFY(textOf(next.value()).contains(u"ask not"_s, Qt::CaseInsensitive));
}

void TestRealEngine::modelSwitchWaitsForRequest()
{
    const TaskResult load(m_engine->load(model()));
    QTRY_VERIFY_WITH_TIMEOUT(load.succeeded(), patience);
    const qint64 first = server();
    const TaskResult running = transcribe(speech(3), model());
    const TaskResult switched = transcribe(speech(), model(u"base"_s));
    QTRY_VERIFY_WITH_TIMEOUT(running.isDone() && switched.isDone(), patience);
    QCOMPARE(running.error() + switched.error(), QString());
    QVERIFY(textOf(running.value()).contains(u"ask not"_s, Qt::CaseInsensitive));
    QVERIFY(textOf(switched.value()).contains(u"ask not"_s, Qt::CaseInsensitive));
    QVERIFY(server() != first);
    QVERIFY(!FakeEngineHome::isRunning(first));
}

void TestRealEngine::abortedRequestFreesTheServer()
{
    const TaskResult load(m_engine->load(model()));
    QTRY_VERIFY_WITH_TIMEOUT(load.succeeded(), patience);
    std::stop_source stop;
    const TaskResult aborted = transcribe(speech(30), model(), stop.get_token());
    QTRY_COMPARE(QDir(m_folder->path()).entryList({u"orvane-upload-*"_s}).size(), 1);
    stop.request_stop();
    QTRY_VERIFY(aborted.isDone());
    QVERIFY(aborted.isCancelled());
    const qint64 pid = server();
    const TaskResult next = transcribe(speech(), model());
    QTRY_VERIFY_WITH_TIMEOUT(next.isDone(), patience);
    QCOMPARE(next.error(), QString());
    QCOMPARE(server(), pid);
}

QTEST_GUILESS_MAIN(TestRealEngine)
#include "tst_realengine.moc"
