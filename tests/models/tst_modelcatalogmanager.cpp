#include "base/localization/Localization.h"
#include "models/ModelManager.h"
#include "tests/models/DownloadOutcome.h"
#include "tests/support/FaultServer.h"

#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Request = FaultServer::Request;
using Answer = FaultServer::Answer;

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

const QByteArray &model()
{
    static const QByteArray content = modelContent(4 * mebibyte, "lmgg");
    return content;
}

/// Lets each file begin and then brings nothing more.
Answer stallingAnswer(const Request &request)
{
    return request.isProbe() ? Answer() : Answer{.stallAfter = 3 * mebibyte};
}

QCoro::Task<> follow(ModelManager *models, QString id, std::stop_token stop, QString *outcome)
{
    try {
        co_await models->fetch(id, stop);
        *outcome = u"done"_s;
    } catch (const Cancelled &) {
        *outcome = u"cancelled"_s;
    } catch (const Error &error) {
        *outcome = error.description();
    }
}

} // namespace

class TestModelCatalogManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void downloadsSeveralAtOnce();
    void tellsWhyItFailed_data();
    void tellsWhyItFailed();
    void resumesAfterAFailure();
    void cancellingLeavesNothing();
    void cancellingKeepsACompleteModel();
    void cancelledAndStartedAgain();
    void leavesToALaterOneWhatItHas();
    void stoppedByItsCaller();
    void removes();

private:
    [[nodiscard]] std::unique_ptr<ModelManager> manager(const QString &address = {}) const
    {
        const QString own = m_server->url(QString()).toString();
        return std::make_unique<ModelManager>(
            m_folder->path(), ModelRepository{.address = address.isEmpty() ? own : address, .options = {}});
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name);
    }
    /// Until the base model's download has brought all it will.
    void waitForStall(const ModelManager &models) const
    {
        QTRY_VERIFY(models.progress().value(u"base"_s).toDouble() > 0.74);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FaultServer> m_server;
};

void TestModelCatalogManager::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<FaultServer>(model());
}

void TestModelCatalogManager::downloadsSeveralAtOnce()
{
    const auto models = manager(m_server->url(u"/"_s).toString());
    QSignalSpy downloadedChanged(models.get(), &ModelManager::downloadedChanged);
    models->download(u"base"_s);
    models->download(u"tiny.en"_s);
    models->download(u"base"_s);
    models->download(u"no such model"_s);
    QCOMPARE(models->progress(), (QVariantMap{{u"base"_s, 0.0}, {u"tiny.en"_s, 0.0}}));

    QTRY_COMPARE(models->downloaded(), (QSet{u"base"_s, u"tiny.en"_s}));
    QTRY_VERIFY(models->progress().isEmpty());
    QVERIFY(!downloadedChanged.isEmpty());
    QCOMPARE(models->lastError(), QString());
    QCOMPARE(files(), (QStringList{u"ggml-base.bin"_s, u"ggml-tiny.en.bin"_s}));
    QVERIFY(fileContent(models->localPath(u"base"_s)) == model());

    QMap<QByteArray, int> requests;
    for (const auto &one : m_server->served())
        ++requests[one.request.path];
    QCOMPARE(requests, (QMap<QByteArray, int>{{"/vantrel/whisper.cpp/resolve/main/ggml-base.bin", 2},
                                              {"/vantrel/whisper.cpp/resolve/main/ggml-tiny.en.bin", 2}}));
}

void TestModelCatalogManager::tellsWhyItFailed_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<bool>("hasRepository");
    QTest::addColumn<QString>("said");

    QTest::newRow("Russian") << u"ru"_s << true
                             << u"Не удалось скачать Base: Скачанный файл не является корректной моделью. "
                                "Повторите загрузку."_s;
    QTest::newRow("no repository") << u"en"_s << false
                                   << u"Could not download Base: The address of the model repository is not "
                                      "set: give it when building or on the command line."_s;
}

void TestModelCatalogManager::tellsWhyItFailed()
{
    QFETCH(const QString, language);
    QFETCH(const bool, hasRepository);
    QFETCH(const QString, said);

    m_server->setContent("GGUF, which is of the other kind", "\"v1\"");
    const auto models = manager(hasRepository ? QString() : u"/"_s);
    Localization::setLanguage(language);
    models->download(u"base"_s);
    QTRY_VERIFY(!models->lastError().isEmpty());
    Localization::setLanguage(u"ru"_s);
    QCOMPARE(models->lastError(), said);
    QVERIFY(models->progress().isEmpty());
    QVERIFY(files().isEmpty());
}

