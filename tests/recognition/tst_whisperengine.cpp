#include "base/files/FileError.h"
#include "engine/EngineProcessRegistry.h"
#include "recognition/WhisperResponse.h"
#include "recognition/WhisperServerEngine.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"

#include <QDir>
#include <QNetworkProxy>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using EngineError = EngineServer::EngineError;
using Ending = FakeAnswer::Ending;
using NonSpeech = WhisperServerEngine::NonSpeech;
using Segments = QList<RawSegment>;

namespace {

const QString inference = u"/inference"_s;
const QByteArray oneSegment = R"({"segments":[{"start":1.2345,"end":2,"text":" hi"}]})";

FakeEngineBehaviour answering(const QList<FakeAnswer> &answers)
{
    return {.answers = {{inference, answers}}};
}

} // namespace

class TestWhisperEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void commandLine_data();
    void commandLine();
    void requestBody_data();
    void requestBody();
    void answers_data();
    void answers();
    void segments_data();
    void segments();

    void needsRunningServer();
    void takesNoProxy();
    void sendsSamplesAsWav();
    void temporaryFiles_data();
    void temporaryFiles();
    void abort();
    void engineDiesInRequest();
    void modelSwitchWaitsForRequest();
    void fullDisk();
    void missingAudio();
    void destroyed_data();
    void destroyed();

private:
    void load();
    [[nodiscard]] QString model(const QString &name = u"a"_s) const
    {
        return m_home->resources() + u'/' + name;
    }
    [[nodiscard]] QString audioFile(const QByteArray &content = "audio");
    [[nodiscard]] QStringList temporaryNames() const;
    [[nodiscard]] TaskResult<Segments> transcribe(std::stop_token stop = {}, const QString &name = u"a"_s);

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<QTemporaryDir> m_temporary;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
};

void TestWhisperEngine::init()
{
    m_home = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
    m_home->behave(answering({{.body = oneSegment}}));
    m_temporary = std::make_unique<QTemporaryDir>();
    m_registry = std::make_unique<EngineProcessRegistry>(QString());
    m_engine = std::make_unique<WhisperServerEngine>(
        EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry,
        m_temporary->path());
}

void TestWhisperEngine::cleanup()
{
    m_engine.reset();
    QTRY_VERIFY(m_home->allEnded());
    QCoreApplication::processEvents(); // what waited for that goes on
}

void TestWhisperEngine::load()
{
    const TaskResult load(m_engine->load(model()));
    QTRY_VERIFY(load.isDone());
    QCOMPARE(load.error(), QString());
}

