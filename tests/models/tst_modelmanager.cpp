#include "models/ModelManager.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

void put(const QString &file)
{
    QFile created(file);
    QVERIFY(created.open(QFile::WriteOnly));
}

} // namespace

class TestModelManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resolved_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("id"); // empty: none

        const QStringList two = {u"ggml-small.bin"_s, u"ggml-base.bin"_s};
        QTest::newRow("the selected one") << two << u"small"_s << u"small"_s;
        QTest::newRow("selected but not there") << two << u"large-v3"_s << u"base"_s;
        QTest::newRow("none selected") << two << QString() << u"base"_s;
        QTest::newRow("unknown id") << two << u"BASE"_s << u"base"_s;
        QTest::newRow("English variant") << QStringList{u"ggml-base.en.bin"_s} << u"base"_s << u"base.en"_s;
        QTest::newRow("only a part") << QStringList{u"ggml-base.bin.part"_s} << u"base"_s << QString();
        QTest::newRow("a folder of that name") << QStringList{u"ggml-base.bin/"_s} << u"base"_s << QString();
        QTest::newRow("foreign files")
            << QStringList{u"base"_s, u"ggml-medium.gguf"_s} << u"base"_s << QString();
    }

    void resolved()
    {
        QFETCH(const QStringList, files);
        QFETCH(const QString, selected);
        QFETCH(const QString, id);

        const QTemporaryDir folder;
        for (const QString &file : files) {
            if (file.endsWith(u'/'))
                QVERIFY(QDir(folder.path()).mkdir(file.chopped(1)));
            else
                put(folder.filePath(file));
        }
        const ModelManager models(folder.path());
        const auto model = models.resolved(selected);
        QCOMPARE(model ? model->id : QString(), id);
        if (model)
            QVERIFY(QFile::exists(models.localPath(*model)));
    }

    void folderNeedNotExist()
    {
        const ModelManager models(u"/nonexistent/models"_s);
        QVERIFY(models.downloaded().isEmpty());
        QVERIFY(!models.resolved(u"base"_s));
    }

    void refreshTellsWhatChanged()
    {
        const QTemporaryDir folder;
        ModelManager models(folder.path());
        QSignalSpy changed(&models, &ModelManager::downloadedChanged);

        put(folder.filePath(u"ggml-tiny.bin"_s));
        put(folder.filePath(u"ggml-large-v3-turbo.bin"_s));
        models.refresh();
        QCOMPARE(models.downloaded(), (QSet{u"large-v3-turbo"_s, u"tiny"_s}));
        QCOMPARE(models.downloadedModels().first().id, u"tiny"_s);
        models.refresh();
        QCOMPARE(changed.size(), 1);

        QVERIFY(QFile::remove(folder.filePath(u"ggml-tiny.bin"_s)));
        models.refresh();
        QCOMPARE(changed.size(), 2);
        QCOMPARE(models.downloadedModels().size(), 1);
    }

    void catalogIsConsistent()
    {
        QSet<QString> ids;
        for (const WhisperModel &model : WhisperModel::catalog()) {
            QVERIFY2(!ids.contains(model.id), qUtf8Printable(model.id));
            ids.insert(model.id);
            QCOMPARE(model.fileName, u"ggml-%1.bin"_s.arg(model.id));
            QCOMPARE(model.multilingual, !model.id.endsWith(u".en"_s));
        }
    }
};

QTEST_GUILESS_MAIN(TestModelManager)
#include "tst_modelmanager.moc"
