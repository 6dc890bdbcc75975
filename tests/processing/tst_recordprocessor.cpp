#include "app/services/AppServices.h"
#include "tests/history/Samples.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <QCoroCore>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Result = TaskResult<QString>;

namespace {

const QString completions = u"/v1/chat/completions"_s;

FakeEngineBehaviour answering(const FakeAnswer &answer)
{
    return {.answers = {{u"/health"_s, {{.status = 200}}}, {completions, {answer}}}};
}

FakeAnswer saying(const QString &text)
{
    const QJsonObject message{{u"content"_s, text}};
    return {.body =
                QJsonDocument(QJsonObject{{u"choices"_s, QJsonArray{QJsonObject{{u"message"_s, message}}}}})
                    .toJson()};
}

} // namespace

/// What the end-to-end tests with the real engines do not show: failures and cancellations.
class RecordProcessorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"llama-server"_s);
        m_folder = std::make_unique<QTemporaryDir>();
        AppServices::Environment environment;
        m_folders = {.applicationSupport = m_folder->path(),
                     .resources = m_home->resources(),
                     .temporary = m_folder->path()};
        environment.folders = m_folders;
        environment.defaultsFile = m_folder->filePath(u"settings.json"_s);
        Samples::put(environment.folders.correctionModels() + u'/' +
                         CorrectionModel::catalog().first().fileName,
                     "GGUF");
        m_services = std::make_unique<AppServices>(environment);
        QCoro::waitFor(m_services->history().whenLoaded());
        m_record = m_services->history().add(Samples::plainRecord(u"сказано"_s)).id;
    }

    void cleanup()
    {
        m_services.reset();
        QTRY_VERIFY(m_home->allEnded());
    }

    void tellsWhyNothingWasStored_data()
    {
        const Rows<FakeAnswer, QString> row("answer", "error");
        row("model fails", FakeAnswer{.status = 500},
            u"Ошибка протокола: Ошибка запроса к модели: HTTP 500"_s);
        row("empty answer", saying(u" \n"_s), u"Модель ничего не ответила."_s);
    }

    void tellsWhyNothingWasStored()
    {
        QFETCH(FakeAnswer, answer);
        m_services->history().setSummary(m_record, u"прежний"_s);
        const TranscriptRecord before = record();
        m_home->behave(answering(answer));
        const Result result(processor().summarize(m_record));
        QCOMPARE(processor().record(), m_record);
        QTRY_VERIFY(result.isDone());
        QTEST(result.error(), "error");
        QTEST(processor().error(), "error");
        QVERIFY(processor().record().isNull());
        QCOMPARE(record(), before);

        m_home->behave(answering(saying(u"новый"_s)));
        const Result next(processor().summarize(m_record));
        QCOMPARE(processor().error(), QString());
        QTRY_VERIFY(next.isDone());
        QCOMPARE(record().summary, u"новый"_s);
    }

    void refusesWhatCannotBeDone()
    {
        const QUuid silent = m_services->history().add(TranscriptRecord()).id;
        const Result empty(processor().correct(silent));
        QTRY_VERIFY(empty.isDone());
        QCOMPARE(processor().error(), u"В записи нет текста."_s);

        const Result unknown(processor().ask(QUuid::createUuid(), u"Кто?"_s));
        QTRY_VERIFY(unknown.isDone());
        QVERIFY(processor().error().startsWith(u"В истории нет записи "_s));

        const Result soundless(processor().transcribeAnew(m_record, {}));
        QTRY_VERIFY(soundless.isDone());
        QVERIFY(processor().error().startsWith(u"Аудиофайл этой записи не найден"_s));

        m_home->behave(answering(FakeAnswer::never()));
        const TaskResult other(m_services->corrector().correct(u"диктовка"_s, {}));
        const Result busy(processor().correct(m_record));
        QTRY_VERIFY(busy.isDone());
        QVERIFY(processor().error().startsWith(u"Модель занята другим текстом"_s));
        QVERIFY(!other.isDone());
        QVERIFY(m_services->corrector().isCorrecting());
    }

    void keepsWhatAnotherProgramDidMeanwhile()
    {
        QCoro::waitFor(m_services->history().flush());
        HistoryFolder another(m_folders);
        m_home->behave(answering(saying(u"Иван."_s)));

        TranscriptRecord renamed = record();
        renamed.title = u"новое"_s;
        const Result asked(processor().ask(m_record, u"Кто?"_s));
        another.save(renamed);
        QTRY_VERIFY(asked.isDone());
        QCOMPARE(record().title, u"новое"_s);
        QCOMPARE(record().events->last().text, u"Иван."_s);

        QCoro::waitFor(m_services->history().flush());
        const Result late(processor().ask(m_record, u"Кто?"_s));
        another.remove(recordFileName(m_record));
        QTRY_VERIFY(late.isDone());
        QVERIFY(processor().error().startsWith(u"В истории нет записи "_s));
        QCOMPARE(another.fileNames()->size(), 0u);
    }

    void cancelledStoresNothing()
    {
        const TranscriptRecord before = record();
        m_home->behave(answering(FakeAnswer::never()));
        const Result cancelled(processor().correct(m_record));
        QTRY_COMPARE(m_home->requests(completions).size(), 1);
        const Result second(processor().ask(m_record, u"Кто?"_s)); // one at a time
        QCOMPARE(second.error(), EngineTurns::waitText());
        processor().cancel();
        QVERIFY(processor().record().isNull());
        QVERIFY(!m_services->corrector().isCorrecting());

        QTRY_VERIFY(cancelled.isCancelled());
        QTRY_COMPARE(m_home->abandoned(completions), 1); // the engine stops computing
        QCOMPARE(processor().error(), QString());
        QCOMPARE(record(), before);

        m_home->behave(answering(saying(u"Иван."_s)));
        const Result next(processor().ask(m_record, u"Кто?"_s));
        QTRY_VERIFY(next.isDone());
        QCOMPARE(record().events->last().text, u"Иван."_s);
    }

    void endsWithTheServices()
    {
        m_home->behave(answering(FakeAnswer::never()));
        const Result asked(processor().ask(m_record, u"Кто?"_s));
        QTRY_COMPARE(m_home->requests(completions).size(), 1);
        m_services.reset();
        QTRY_VERIFY(asked.isCancelled());
    }

private:
    [[nodiscard]] RecordProcessor &processor() const { return m_services->recordProcessor(); }
    [[nodiscard]] TranscriptRecord record() const
    {
        return QCoro::waitFor(m_services->history().record(m_record));
    }

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<QTemporaryDir> m_folder;
    StandardFolders m_folders;
    std::unique_ptr<AppServices> m_services;
    QUuid m_record;
};

QTEST_GUILESS_MAIN(RecordProcessorTest)
#include "tst_recordprocessor.moc"