QString TestWhisperEngine::audioFile(const QByteArray &content)
{
    QFile file(m_home->resources() + u"/recording.flac"_s);
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QStringList TestWhisperEngine::temporaryNames() const
{
    return QDir(m_temporary->path()).entryList(QDir::Files, QDir::Name);
}

TaskResult<Segments> TestWhisperEngine::transcribe(std::stop_token stop, const QString &name)
{
    return TaskResult(
        m_engine->transcribe(std::vector<float>(16000), model(name), u"ru"_s, NonSpeech::Keep, stop));
}

void TestWhisperEngine::commandLine_data()
{
    QTest::addColumn<bool>("hasVoiceActivityModel");
    QTest::newRow("plain") << false;
    QTest::newRow("with voice activity detection") << true;
}

void TestWhisperEngine::commandLine()
{
    QFETCH(const bool, hasVoiceActivityModel);
    const QString voiceActivityModel = m_home->engineFolder() + u"/ggml-silero-v5.1.2.bin"_s;
    if (hasVoiceActivityModel)
        QVERIFY(QFile(voiceActivityModel).open(QFile::WriteOnly));
    load();

    const QStringList arguments = m_home->launches().first().arguments;
    const QString port = arguments.value(5);
    QVERIFY2(port.toUShort() > 0, qPrintable(port));
    QStringList expected = {u"-m"_s,     model(), u"--host"_s,        u"127.0.0.1"_s,
                            u"--port"_s, port,    u"--max-context"_s, u"0"_s};
    if (hasVoiceActivityModel)
        expected += {u"--vad-model"_s, voiceActivityModel};
    QCOMPARE(arguments, expected);
}

void TestWhisperEngine::requestBody_data()
{
    QTest::addColumn<QByteArray>("audio");
    QTest::addColumn<NonSpeech>("nonSpeech");
    QTest::addColumn<QByteArray>("lastField");
    QTest::newRow("small") << QByteArray("\0\r\n--\xff", 6) << NonSpeech::Keep << QByteArray();
    QTest::newRow("empty") << QByteArray() << NonSpeech::Keep << QByteArray();
    QTest::newRow("several pieces") << QByteArray(2 * 1024 * 1024 + 1, 'x') << NonSpeech::Keep
                                    << QByteArray();
    QTest::newRow("without what is not speech")
        << QByteArray("a") << NonSpeech::Suppress
        << QByteArray("--B\r\nContent-Disposition: form-data; name=\"suppress_nst\"\r\n\r\ntrue\r\n");
}

void TestWhisperEngine::requestBody()
{
    QFETCH(const QByteArray, audio);
    QFETCH(const NonSpeech, nonSpeech);
    QFETCH(const QByteArray, lastField);
    load();
    const TaskResult result(m_engine->infer(audioFile(audio), u"auto"_s, nonSpeech));
    QTRY_VERIFY(result.isDone());
    QCOMPARE(result.error(), QString());
    QCOMPARE(result.value(), Segments({{.start = 1234, .end = 2000, .text = u" hi"_s}}));

    const FakeEngineHome::Request request = m_home->requests(inference).first();
    QCOMPARE(request.method, u"POST"_s);
    static const QRegularExpression form(
        u"^multipart/form-data; boundary=(orvane-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12})$"_s);
    const auto match = form.match(request.headers[u"content-type"_s].toString());
    QVERIFY(match.hasMatch());
    const QByteArray expected =
        "--B\r\nContent-Disposition: form-data; name=\"response_format\"\r\n\r\n"
        "verbose_json\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"language\"\r\n\r\n"
        "auto\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"temperature\"\r\n\r\n"
        "0.0\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"no_language_probabilities\"\r\n\r\n"
        "true\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"split_on_word\"\r\n\r\n"
        "true\r\n" +
        lastField +
        "--B\r\nContent-Disposition: form-data; name=\"file\"; filename=\"audio.wav\"\r\n"
        "Content-Type: audio/wav\r\n\r\n" +
        audio + "\r\n--B--\r\n";
    QVERIFY(request.body().replace(match.captured(1).toLatin1(), "B") == expected);
}

void TestWhisperEngine::answers_data()
{
    QTest::addColumn<FakeAnswer>("answer");
    QTest::addColumn<QString>("error");
    QTest::addColumn<EngineError::Kind>("kind");
    const auto failed = EngineError::Kind::requestFailed;
    const QString format = u"неожиданный формат ответа"_s;
    QTest::newRow("400") << FakeAnswer{.status = 400, .body = R"({"error":"failed to read audio data"})"}
                         << u"HTTP 400"_s << EngineError::Kind::requestRejected;
    QTest::newRow("404") << FakeAnswer{.status = 404} << u"HTTP 404"_s << failed;
    QTest::newRow("500") << FakeAnswer{.status = 500, .body = oneSegment} << u"HTTP 500"_s << failed;
    QTest::newRow("503") << FakeAnswer{.status = 503} << u"HTTP 503"_s << failed;
    QTest::newRow("201 is not 200") << FakeAnswer{.status = 201, .body = oneSegment} << u"HTTP 201"_s
                                    << failed;
    QTest::newRow("garbage") << FakeAnswer{.body = "\xff\xfe not json"} << format << failed;
    QTest::newRow("empty") << FakeAnswer{} << format << failed;
    QTest::newRow("text without segments") << FakeAnswer{.body = R"({"text":"hi"})"} << format << failed;
    QTest::newRow("no segment") << FakeAnswer{.body = R"({"segments":[]})"} << QString() << failed;
    QTest::newRow("cut off") << FakeAnswer{.body = oneSegment, .ending = Ending::CutOff}
                             << u"сервер закрыл соединение"_s << failed;
    QTest::newRow("closed without an answer")
        << FakeAnswer{.ending = Ending::Closed} << u"сервер закрыл соединение"_s << failed;
    QTest::newRow("engine dies") << FakeAnswer{.ending = Ending::EngineDies} << u"сервер закрыл соединение"_s
                                 << failed;
    QTest::newRow("another protocol")
        << FakeAnswer{.ending = Ending::NotHttp} << u"сервер закрыл соединение"_s << failed;
}

void TestWhisperEngine::answers()
{
    QFETCH(const FakeAnswer, answer);
    QFETCH(const QString, error);
    QFETCH(const EngineError::Kind, kind);
    m_home->behave(answering({answer}));
    load();
    const TaskResult result(m_engine->infer(audioFile(), u"ru"_s));
    QTRY_VERIFY(result.isDone());
    if (error.isEmpty()) {
        QCOMPARE(result.error(), QString());
        QCOMPARE(result.value(), Segments());
    } else {
        QCOMPARE(result.error(), u"Ошибка распознавания: "_s + error);
        QCOMPARE(result.failedAs<EngineError>()->kind(), kind);
    }
    QCOMPARE(m_home->requests(inference).size(), 1);
}

void TestWhisperEngine::segments_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<Segments>("expected");
    const auto row = [](const char *name, const QByteArray &segment, qint64 start, qint64 end,
                        const QString &text) {
        QTest::newRow(name) << "{\"segments\":[" + segment + "]}"
                            << Segments{{.start = start, .end = end, .text = text}};
    };
    row("cut, not rounded", R"({"start":1.2345,"end":1.9999,"text":" a "})", 1234, 1999, u" a "_s);
    row("towards zero", R"({"start":-1.2345,"end":-0.0004,"text":"a"})", -1234, 0, u"a"_s);
    row("whole numbers", R"({"start":3,"end":36000,"text":"a"})", 3000, 36'000'000, u"a"_s);
    row("nothing there", "{}", 0, 0, QString());
    row("not numbers", R"({"start":"1","end":null,"text":"a"})", 0, 0, u"a"_s);
    row("out of range", R"({"start":1e300,"end":-1e16,"text":"a"})", 0, 0, u"a"_s);
    row("text is no text", R"({"start":0,"end":1,"text":5})", 0, 1000, QString());
    row("other keys", R"({"id":1,"start":0,"end":1,"text":"ё\n\u0301","tokens":[1]})", 0, 1000,
        u"ё\n\u0301"_s);
}

