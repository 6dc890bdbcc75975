#include "models/CorrectionModelManager.h"
#include "tests/support/FaultServer.h"
#include "tests/support/Rows.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using Processor = CorrectionModel::Processor;

class TestCorrectionModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recommends_data()
    {
        const Rows<double, Processor, QString> row("ramGB", "processor", "id");
        row("17 GB", 17.0, Processor::AppleSilicon, u"gemma-2-9b"_s);
        row("too little for any", 2.0, Processor::AppleSilicon, u"qwen2.5-1.5b"_s);
        row("other, 128 GB", 128.0, Processor::Other, u"qwen2.5-3b"_s);
        row("other, 11.42 GB", 11.42, Processor::Other, u"gemma-2-2b"_s);
    }

    void recommends()
    {
        QFETCH(const double, ramGB);
        QFETCH(const Processor, processor);
        QTEST(CorrectionModel::recommendedID(ramGB, processor), "id");
    }

    void downloadsIntoItsFolder()
    {
        const QTemporaryDir folder;
        FaultServer server(modelContent(100'000, "GGUF"));
        const ModelRepository repository{.address = server.url(QString()).toString(), .options = {}};
        CorrectionModelManager models(folder.filePath(u"Orvane/CorrectionModels"_s), repository);
        QVERIFY(QDir(models.directory()).exists());
        const CorrectionModel &model = CorrectionModel::catalog().at(1);
        models.download(model.id);
        QTRY_COMPARE(models.downloadedModels(), QList{model});
        QCOMPARE(server.takeServed().last().request.path, model.repositoryPath().toUtf8());

        const FaultServer other(modelContent(100'000, "lmgg"));
        CorrectionModelManager fooled(models.directory(),
                                      {.address = other.url({}).toString(), .options = {}});
        fooled.download(u"qwen2.5-3b"_s);
        QTRY_VERIFY(!fooled.lastError().isEmpty());
        QCOMPARE(QDir(models.directory()).entryList(QDir::Files), QStringList{model.fileName});
    }
};

QTEST_GUILESS_MAIN(TestCorrectionModels)
#include "tst_correctionmodels.moc"
