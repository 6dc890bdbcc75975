#include "models/ModelManager.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using orvane::test::put;

class TestModelManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resolved_data()
    {
        const Rows<QStringList, QString, QString> row("files", "selected", "id"); // empty: none

        const QStringList two = {u"ggml-small.bin"_s, u"ggml-base.bin"_s};
        row("the selected one", two, u"small"_s, u"small"_s);
        row("selected but not there", two, u"large-v3"_s, u"base"_s);
        row("English variant", {u"ggml-base.en.bin"_s}, u"base"_s, u"base.en"_s);
        row("only a part", {u"ggml-base.bin.part"_s}, u"base"_s, {});
        row("a folder of that name", {u"ggml-base.bin/"_s}, u"base"_s, {});
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
                put(folder.filePath(file), {});
        }
        const ModelManager models(folder.path());
        const auto model = models.resolved(selected);
        QCOMPARE(model ? model->id : QString(), id);
    }

    void noticesWhatOtherProgramsDo()
    {
        const QTemporaryDir parent;
        const QString folder = parent.filePath(u"Orvane/Models"_s);
        const ModelManager models(folder);
        QSignalSpy replaced(&models, &ModelManager::fileReplaced);
        QVERIFY(!models.resolved(u"base"_s));

        QVERIFY(QDir().mkpath(folder));
        put(folder + u"/ggml-tiny.bin"_s, {});
        put(folder + u"/ggml-large-v3-turbo.bin"_s, {});
        QTRY_COMPARE(models.downloaded(), (QSet{u"large-v3-turbo"_s, u"tiny"_s}));
        QCOMPARE(models.downloadedModels().first().id, u"tiny"_s);

        QVERIFY(QFile::remove(folder + u"/ggml-tiny.bin"_s));
        QTRY_COMPARE(models.downloaded(), QSet{u"large-v3-turbo"_s});

        QVERIFY(replaced.isEmpty());
        put(folder + u"/ggml-large-v3-turbo.bin"_s, "overwritten");
        QTRY_COMPARE(replaced.size(), 1);
        QCOMPARE(replaced.first().first(), u"large-v3-turbo"_s);
        put(folder + u"/ggml-tiny.bin"_s, "another one under the old name");
        QTRY_COMPARE(replaced.size(), 2);

        QVERIFY(QDir(folder).removeRecursively());
        QTRY_VERIFY(models.downloaded().isEmpty());
        QVERIFY(QDir().mkpath(folder));
        put(folder + u"/ggml-base.bin"_s, {});
        QTRY_COMPARE(models.downloaded(), QSet{u"base"_s});
    }
};

QTEST_GUILESS_MAIN(TestModelManager)
#include "tst_modelmanager.moc"