void TestWhisperEngine::segments()
{
    QFETCH(const QByteArray, json);
    QFETCH(const Segments, expected);
    const auto segments = WhisperResponse::segments(json);
    QVERIFY(segments);
    QCOMPARE(*segments, expected);

    for (const QByteArray &other :
         {R"([])", R"({"segments":{}})", R"({"segments":[{},5]})", R"({"segments":null})"})
        QVERIFY2(!WhisperResponse::segments(other), other.constData());
}

void TestWhisperEngine::needsRunningServer()
{
    const TaskResult result(m_engine->infer(audioFile(), u"ru"_s));
    QTRY_VERIFY(result.isDone());
    QCOMPARE(result.error(), u"Ошибка распознавания: сервер не запущен"_s);
}

void TestWhisperEngine::takesNoProxy()
{
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, 1));
    const auto restore = qScopeGuard([] { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); });
    const TaskResult result = transcribe();
    QTRY_VERIFY(result.isDone());
    QCOMPARE(result.error(), QString());
}

void TestWhisperEngine::sendsSamplesAsWav()
{
    const TaskResult result = transcribe();
    QTRY_VERIFY(result.isDone());
    QCOMPARE(result.error(), QString());
    QCOMPARE(result.value().size(), 1);
    const QByteArray body = m_home->requests(inference).first().body();
    const qsizetype wav = body.indexOf("\r\n\r\nRIFF") + 4;
    QCOMPARE(body.mid(wav + 8, 4), "WAVE");
    QCOMPARE(body.indexOf("\r\n--orvane-", wav) - wav, 44 + 16000 * 2);
}

void TestWhisperEngine::temporaryFiles_data()
{
    QTest::addColumn<FakeAnswer>("answer");
    QTest::addColumn<bool>("isAborted");
    QTest::newRow("success") << FakeAnswer{.body = oneSegment, .delayMs = 300} << false;
    QTest::newRow("failure") << FakeAnswer{.status = 500, .delayMs = 300} << false;
    QTest::newRow("engine dies") << FakeAnswer{.delayMs = 300, .ending = Ending::EngineDies} << false;
    QTest::newRow("aborted") << FakeAnswer::never() << true;
}

