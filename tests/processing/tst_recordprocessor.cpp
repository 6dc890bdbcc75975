#include "tests/history/Samples.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"
#include "tests/support/ServicesHome.h"
#include "tests/support/TaskResult.h"

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

} // namespace

/// What the end-to-end tests with the real engines do not show: failures and cancellations.
class RecordProcessorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"llama-server"_s);
        m_folder = std::make_unique<ServicesHome>();
        const AppServices::Environment environment = m_folder->environment(m_home->resources());
        m_folders = environment.folders;
        m_services = std::make_unique<AppServices>(environment);
        put(m_services->correctionModels().localPath(CorrectionModel::catalog().first()), "GGUF");
        m_services->correctionModels().refresh();
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
        row("empty answer", FakeAnswer::saying(u" \n"_s), u"Модель ничего не ответила."_s);
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

        m_home->behave(answering(FakeAnswer::saying(u"новый"_s)));
        const Result next(processor().summarize(m_record));
        QCOMPARE(processor().error(), QString());
        QTRY_VERIFY(next.isDone());
        QCOMPARE(record().summary, u"новый"_s);
    }

    void refusesWhatCannotBeDone()
    {
        const QUuid silent = m_services->history().add(TranscriptRecord()).id;
        const auto empty = finished(processor().correct(silent));
        QCOMPARE(processor().error(), u"В записи нет текста."_s);

        const auto unknown = finished(processor().ask(QUuid::createUuid(), u"Кто?"_s));
        QVERIFY(processor().error().startsWith(u"В истории нет записи "_s));

        const auto soundless = finished(processor().transcribeAnew(m_record, {}));
        QVERIFY(processor().error().startsWith(u"Аудиофайл этой записи не найден"_s));

        m_home->behave(answering(FakeAnswer::never()));
        const TaskResult other(m_services->corrector().correct(u"диктовка"_s, {}));
        const auto busy = finished(processor().correct(m_record));
        QVERIFY(processor().error().startsWith(u"Модель занята другим текстом"_s));
        QVERIFY(!other.isDone());
        QVERIFY(m_services->corrector().isCorrecting());
    }

    void keepsWhatAnotherProgramDidMeanwhile()
    {
        QCoro::waitFor(m_services->history().flush());
        HistoryFolder another(m_folders);
        m_home->behave(answering(FakeAnswer::saying(u"Иван."_s)));

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

        m_home->behave(answering(FakeAnswer::saying(u"Иван."_s)));
        const auto next = finished(processor().ask(m_record, u"Кто?"_s));
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
    std::unique_ptr<ServicesHome> m_folder;
    StandardFolders m_folders;
    std::unique_ptr<AppServices> m_services;
    QUuid m_record;
};

QTEST_GUILESS_MAIN(RecordProcessorTest)
#include "tst_recordprocessor.moc"