void TestModelCatalogManager::resumesAfterAFailure()
{
    m_server->setRule([](const Request &request) {
        return request.isProbe() ? Answer() : Answer{.dropAfter = 3 * mebibyte};
    });
    const auto models = manager();
    models->download(u"base"_s);
    QTRY_VERIFY(!models->lastError().isEmpty());
    QCOMPARE(files(), (QStringList{u"ggml-base.bin.part"_s, u"ggml-base.bin.part.meta"_s}));

    m_server->setRule({});
    m_server->forgetServed();
    models->download(u"base"_s);
    QCOMPARE(models->lastError(), QString());
    QTRY_VERIFY(models->downloaded().contains(u"base"_s));
    QVERIFY(fileContent(models->localPath(u"base"_s)) == model());
    QVERIFY(m_server->served().last().request.range->start > mebibyte);
}

void TestModelCatalogManager::cancellingLeavesNothing()
{
    m_server->setRule(stallingAnswer);
    const auto models = manager();
    models->download(u"base"_s);
    waitForStall(*models);
    const DownloadProgress reached = models->downloadProgress(u"base"_s);
    QCOMPARE(reached.totalBytes, model().size());
    QVERIFY(reached.receivedBytes > 2 * mebibyte && reached.bytesPerSecond >= 0);
    QVERIFY(models->downloaded().isEmpty());
    QVERIFY(!files().isEmpty());
    models->cancelDownload(u"base"_s);
    QVERIFY(models->progress().isEmpty());
    QTRY_VERIFY(files().isEmpty());
    QCOMPARE(models->lastError(), QString());
    QVERIFY(models->progress().isEmpty());
}

void TestModelCatalogManager::cancellingKeepsACompleteModel()
{
    QFile byHand(m_folder->filePath(u"ggml-base.bin"_s));
    QVERIFY(byHand.open(QFile::WriteOnly) && byHand.write("put there by hand") > 0);
    byHand.close();
    m_server->setRule(stallingAnswer);
    const auto models = manager();
    QVERIFY(models->downloaded().contains(u"base"_s));
    models->download(u"base"_s);
    waitForStall(*models);
    models->cancelDownload(u"base"_s);
    QTRY_COMPARE(files(), QStringList{u"ggml-base.bin"_s});
    QCOMPARE(fileContent(byHand.fileName()), "put there by hand");
    QVERIFY(models->downloaded().contains(u"base"_s));
}

void TestModelCatalogManager::cancelledAndStartedAgain()
{
    m_server->setRule(stallingAnswer);
    const auto models = manager();
    models->download(u"base"_s);
    waitForStall(*models);
    m_server->setRule({});
    models->cancelDownload(u"base"_s);
    models->download(u"base"_s);
    QVERIFY(models->progress().contains(u"base"_s));
    QTRY_VERIFY(models->downloaded().contains(u"base"_s));
    QCOMPARE(files(), QStringList{u"ggml-base.bin"_s});
    QCOMPARE(models->lastError(), QString());
}

void TestModelCatalogManager::leavesToALaterOneWhatItHas()
{
    m_server->setRule(stallingAnswer);
    auto models = manager();
    models->download(u"base"_s);
    models->download(u"tiny"_s);
    waitForStall(*models);
    models->cancelDownload(u"tiny"_s);
    models.reset();
    QCOMPARE(files(), (QStringList{u"ggml-base.bin.part"_s, u"ggml-base.bin.part.meta"_s}));
    QCoreApplication::processEvents(); // what was under way finds its owner gone

    models = manager();
    QCOMPARE(models->partlyDownloaded(), QSet{u"base"_s});
    models->cancelDownload(u"base"_s);
    QTRY_VERIFY(models->partlyDownloaded().isEmpty());
    QCOMPARE(files(), QStringList());
}

void TestModelCatalogManager::stoppedByItsCaller()
{
    m_server->setRule(stallingAnswer);
    const auto models = manager();
    std::stop_source stop;
    QString outcome;
    follow(models.get(), u"base"_s, stop.get_token(), &outcome);
    QString second;
    follow(models.get(), u"base"_s, {}, &second);
    QVERIFY2(second.contains(u"уже скачивается"), qPrintable(second));
    waitForStall(*models);
    stop.request_stop();
    QTRY_COMPARE(outcome, u"cancelled"_s);
    QVERIFY(models->progress().isEmpty());
    QCOMPARE(files(), (QStringList{u"ggml-base.bin.part"_s, u"ggml-base.bin.part.meta"_s}));
}

void TestModelCatalogManager::removes()
{
    const auto models = manager();
    models->download(u"base"_s);
    QTRY_VERIFY(models->downloaded().contains(u"base"_s));
    models->remove(u"base"_s);
    QVERIFY(models->downloaded().isEmpty()); // before the file has gone
    QTRY_VERIFY(files().isEmpty());
}

QTEST_GUILESS_MAIN(TestModelCatalogManager)
#include "tst_modelcatalogmanager.moc"
