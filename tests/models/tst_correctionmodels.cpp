#include "base/localization/Localization.h"
#include "models/CorrectionModelManager.h"

#include "tests/support/FaultServer.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Processor = CorrectionModel::Processor;

class TestCorrectionModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recommends_data();
    void recommends();
    void everyModelCanBeShownAndFetched();
    void downloadsIntoItsFolder();
};

void TestCorrectionModels::recommends_data()
{
    QTest::addColumn<double>("ramGB");
    QTest::addColumn<Processor>("processor");
    QTest::addColumn<QString>("id");

    QTest::newRow("8 GB") << 8.0 << Processor::AppleSilicon << u"qwen2.5-3b"_s;
    QTest::newRow("17 GB") << 17.0 << Processor::AppleSilicon << u"gemma-2-9b"_s;
    QTest::newRow("too little for any") << 2.0 << Processor::AppleSilicon << u"qwen2.5-1.5b"_s;
    QTest::newRow("other, 128 GB") << 128.0 << Processor::Other << u"qwen2.5-3b"_s;
    QTest::newRow("other, 11.43 GB") << 11.43 << Processor::Other << u"qwen2.5-3b"_s;
    QTest::newRow("other, 11.42 GB") << 11.42 << Processor::Other << u"gemma-2-2b"_s;
}

void TestCorrectionModels::recommends()
{
    QFETCH(const double, ramGB);
    QFETCH(const Processor, processor);
    QTEST(CorrectionModel::recommendedID(ramGB, processor), "id");
}

void TestCorrectionModels::everyModelCanBeShownAndFetched()
{
    QSet<QString> ids;
    QSet<QString> files;
    Localization::setLanguage(u"en"_s);
    for (const CorrectionModel &model : CorrectionModel::catalog()) {
        ids.insert(model.id);
        files.insert(model.fileName);
        QVERIFY(model.repositoryPath().startsWith(u'/'));
        QVERIFY(model.repositoryPath().endsWith(u"/resolve/main/"_s + model.fileName));
    }
    QCOMPARE(title(CorrectionEngine::BuiltIn), u"Built-in (Apple)"_s);
    Localization::setLanguage(u"ru"_s);
    QCOMPARE(title(CorrectionEngine::Local), u"Опенсорсная модель"_s);
    QCOMPARE(ids.size(), 7);
    QCOMPARE(files.size(), 7);
}

void TestCorrectionModels::downloadsIntoItsFolder()
{
    const QTemporaryDir folder;
    FaultServer server(modelContent(100'000, "GGUF"));
    const ModelRepository repository{.address = server.url(QString()).toString(), .options = {}};
    CorrectionModelManager models(folder.filePath(u"Orvane/CorrectionModels"_s), repository);
    QVERIFY(QDir(models.directory()).exists());

    const CorrectionModel &model = CorrectionModel::catalog().at(1);
    models.download(model.id);
    QTRY_COMPARE(models.downloadedModels(), QList{model});
    QVERIFY(QFile::exists(models.localPath(model)));
    QCOMPARE(server.served().last().request.path, model.repositoryPath().toUtf8());

    server.setContent("lmgg: of the other kind", "\"v2\"");
    models.download(u"qwen2.5-3b"_s);
    QTRY_VERIFY(!models.lastError().isEmpty());
    QCOMPARE(QDir(models.directory()).entryList(QDir::Files), QStringList{model.fileName});
}

QTEST_GUILESS_MAIN(TestCorrectionModels)
#include "tst_correctionmodels.moc"
