#include "models/ModelManager.h"
#include "tests/support/Files.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace orvane;
using orvane::test::contentOf;
using orvane::test::put;

namespace {

/// What a model begins with: words, length, width, heads, layers that hear, length, width, heads, layers that
/// write.
QByteArray model(int words, int width, int layers)
{
    QByteArray content = WhisperModel::magic();
    for (const int number : {words, 1500, width, 8, layers, 448, width, 8, layers}) {
        const qint32 stored = qToLittleEndian(number);
        content.append(reinterpret_cast<const char *>(&stored), sizeof(stored));
    }
    return content + "the rest";
}

} // namespace

class TestModelImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesWhatItKnows_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("result"); // the file in the folder, or the sentence

        QTest::newRow("by its name") << u"ggml-small.bin"_s << QByteArray("lmgg…") << u"ggml-small.bin"_s;
        QTest::newRow("in capitals") << u"GGML-Base.BIN"_s << QByteArray("lmgg…") << u"ggml-base.bin"_s;
        QTest::newRow("by its shape") << u"model.bin"_s << model(51865, 512, 6) << u"ggml-base.bin"_s;
        QTest::newRow("English") << u"model (1).bin"_s << model(51864, 384, 4) << u"ggml-tiny.en.bin"_s;
        QTest::newRow("turbo") << u"a.bin"_s << model(51866, 1280, 4) << u"ggml-large-v3-turbo.bin"_s;
        QTest::newRow("another shape")
            << u"a.bin"_s << model(60000, 512, 6)
            << u"По этому файлу не видно, какая это модель. Назовите его как в каталоге, например "
               u"ggml-tiny.bin: a.bin"_s;
        QTest::newRow("cut off")
            << u"a.bin"_s << model(51865, 512, 6).first(30)
            << u"По этому файлу не видно, какая это модель. Назовите его как в каталоге, "
               u"например ggml-tiny.bin: a.bin"_s;
        QTest::newRow("no model") << u"ggml-base.bin"_s << QByteArray("<html>")
                                  << u"Это не файл модели: ggml-base.bin"_s;
        QTest::newRow("nothing there") << u"ggml-base.bin"_s << QByteArray()
                                       << u"Не удалось прочитать файл «ggml-base.bin»: файл не найден"_s;
    }

    void takesWhatItKnows()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, content);
        QFETCH(const QString, result);
        const QTemporaryDir elsewhere;
        if (!content.isEmpty())
            put(elsewhere.filePath(name), content);
        const QTemporaryDir folder;
        ModelManager models(folder.path());
        models.importFile(elsewhere.filePath(name));

        const auto files = [&folder] { return QDir(folder.path()).entryList(QDir::Files); };
        if (!result.endsWith(u".bin"_s) || result.contains(u' ')) {
            QTRY_COMPARE(models.lastError(), result);
            QCOMPARE(files(), QStringList());
            return;
        }
        QTRY_COMPARE(files(), QStringList{result});
        QCOMPARE(models.lastError(), QString());
        QCOMPARE(contentOf(folder.filePath(result)), content);
    }

    /// An engine that has the old one in memory has to know.
    void replacesWhatIsThere()
    {
        const QTemporaryDir elsewhere;
        const QString file = elsewhere.filePath(u"ggml-base.bin"_s);
        put(file, model(51865, 512, 6));
        const QTemporaryDir folder;
        put(folder.filePath(u"ggml-base.bin"_s), "lmgg old");
        put(folder.filePath(u"ggml-base.bin.part"_s), "half");
        ModelManager models(folder.path());
        QSignalSpy replaced(&models, &ModelManager::fileReplaced);

        models.importFile(file);
        QTRY_COMPARE(replaced.size(), 1);
        QCOMPARE(contentOf(models.localPath(u"base"_s)), contentOf(file));
        QVERIFY(models.partlyDownloaded().isEmpty());

        models.importFile(models.localPath(u"base"_s)); // itself
        QTest::qWait(50);
        QCOMPARE(contentOf(models.localPath(u"base"_s)), contentOf(file));
    }

    void leavesNothingWhenCancelled()
    {
        const QTemporaryDir elsewhere;
        const QString path = elsewhere.filePath(u"ggml-base.bin"_s);
        put(path, "lmgg");
        QVERIFY(QFile::resize(path, qint64(1) << 30)); // takes no room there
        const QTemporaryDir folder;
        ModelManager models(folder.path());
        models.importFile(path);
        QTRY_VERIFY(models.progress().value(u"base"_s).toDouble() > 0);
        models.cancelDownload(u"base"_s);
        QTRY_COMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
        QVERIFY(models.downloaded().isEmpty());
        QCOMPARE(models.lastError(), QString());
    }
};

QTEST_GUILESS_MAIN(TestModelImport)
#include "tst_modelimport.moc"
