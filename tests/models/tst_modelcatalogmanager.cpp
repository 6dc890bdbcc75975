#include "models/ModelManager.h"
#include "tests/models/DownloadOutcome.h"
#include "tests/support/FaultServer.h"
#include "tests/support/TaskResult.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

const QStringList interrupted = {u"ggml-base.bin.part"_s, u"ggml-base.bin.part.meta"_s};

/// To all but probes.
FaultServer::Rule spoiltBy(const FaultServer::Answer &answer)
{
    return [answer](const FaultServer::Request &request) {
        return request.isProbe() ? FaultServer::Answer() : answer;
    };
}

} // namespace

class TestModelCatalogManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_server = std::make_unique<FaultServer>(modelContent(4 * mebibyte, "lmgg"));
        restart();
    }

    void downloadsSeveralAtOnce()
    {
        m_models->download(u"base"_s);
        m_models->download(u"tiny.en"_s);
        m_models->download(u"base"_s);
        m_models->download(u"no such model"_s);
        QCOMPARE(m_models->progress(), (QVariantMap{{u"base"_s, 0.0}, {u"tiny.en"_s, 0.0}}));
        QTRY_COMPARE(m_models->downloaded(), (QSet{u"base"_s, u"tiny.en"_s}));
        QTRY_VERIFY(m_models->progress().isEmpty());
        QCOMPARE(m_models->lastError(), QString());
        QCOMPARE(files(), (QStringList{u"ggml-base.bin"_s, u"ggml-tiny.en.bin"_s}));
        QVERIFY(contentOf(m_models->localPath(u"base"_s)) == m_server->content());

        QMap<QByteArray, int> requests;
        for (const auto &one : m_server->takeServed())
            ++requests[one.request.path];
        QCOMPARE(requests,
                 (QMap<QByteArray, int>{{"/vantrel/whisper.cpp/resolve/main/ggml-base.bin", 2},
                                        {"/vantrel/whisper.cpp/resolve/main/ggml-tiny.en.bin", 2}}));
    }

    void resumesAfterAFailure()
    {
        m_server->setRule(spoiltBy({.dropAfter = 3 * mebibyte}));
        m_models->download(u"base"_s);
        QTRY_VERIFY2(m_models->lastError().startsWith(u"Не удалось скачать Base: "_s),
                     qPrintable(m_models->lastError()));
        QVERIFY(m_models->progress().isEmpty());
        QCOMPARE(files(), interrupted);

        m_server->setRule({});
        m_models->download(u"base"_s);
        QCOMPARE(m_models->lastError(), QString());
        QTRY_VERIFY(m_models->downloaded().contains(u"base"_s));
        QVERIFY(contentOf(m_models->localPath(u"base"_s)) == m_server->content());
        QVERIFY(m_server->takeServed().last().request.range->start > mebibyte);
    }

    void cancellingKeepsOnlyACompleteModel()
    {
        put(m_models->localPath(u"base"_s), "put there by hand");
        restart();
        downloadUntilStall();
        downloadUntilStall(u"tiny"_s);
        m_models->cancelDownload(u"base"_s);
        m_models->cancelDownload(u"tiny"_s);
        QVERIFY(m_models->progress().isEmpty());
        QTRY_COMPARE(files(), QStringList{u"ggml-base.bin"_s});
        QCOMPARE(contentOf(m_models->localPath(u"base"_s)), "put there by hand");
        QCOMPARE(m_models->downloaded(), QSet{u"base"_s});
        QCOMPARE(m_models->lastError(), QString());
        QVERIFY(m_models->progress().isEmpty());
    }

    void cancelledStartedAgainAndRemoved()
    {
        downloadUntilStall();
        m_server->setRule({});
        m_models->cancelDownload(u"base"_s);
        m_models->download(u"base"_s);
        QVERIFY(m_models->progress().contains(u"base"_s));
        QTRY_VERIFY(m_models->downloaded().contains(u"base"_s));
        QCOMPARE(files(), QStringList{u"ggml-base.bin"_s});
        QCOMPARE(m_models->lastError(), QString());

        m_models->remove(u"base"_s);
        QVERIFY(m_models->downloaded().isEmpty()); // before the file has gone
        QTRY_VERIFY(files().isEmpty());
    }

    void cancelledTooLate()
    {
        m_server->setRule(spoiltBy({.bytesPerSecond = 40 * mebibyte}));
        m_models->download(u"base"_s);
        // Seen on the download's thread before its end is on this one.
        while (!QFile::exists(m_models->localPath(u"base"_s)))
            QTest::qSleep(1);
        m_models->cancelDownload(u"base"_s);
        m_models->download(u"base"_s);
        QTRY_VERIFY(m_models->downloaded().contains(u"base"_s) && m_models->progress().isEmpty());
        QTest::qWait(50);
        QCOMPARE(m_server->takeServed().size(), 2);
    }

    void cancelledUnderAnotherCaller()
    {
        m_server->setRule(spoiltBy({.stallAfter = 3 * mebibyte}));
        const TaskResult waiting(m_models->fetch(u"base"_s));
        waitForStall(u"base"_s);
        m_server->setRule({});
        m_models->cancelDownload(u"base"_s);
        m_models->download(u"base"_s);
        QTRY_VERIFY(waiting.isDone());
        QVERIFY(waiting.isCancelled());
        QTRY_VERIFY(m_models->downloaded().contains(u"base"_s));
        QVERIFY(m_models->progress().isEmpty());
    }

    void leavesToALaterOneWhatItHas()
    {
        downloadUntilStall();
        downloadUntilStall(u"tiny"_s);
        m_models->cancelDownload(u"tiny"_s);
        m_models.reset();
        QCOMPARE(files(), interrupted);
        QCoreApplication::processEvents(); // what was under way finds its owner gone

        restart();
        QCOMPARE(m_models->partlyDownloaded(), QSet{u"base"_s});
        m_models->cancelDownload(u"base"_s);
        QTRY_VERIFY(m_models->partlyDownloaded().isEmpty());
        QCOMPARE(files(), QStringList());
    }

    void stoppedByItsCaller()
    {
        m_server->setRule(spoiltBy({.stallAfter = 3 * mebibyte}));
        std::stop_source stop;
        const TaskResult first(m_models->fetch(u"base"_s, stop.get_token()));
        const TaskResult second(m_models->fetch(u"base"_s));
        QVERIFY2(second.error().contains(u"уже скачивается"), qPrintable(second.error()));
        waitForStall(u"base"_s);
        stop.request_stop();
        QTRY_VERIFY(first.isDone());
        QVERIFY(first.isCancelled());
        QVERIFY(m_models->progress().isEmpty());
        QCOMPARE(files(), interrupted);
    }

private:
    void restart()
    {
        m_models = std::make_unique<ModelManager>(
            m_folder->path(), ModelRepository{.address = m_server->url(u"/"_s).toString(), .options = {}});
    }
    /// Until the download has brought all it will.
    void waitForStall(const QString &id) { QTRY_VERIFY(m_models->progress().value(id).toDouble() > 0.74); }
    void downloadUntilStall(const QString &id = u"base"_s)
    {
        m_server->setRule(spoiltBy({.stallAfter = 3 * mebibyte}));
        m_models->download(id);
        waitForStall(id);
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FaultServer> m_server;
    std::unique_ptr<ModelManager> m_models;
};

QTEST_GUILESS_MAIN(TestModelCatalogManager)
#include "tst_modelcatalogmanager.moc"
