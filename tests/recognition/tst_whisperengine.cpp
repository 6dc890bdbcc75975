#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/files/FileError.h"
#include "engine/EngineProcessRegistry.h"
#include "recognition/WhisperServerEngine.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QDir>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using EngineError = EngineServer::EngineError;
using Ending = FakeAnswer::Ending;
using NonSpeech = WhisperServerEngine::NonSpeech;

namespace {

const QString inference = u"/inference"_s;
const QByteArray oneSegment = R"({"language":"english","segments":[{"start":1.2345,"end":2,"text":" hi"}]})";

FakeEngineBehaviour answering(const QList<FakeAnswer> &answers)
{
    return {.answers = {{inference, answers}}};
}

} // namespace

class TestWhisperEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
        m_home->behave(answering({{.body = oneSegment}}));
        m_temporary = std::make_unique<QTemporaryDir>();
        m_registry = std::make_unique<EngineProcessRegistry>(QString());
        m_engine = std::make_unique<WhisperServerEngine>(
            EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry,
            m_temporary->path());
    }

    void cleanup()
    {
        m_engine.reset();
        QTRY_VERIFY(m_home->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    void commandLine()
    {
        const QString voiceActivityModel = m_home->engineFolder() + u"/ggml-silero-v5.1.2.bin"_s;
        put(voiceActivityModel, {});
        load();

        const QStringList arguments = m_home->launches().first().arguments;
        const QString port = arguments.value(5);
        QVERIFY2(port.toUShort() > 0, qPrintable(port));
        const QStringList expected = {u"-m"_s,     model(), u"--host"_s,        u"127.0.0.1"_s,
                                      u"--port"_s, port,    u"--max-context"_s, u"0"_s};
        QCOMPARE(arguments, expected + QStringList({u"--vad-model"_s, voiceActivityModel}));
    }

    void requestBody()
    {
        load();
        const QByteArray audio(2 * 1024 * 1024 + 1, 'x');
        const auto result = finished(m_engine->infer(audioFile(audio), u"auto"_s, NonSpeech::Suppress));
        QCOMPARE(result.error(), QString());
        QCOMPARE(result.value(),
                 (RecognisedSpeech{.segments = {{.start = 1234, .end = 2000, .text = u" hi"_s}},
                                   .language = u"english"_s}));

        const FakeEngineHome::Request request = m_home->requests(inference).first();
        QCOMPARE(request.method, u"POST"_s);
        static const QRegularExpression form(
            u"^multipart/form-data; boundary=(orvane-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12})$"_s);
        const auto match = form.match(request.headers[u"content-type"_s].toString());
        QVERIFY(match.hasMatch());
        const QByteArray delimiter = "--" + match.captured(1).toLatin1();
        const auto field = [&delimiter](const QByteArray &name, const QByteArray &value) {
            return delimiter + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value +
                   "\r\n";
        };
        const QByteArray body = request.body();
        for (const QByteArray &expected :
             {field("response_format", "verbose_json"), field("language", "auto"),
              field("temperature", "0.0"), field("suppress_nst", "true")})
            QVERIFY2(body.contains(expected), expected.constData());
        QVERIFY(body.endsWith(delimiter +
                              "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"audio.wav\"\r\n"
                              "Content-Type: audio/wav\r\n\r\n" +
                              audio + "\r\n" + delimiter + "--\r\n"));
        QCOMPARE(temporaryNames(), QStringList());
    }

    void recordingBecomesShorter()
    {
        load();
        const QString path =
            audioFile(QByteArray(64 * 1024 * 1024, 'x')); // more than the sockets take at once
        const TaskResult result(m_engine->infer(path, u"ru"_s));
        QVERIFY(QFile::resize(path, 1000));
        QTRY_VERIFY(result.isDone());
        QVERIFY2(result.failedAs<FileError>() && result.error().contains(u"recording.flac"_s),
                 qPrintable(result.error()));
        QVERIFY(m_engine->isRunning());
    }

    void answers_data()
    {
        const Rows<FakeAnswer, QString, EngineError::Kind> row("answer", "error", "kind");
        const auto failed = EngineError::Kind::requestFailed;
        const QString format = u"неожиданный формат ответа"_s;
        row("400", FakeAnswer{.status = 400, .body = R"({"error":"failed to read audio data"})"},
            u"HTTP 400"_s, EngineError::Kind::requestRejected);
        row("500", FakeAnswer{.status = 500, .body = oneSegment}, u"HTTP 500"_s, failed);
        row("200 of an older server", FakeAnswer{.body = R"({"error":"failed to read audio data"})"}, format,
            EngineError::Kind::requestRejected);
        row("empty", FakeAnswer{}, format, failed);
        row("no segment", FakeAnswer{.body = R"({"segments":[]})"}, {}, failed);
        row("cut off", FakeAnswer{.body = oneSegment, .ending = Ending::CutOff},
            u"сервер закрыл соединение"_s, failed);
        row("engine dies", FakeAnswer{.ending = Ending::EngineDies}, u"сервер закрыл соединение"_s, failed);
    }

    void answers()
    {
        QFETCH(const FakeAnswer, answer);
        QFETCH(const QString, error);
        QFETCH(const EngineError::Kind, kind);
        m_home->behave(answering({answer}));
        load();
        const auto result = finished(m_engine->infer(audioFile(), u"ru"_s));
        if (error.isEmpty()) {
            QCOMPARE(result.error(), QString());
            QCOMPARE(result.value(), RecognisedSpeech());
        } else {
            QCOMPARE(result.error(), u"Ошибка распознавания: "_s + error);
            QCOMPARE(result.failedAs<EngineError>()->kind(), kind);
        }
        QCOMPARE(m_home->requests(inference).size(), 1);
    }

    void temporaryFiles_data()
    {
        const Rows<FakeAnswer, bool> row("answer", "isAborted");
        row("success", FakeAnswer{.body = oneSegment, .delayMs = 300}, false);
        row("failure", FakeAnswer{.status = 500, .delayMs = 300}, false);
        row("engine dies", FakeAnswer{.delayMs = 300, .ending = Ending::EngineDies}, false);
        row("aborted", FakeAnswer::never(), true);
    }

    void temporaryFiles()
    {
        QFETCH(const FakeAnswer, answer);
        QFETCH(const bool, isAborted);
        m_home->behave(answering({answer}));
        std::stop_source stop;
        const TaskResult result = transcribe(stop.get_token());
        QTRY_COMPARE(m_home->requests(inference).size(), 1);
        const QStringList names = temporaryNames();
        QCOMPARE(names.size(), 1);
        static const QRegularExpression wav(u"^orvane-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.wav$"_s);
        QVERIFY2(wav.match(names[0]).hasMatch(), qPrintable(names[0]));
        QCOMPARE(QFile::permissions(m_temporary->filePath(names[0])) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
        if (isAborted)
            stop.request_stop();
        QTRY_VERIFY(result.isDone());
        QCOMPARE(result.isCancelled(), isAborted);
        const QByteArray body = m_home->requests(inference).first().body();
        const qsizetype sound = body.indexOf("\r\n\r\nRIFF") + 4;
        QCOMPARE(body.mid(sound + 8, 4), "WAVE");
        QCOMPARE(body.indexOf("\r\n--orvane-", sound) - sound, WavFileWriter::headerBytes + sampleRate * 2);
        QTRY_COMPARE(temporaryNames(), QStringList());
        QTRY_COMPARE(m_home->abandoned(inference), isAborted ? 1 : 0);
    }

    void destroyed()
    {
        m_home->behave(answering({FakeAnswer::never()}));
        load();
        const TaskResult samples = transcribe();
        const TaskResult file(m_engine->infer(audioFile(), u"ru"_s));
        const TaskResult otherModel = transcribe({}, u"b"_s);
        QTRY_COMPARE(m_home->requests(inference).size(), 2);
        m_engine.reset();
        QTRY_VERIFY(samples.isDone() && file.isDone() && otherModel.isDone());
        QVERIFY(samples.isCancelled() && file.isCancelled() && otherModel.isCancelled());
        QTRY_COMPARE(temporaryNames(), QStringList());
    }

private:
    void load()
    {
        const auto load = finished(m_engine->load(model()));
        QCOMPARE(load.error(), QString());
    }

    [[nodiscard]] QString model(const QString &name = u"a"_s) const
    {
        return m_home->resources() + u'/' + name;
    }

    [[nodiscard]] QString audioFile(const QByteArray &content = "audio")
    {
        const QString path = m_home->resources() + u"/recording.flac"_s;
        put(path, content);
        return path;
    }

    [[nodiscard]] QStringList temporaryNames() const
    {
        return QDir(m_temporary->path()).entryList(QDir::Files, QDir::Name);
    }

    [[nodiscard]] TaskResult<RecognisedSpeech> transcribe(std::stop_token stop = {},
                                                          const QString &name = u"a"_s)
    {
        return TaskResult(m_engine->transcribe(std::vector<float>(sampleRate), model(name), u"ru"_s,
                                               NonSpeech::Keep, stop));
    }

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<QTemporaryDir> m_temporary;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
};

QTEST_GUILESS_MAIN(TestWhisperEngine)
#include "tst_whisperengine.moc"
