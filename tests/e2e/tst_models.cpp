#include "tests/e2e/OrvaneProgram.h"
#include "tests/support/Files.h"
#include "tests/support/Nginx.h"
#include "tests/support/Rows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <csignal>
#include <numeric>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

const QString recognitionPath = u"/vantrel/whisper.cpp/resolve/main/"_s;
const QString correctionPath = u"/quellin/gemma-2-2b-it-GGUF/resolve/main/gemma-2-2b-it-Q4_K_M.gguf"_s;

QByteArray content(const QByteArray &magic, qint64 size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(1).fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / 4);
    return bytes.replace(0, magic.size(), magic);
}

/// What a server at 1 MiB/s takes half a minute for: time enough to interrupt on any machine.
const QByteArray &largeModel()
{
    static const QByteArray model = content("lmgg", 31 * mebibyte);
    return model;
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

/// The line of a list that tells about the model.
QString lineAbout(const QString &id, const QByteArray &list)
{
    for (const QString &line : QString::fromUtf8(list).split(u'\n')) {
        if (line.sliced(std::min<qsizetype>(2, line.size())).startsWith(id + u' '))
            return line;
    }
    return {};
}

} // namespace

/// `orvane models` with a real server. The sizes of the catalogue do not matter to it.
class ModelsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!Nginx::isInstalled())
            QSKIP("nginx is not installed");
    }

    void init()
    {
        m_orvane = std::make_unique<OrvaneProgram>();
        m_nginx = std::make_unique<Nginx>();
    }

    void listsBothCatalogues_data()
    {
        const Rows<QByteArray, QStringList, QString, QString, QString> row(
            "preferences", "headings", "recommended", "aboutTiny", "aboutGemma");

        row("Russian", R"({"interfaceLanguage": "ru"})", {u"Распознавание речи"_s, u"Обработка текста"_s},
            u"Рекомендуем"_s, u"≈ 75 МБ +≈ 0.4 ГБ +только английский"_s,
            u"≈ 1.6 ГБ +≈ 3.0 ГБ +.*Лёгкая · Многоязычная"_s);
        row("English", R"({"interfaceLanguage": "en"})", {u"Speech recognition"_s, u"Text processing"_s},
            u"Recommended"_s, u"≈ 75 MB +≈ 0.4 GB +English only"_s,
            u"≈ 1.6 GB +≈ 3.0 GB +.*Light · Multilingual"_s);
    }

    void listsBothCatalogues()
    {
        QFETCH(QByteArray, preferences);
        QFETCH(QStringList, headings);
        QFETCH(QString, recommended);
        QFETCH(QString, aboutTiny);
        QFETCH(QString, aboutGemma);
        m_orvane->setPreferences(preferences);
        put(recognitionFile(u"base"_s), {});
        put(correctionFile(), {});

        const auto result = m_orvane->run({u"models"_s});

        QCOMPARE(result.complaints, QByteArray());
        QCOMPARE(result.exitCode, 0);
        const QString list = QString::fromUtf8(result.output);
        for (const QString &heading : headings)
            QVERIFY2(list.split(u'\n').contains(heading), result.output.constData());
        QCOMPARE(list.count(recommended), 1);
        QCOMPARE(list.count(u'✓'), 2);
        QVERIFY(lineAbout(u"base"_s, result.output).startsWith(u'✓'));
        QVERIFY(lineAbout(u"gemma-2-2b"_s, result.output).startsWith(u'✓'));
        QVERIFY(lineAbout(u"tiny.en"_s, result.output).contains(QRegularExpression(aboutTiny)));
        QVERIFY(lineAbout(u"gemma-2-2b"_s, result.output).contains(QRegularExpression(aboutGemma)));
        QCOMPARE(list.count(u'\n'), 12 + 7 + 3); // the models, two headings and the line between
    }

    void downloadsFromBothCatalogues()
    {
        const QByteArray recognition = content("lmgg", 3 * mebibyte);
        const QByteArray correction = content("GGUF", 2 * mebibyte);
        m_nginx->put(recognitionPath + u"ggml-tiny.bin"_s, recognition);
        m_nginx->put(correctionPath, correction);

        const auto result = download({u"tiny"_s, u"gemma-2-2b"_s});

        QCOMPARE(result.complaints, QByteArray());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(QString::fromUtf8(result.output),
                 recognitionFile(u"tiny"_s) + u'\n' + correctionFile() + u'\n');
        QVERIFY(test::contentOf(recognitionFile(u"tiny"_s)) == recognition);
        QVERIFY(test::contentOf(correctionFile()) == correction);
        QCOMPARE(recognitionFiles(), QStringList{u"ggml-tiny.bin"_s});

        // Once there, it is not asked for again.
        QTRY_COMPARE_WITH_TIMEOUT(m_nginx->ranges().size(), 4, 60'000);
        const auto again = download({u"tiny"_s});
        QCOMPARE(again.exitCode, 0);
        QCOMPARE(m_nginx->ranges().size(), 4);

        QVERIFY(lineAbout(u"tiny"_s, m_orvane->run({u"models"_s, u"list"_s}).output).startsWith(u'✓'));
        QCOMPARE(m_orvane->run({u"models"_s, u"delete"_s, u"tiny"_s, u"gemma-2-2b"_s}).exitCode, 0);
        QCOMPARE(recognitionFiles(), QStringList());
        QVERIFY(!QFile::exists(correctionFile()));
    }

    void refusesInOneSentence_data()
    {
        const Rows<QStringList, QString> row("arguments", "complaint");

        const auto fromServer = [](const QString &folder, const QStringList &ids) {
            return QStringList{u"download"_s} + ids + QStringList{u"--repository"_s, u"SERVER"_s + folder};
        };
        row("a page instead of a model", fromServer(u"/pages"_s, {u"tiny"_s}),
            u"tiny: Скачанный файл не является корректной моделью"_s);
        row("another kind of model", fromServer({}, {u"gemma-2-2b"_s}), u"не является корректной моделью"_s);
        row("not on the server", fromServer({}, {u"small"_s}), u"Сервер вернул код 404 "_s);
        row("unknown model", fromServer({}, {u"tiny"_s, u"huge"_s}), u"Нет такой модели: huge"_s);
        row("nothing answers", {u"download"_s, u"tiny"_s, u"--repository"_s, u"http://127.0.0.1:1"_s},
            u"Не удалось соединиться"_s);
        row("no web address", {u"download"_s, u"tiny"_s, u"--repository"_s, u"models.example"_s},
            u"models.example"_s);
        row("path of an unknown model", {u"path"_s, u"huge"_s}, u"Нет такой модели: huge"_s);
        row("deletion of what is not there", {u"delete"_s, u"base"_s, u"small"_s},
            u"Эта модель не скачана: small"_s);
    }

    void refusesInOneSentence()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        m_nginx->put(recognitionPath + u"ggml-tiny.bin"_s, content("lmgg", mebibyte));
        m_nginx->put(u"/pages"_s + recognitionPath + u"ggml-tiny.bin"_s, content("<htm", mebibyte));
        m_nginx->put(correctionPath, content("lmgg", mebibyte));
        put(recognitionFile(u"base"_s), {});
        arguments.replaceInStrings(u"SERVER"_s, m_nginx->url().toString());

        const auto result = m_orvane->run(QStringList{u"models"_s} + arguments);

        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, QByteArray());
        const QString words = QString::fromUtf8(result.complaints);
        QVERIFY2(words.contains(complaint), result.complaints.constData());
        QCOMPARE(words.count(u'\n'), 1);
        QCOMPARE(recognitionFiles(), QStringList{u"ggml-base.bin"_s});
        QCOMPARE(filesIn(QFileInfo(correctionFile()).path()), QStringList());
    }

    void goesOnWithTheOtherModelsAfterAFailure()
    {
        m_nginx->put(correctionPath, content("GGUF", mebibyte));
        const auto result = download({u"small"_s, u"gemma-2-2b"_s});
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.complaints.contains("small: "), result.complaints.constData());
        QCOMPARE(QString::fromUtf8(result.output), correctionFile() + u'\n');
    }

    void saysThatTheBuildHasNoRepository()
    {
        if (*ORVANE_MODEL_REPOSITORY != '\0')
            QSKIP("this build has a repository of models");
        const auto result = m_orvane->run({u"models"_s, u"download"_s, u"tiny"_s});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(QString::fromUtf8(result.complaints),
                 u"Не удалось скачать tiny: Адрес хранилища моделей не задан: укажите его в настройках или в "
                 u"команде.\n"_s);
        QCOMPARE(recognitionFiles(), QStringList());
    }

    void goesOnAfterAnInterruption_data()
    {
        const Rows<int, int> row("signal", "exitCode");

        row("ctrl-c", SIGINT, 128 + SIGINT);
        row("terminate", SIGTERM, 128 + SIGTERM);
        row("kill", SIGKILL, -1);
    }

    void goesOnAfterAnInterruption()
    {
        QFETCH(int, signal);
        QFETCH(int, exitCode);
        m_nginx->put(recognitionPath + u"ggml-large-v3.bin"_s, largeModel());

        const auto program = m_orvane->start(downloadCommand({u"large-v3"_s}, u"/slow"_s));
        // The record is written at the start, and about every second of progress after that.
        QTRY_VERIFY_WITH_TIMEOUT(recorded() >= mebibyte, 60'000);
        ::kill(pid_t(program->processId()), signal);
        QVERIFY(program->waitForFinished(60'000));
        if (exitCode < 0)
            QCOMPARE(program->exitStatus(), QProcess::CrashExit);
        else
            QCOMPARE(program->exitCode(), exitCode);
        QCOMPARE(program->readAllStandardOutput(), QByteArray());
        QCOMPARE(program->readAllStandardError(), QByteArray());
        QCOMPARE(recognitionFiles(),
                 (QStringList{u"ggml-large-v3.bin.part"_s, u"ggml-large-v3.bin.part.meta"_s}));
        const qint64 kept = recorded();
        if (exitCode >= 0)
            QCOMPARE(kept, QFileInfo(part()).size()); // nothing that had arrived is forgotten
        QTRY_COMPARE_WITH_TIMEOUT(m_nginx->ranges().size(), 2, 60'000);

        const auto result = download({u"large-v3"_s});

        QCOMPARE(result.complaints, QByteArray());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(test::contentOf(recognitionFile(u"large-v3"_s)) == largeModel());
        QCOMPARE(recognitionFiles(), QStringList{u"ggml-large-v3.bin"_s});
        QTRY_COMPARE_WITH_TIMEOUT(m_nginx->ranges().size(), 4, 60'000);
        QCOMPARE(QString::fromLatin1(m_nginx->ranges().last()),
                 u"bytes=%1-%2"_s.arg(kept).arg(largeModel().size() - 1));
    }

    void leavesTheFileToWhoBeganIt()
    {
        m_nginx->put(recognitionPath + u"ggml-large-v3.bin"_s, largeModel());
        const auto first = m_orvane->start(downloadCommand({u"large-v3"_s}, u"/slow"_s));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(part()).size() > 0, 60'000);

        const auto second = download({u"large-v3"_s});
        QCOMPARE(second.exitCode, 1);
        QCOMPARE(second.output, QByteArray());
        QVERIFY2(second.complaints.contains("уже скачивается"), second.complaints.constData());
        QCOMPARE(second.complaints.count('\n'), 1);

        const qint64 size = QFileInfo(part()).size();
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(part()).size() > size, 60'000);
        QCOMPARE(first->state(), QProcess::Running);
        const QStringList deletion = {u"models"_s, u"delete"_s, u"large-v3"_s};
        QCOMPARE(m_orvane->run(deletion).exitCode, 1);
        QVERIFY(QFile::exists(part()));

        first->terminate();
        QVERIFY(first->waitForFinished(60'000));
        QCOMPARE(m_orvane->run(deletion).exitCode, 0);
        QCOMPARE(recognitionFiles(), QStringList());
    }

    void showsWhereModelsLie()
    {
        const auto folders = m_orvane->run({u"models"_s, u"path"_s});
        QCOMPARE(folders.exitCode, 0);
        QCOMPARE(QString::fromUtf8(folders.output),
                 u"%1/Models\n%1/CorrectionModels\n"_s.arg(m_orvane->dataFolder()));
        const auto files = m_orvane->run({u"models"_s, u"path"_s, u"gemma-2-2b"_s, u"tiny"_s});
        QCOMPARE(QString::fromUtf8(files.output),
                 correctionFile() + u'\n' + recognitionFile(u"tiny"_s) + u'\n');
    }

private:
    [[nodiscard]] QString recognitionFile(const QString &id) const
    {
        return m_orvane->dataFolder() + u"/Models/ggml-%1.bin"_s.arg(id);
    }
    [[nodiscard]] QString correctionFile() const
    {
        return m_orvane->dataFolder() + u"/CorrectionModels/"_s + QFileInfo(correctionPath).fileName();
    }
    [[nodiscard]] QString part() const { return recognitionFile(u"large-v3"_s) + u".part"_s; }
    [[nodiscard]] QStringList recognitionFiles() const
    {
        return filesIn(m_orvane->dataFolder() + u"/Models"_s);
    }

    /// Bytes of the large model that the record beside its partial file counts.
    [[nodiscard]] qint64 recorded() const
    {
        const QJsonArray written =
            QJsonDocument::fromJson(test::contentOf(part() + u".meta"_s)).object()[u"written"_s].toArray();
        return std::accumulate(written.begin(), written.end(), qint64(0),
                               [](qint64 sum, const QJsonValue &one) { return sum + one.toInteger(); });
    }

    [[nodiscard]] QStringList downloadCommand(const QStringList &ids, const QString &folder = {}) const
    {
        return QStringList{u"models"_s, u"download"_s} + ids +
               QStringList{u"--repository"_s, m_nginx->url(folder).toString()};
    }
    [[nodiscard]] OrvaneProgram::Result download(const QStringList &ids) const
    {
        return m_orvane->run(downloadCommand(ids));
    }

    std::unique_ptr<OrvaneProgram> m_orvane;
    std::unique_ptr<Nginx> m_nginx;
};

QTEST_GUILESS_MAIN(ModelsTest)
#include "tst_models.moc"
