#include "correction/LocalLLMEngine.h"
#include "engine/EngineProcessRegistry.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using EngineError = EngineServer::EngineError;
using Ending = FakeAnswer::Ending;

namespace {

const QString health = u"/health"_s;
const QString completions = u"/v1/chat/completions"_s;
const QByteArray greeting = R"({"choices":[{"message":{"content":" Привет\n"}},{}],"usage":{}})";

FakeEngineBehaviour answering(const FakeAnswer &answer)
{
    return {.answers = {{health, {{.status = 200}}}, {completions, {answer}}}};
}

} // namespace

class TestLocalLLMEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"llama-server"_s);
        m_registry = std::make_unique<EngineProcessRegistry>(QString());
        m_engine = std::make_unique<LocalLLMEngine>(
            EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry);
    }

    void cleanup()
    {
        m_engine.reset();
        QTRY_VERIFY(m_home->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    void launches()
    {
        const FakeAnswer loading{.status = 503};
        m_home->behave({.answers = {{health, {loading, loading, {.status = 200}}}}});
        load();
        const QList<FakeEngineHome::Request> probes = m_home->requests(health);
        QCOMPARE(probes.size(), 3);
        m_engine->requestRestart();
        load();

        const QList<FakeEngineHome::Launch> launches = m_home->launches();
        QCOMPARE(launches.size(), 2);
        const QStringList arguments = launches.first().arguments;
        const QString port = arguments.value(5);
        const QString key = arguments.value(7);
        QVERIFY2(port.toUShort() > 0, qPrintable(port));
        static const QRegularExpression form(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
        QVERIFY2(form.match(key).hasMatch(), qPrintable(key));
        QCOMPARE(arguments, (QStringList{u"-m"_s, u"/models/a b.gguf"_s, u"--host"_s, u"127.0.0.1"_s,
                                         u"--port"_s, port, u"--api-key"_s, key, u"-ngl"_s, u"99"_s,
                                         u"--ctx-size"_s, u"8192"_s, u"--jinja"_s}));
        QCOMPARE(probes.last().method, u"GET"_s);
        QCOMPARE(probes.last().headers[u"authorization"_s], u"Bearer "_s + key);
        QVERIFY(launches.last().arguments.value(7) != key);
    }

    void asks()
    {
        m_home->behave(answering({.body = greeting}));
        load();
        const auto result = finished(m_engine->correct(u"привет \"⟦\n"_s, u"исправь"_s));
        QCOMPARE(result.error(), QString());
        QCOMPARE(result.value(), u" Привет\n"_s);

        const FakeEngineHome::Request request = m_home->requests(completions).first();
        QCOMPARE(request.method, u"POST"_s);
        QCOMPARE(request.headers[u"content-type"_s], u"application/json"_s);
        QCOMPARE(request.headers[u"authorization"_s],
                 u"Bearer "_s + m_home->launches().first().arguments.value(7));
        const QJsonObject system{{u"role"_s, u"system"_s}, {u"content"_s, u"исправь"_s}};
        const QJsonObject user{{u"role"_s, u"user"_s}, {u"content"_s, u"привет \"⟦\n"_s}};
        QCOMPARE(QJsonDocument::fromJson(request.body()).object(),
                 (QJsonObject{{u"messages"_s, QJsonArray{system, user}},
                              {u"temperature"_s, 0.2},
                              {u"max_tokens"_s, 1536}}));
    }

    void answers_data()
    {
        const Rows<FakeAnswer, QString> row("answer", "error");
        const QString failed = u"Ошибка запроса к модели: "_s;
        const QByteArray overflow = R"({"error":{"code":400,"type":"exceed_context_size_error"}})";
        row("too long", {.status = 400, .body = overflow},
            u"Документ слишком большой для чата. Сократите его или задайте вопрос по части текста."_s);
        row("another error", {.status = 400, .body = R"({"error":{"type":"invalid_request_error"}})"},
            failed + u"HTTP 400"_s);
        row("no text in it", {.body = R"({"choices":[{"message":{"content":null}}]})"},
            failed + u"неожиданный формат ответа"_s);
        row("cut off", {.body = greeting, .ending = Ending::CutOff}, u"сервер закрыл соединение"_s);
    }

    void answers()
    {
        QFETCH(const FakeAnswer, answer);
        m_home->behave(answering(answer));
        load();
        const auto result = finished(m_engine->correct(u"a"_s, u"b"_s));
        QTEST(result.error(), "error");
        QCOMPARE(result.failedAs<EngineError>()->kind() == EngineError::Kind::contextOverflow,
                 QByteArray(QTest::currentDataTag()).startsWith("too long"));
        QCOMPARE(m_home->requests(completions).size(), 1);
    }

private:
    void load()
    {
        const auto load = finished(m_engine->load(u"/models/a b.gguf"_s));
        QCOMPARE(load.error(), QString());
    }

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<LocalLLMEngine> m_engine;
};

QTEST_GUILESS_MAIN(TestLocalLLMEngine)
#include "tst_localllmengine.moc"