void TestWhisperEngine::temporaryFiles()
{
    QFETCH(const FakeAnswer, answer);
    QFETCH(const bool, isAborted);
    m_home->behave(answering({answer}));
    std::stop_source stop;
    const TaskResult result = transcribe(stop.get_token());
    QTRY_COMPARE(m_home->requests(inference).size(), 1);
    const QStringList names = temporaryNames();
    QCOMPARE(names.size(), 2);
    static const QRegularExpression wav(u"^orvane-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.wav$"_s);
    static const QRegularExpression body(
        u"^orvane-upload-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.bin$"_s);
    QVERIFY2(wav.match(names[0]).hasMatch(), qPrintable(names[0]));
    QVERIFY2(body.match(names[1]).hasMatch(), qPrintable(names[1]));
    for (const QString &name : names) {
        QCOMPARE(QFile::permissions(m_temporary->filePath(name)) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }
    if (isAborted)
        stop.request_stop();
    QTRY_VERIFY(result.isDone());
    QTRY_COMPARE(temporaryNames(), QStringList());
}

void TestWhisperEngine::abort()
{
    m_home->behave(answering({FakeAnswer::never(), {.body = oneSegment}}));
    std::stop_source stop;
    const TaskResult result = transcribe(stop.get_token());
    QTRY_COMPARE(m_home->requests(inference).size(), 1);
    stop.request_stop();
    QTRY_VERIFY(result.isDone());
    QVERIFY(result.isCancelled());
    QTRY_COMPARE(m_home->abandoned(inference), 1);

    const TaskResult next = transcribe();
    QTRY_VERIFY(next.isDone());
    QCOMPARE(next.error(), QString());
    QCOMPARE(m_home->launches().size(), 1);
}

void TestWhisperEngine::engineDiesInRequest()
{
    m_home->behave(answering({{.ending = Ending::EngineDies}}));
    static const auto twice = [](WhisperServerEngine *engine, FakeEngineHome *home,
                                 QString model) -> QCoro::Task<Segments> {
        try {
            co_await engine->transcribe(std::vector<float>(100), model, u"ru"_s);
        } catch (const EngineError &) {
        }
        // At once: what has become of the process may not be known yet.
        home->behave(answering({{.body = oneSegment}}));
        co_return co_await engine->transcribe(std::vector<float>(100), model, u"ru"_s);
    };
    const TaskResult result(twice(m_engine.get(), m_home.get(), model()));
    QTRY_VERIFY(result.isDone());
    QCOMPARE(result.error(), QString());
    QCOMPARE(m_home->launches().size(), 2);
}

void TestWhisperEngine::modelSwitchWaitsForRequest()
{
    m_home->behave(answering({{.body = oneSegment, .delayMs = 700}}));
    const TaskResult first = transcribe();
    QTRY_COMPARE(m_home->requests(inference).size(), 1);
    const TaskResult second = transcribe({}, u"b"_s);
    const TaskResult third = transcribe();
    QTRY_VERIFY_WITH_TIMEOUT(first.isDone() && second.isDone() && third.isDone(), 20'000);
    QCOMPARE(first.error() + second.error() + third.error(), QString());
    QCOMPARE(m_home->abandoned(inference), 0);
}

void TestWhisperEngine::fullDisk()
{
    load();
    const QString audio = audioFile(QByteArray(3 * 1024 * 1024, 'x'));
    // No file of this process may grow beyond that: the disk is full in the middle of the body.
    rlimit before;
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {.rlim_cur = 3 * 512 * 1024, .rlim_max = before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const TaskResult result(m_engine->infer(audio, u"ru"_s));
    QTRY_VERIFY(result.isDone());
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    QVERIFY(result.failedAs<FileError>());
    QVERIFY2(result.error().contains(u"File too large"_s), qPrintable(result.error()));
    QTRY_COMPARE(temporaryNames(), QStringList());
    QCOMPARE(m_home->requests(inference).size(), 0);
}

void TestWhisperEngine::missingAudio()
{
    load();
    const TaskResult result(m_engine->infer(m_home->resources() + u"/no such.wav"_s, u"ru"_s));
    QTRY_VERIFY(result.isDone());
    QVERIFY(result.failedAs<FileError>());
    QVERIFY2(result.error().contains(u"no such.wav"_s), qPrintable(result.error()));
    QTRY_COMPARE(temporaryNames(), QStringList());
}

void TestWhisperEngine::destroyed_data()
{
    QTest::addColumn<bool>("untilSent");
    QTest::newRow("while the files are written") << false;
    QTest::newRow("while the server computes") << true;
}

void TestWhisperEngine::destroyed()
{
    QFETCH(const bool, untilSent);
    m_home->behave(answering({FakeAnswer::never()}));
    load();
    const TaskResult samples = transcribe();
    const TaskResult file(m_engine->infer(audioFile(), u"ru"_s));
    const TaskResult otherModel = transcribe({}, u"b"_s);
    if (untilSent)
        QTRY_COMPARE(m_home->requests(inference).size(), 2);
    m_engine.reset();
    QTRY_VERIFY(samples.isDone() && file.isDone() && otherModel.isDone());
    QVERIFY(samples.isCancelled() && file.isCancelled() && otherModel.isCancelled());
    QTRY_COMPARE(temporaryNames(), QStringList());
}

QTEST_GUILESS_MAIN(TestWhisperEngine)
#include "tst_whisperengine.moc"
