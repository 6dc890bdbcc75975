#include "app/services/AppServices.h"
#include "tests/support/FakeFileChooser.h"
#include "tests/support/FaultServer.h"
#include "tests/support/Files.h"
#include "ui/presentation/LanguageCatalogue.h"
#include "ui/presentation/Repository.h"
#include "ui/presentation/SpeechCatalogue.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr qint64 mebibyte = 1 << 20;

using Answer = FaultServer::Answer;

} // namespace

/// Both catalogues and the repository's address over the real services, a folder and a server.
class TestCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_server = std::make_unique<FaultServer>(modelContent(4 * mebibyte, "lmgg"));
        AppServices::Environment environment;
        environment.folders = {.applicationSupport = m_home->path(),
                               .resources = m_home->filePath(u"resources"_s),
                               .temporary = m_home->path()};
        environment.defaultsFile = m_home->filePath(u"settings.json"_s);
        environment.repository = {};
        m_services = std::make_unique<AppServices>(environment);
        m_services->settings().setInterfaceLanguage(u"ru"_s);
        m_catalogue = std::make_unique<SpeechCatalogue>(
            SpeechCatalogue::Collaborators{.settings = m_services->settings(),
                                           .models = m_services->models(),
                                           .engine = m_services->whisperEngine(),
                                           .chooser = m_chooser});
        m_repository = std::make_unique<Repository>(m_services->settings(), m_services->models());
    }

    void cleanup()
    {
        m_repository.reset();
        m_catalogue.reset();
        m_services.reset();
    }

    void showsWhatIsHere()
    {
        QCOMPARE(m_catalogue->count(), WhisperModel::catalog().size());
        QCOMPARE(of(u"base"_s, "state"), u"absent"_s);
        QCOMPARE(of(u"base.en"_s, "detail"),
                 u"≈ 142 МБ · ≈ 0,5 ГБ ОЗУ · только английский · быстрая, для коротких диктовок"_s);
        QCOMPARE(of(SpeechCatalogue::recommendedId(), "badge"), u"Рекомендуем"_s);

        putModel(u"ggml-small.bin"_s);
        putModel(u"ggml-base.bin"_s);
        putModel(u"ggml-medium.bin.part"_s);
        m_catalogue->look();
        QCOMPARE(of(u"base"_s, "state"), u"used"_s); // the first where none is chosen
        QCOMPARE(of(u"base"_s, "badge"), u"Используется"_s);
        QCOMPARE(of(u"small"_s, "state"), u"here"_s);
        QCOMPARE(of(u"medium"_s, "state"), u"partial"_s);

        m_catalogue->use(u"small"_s);
        QCOMPARE(of(u"small"_s, "state"), u"used"_s);
        QCOMPARE(of(u"base"_s, "state"), u"here"_s);
        m_catalogue->remove(u"small"_s);
        m_catalogue->cancel(u"medium"_s);
        QTRY_COMPARE(of(u"base"_s, "state"), u"used"_s);
        QTRY_COMPARE(of(u"medium"_s, "state"), u"absent"_s);

        m_services->settings().setInterfaceLanguage(u"en"_s);
        QCOMPARE(of(u"base"_s, "badge"), u"In use"_s);
    }

    void findsTheEngine()
    {
        QVERIFY(!m_catalogue->hasEngine() || !m_services->whisperEngine().findBinary().isEmpty());
        const QString engine = m_home->filePath(u"resources/engine"_s);
        QVERIFY(QDir().mkpath(engine));
        put(engine + u"/whisper-server"_s, "#!/bin/sh");
        QVERIFY(QFile::setPermissions(engine + u"/whisper-server"_s, QFile::ReadOwner | QFile::ExeOwner));
        m_catalogue->look();
        QVERIFY(m_catalogue->hasEngine());
        QVERIFY(m_catalogue->engineText().contains(u"найден"_s));
    }

    void downloadsFromTheRepositoryOfTheUser()
    {
        QVERIFY(m_repository->isAsked());
        QVERIFY(!m_catalogue->canDownload());
        m_repository->check(m_server->url(u"/"_s).toString());
        QVERIFY(m_repository->isChecking());
        QTRY_VERIFY(m_catalogue->canDownload());
        QCOMPARE(m_repository->error(), QString());
        QVERIFY(m_repository->isAsked()); // it can be changed

        m_server->setRule([](const FaultServer::Request &request) {
            return request.isProbe() ? Answer() : Answer{.stallAfter = 3 * mebibyte};
        });
        m_catalogue->download(u"base"_s);
        QCOMPARE(of(u"base"_s, "state"), u"loading"_s);
        QCOMPARE(of(u"base"_s, "progressText"), u"Соединяюсь…"_s);
        QTRY_VERIFY2(of(u"base"_s, "progressText").startsWith(u"3 МБ из 4 МБ"_s),
                     qPrintable(of(u"base"_s, "progressText")));
        m_catalogue->cancel(u"base"_s);
        QTRY_COMPARE(of(u"base"_s, "state"), u"absent"_s);

        m_server->setRule([](const FaultServer::Request &) { return Answer{.status = 404}; });
        m_catalogue->download(u"base"_s);
        QTRY_VERIFY(m_catalogue->error().startsWith(u"Не удалось скачать Base: "_s));
        m_server->setRule({});
        m_catalogue->download(u"base"_s);
        QTRY_COMPARE(of(u"base"_s, "state"), u"used"_s);
        QCOMPARE(m_catalogue->error(), QString());
    }

    void refusesOtherAddresses_data()
    {
        QTest::addColumn<QString>("typed"); // empty: the server's
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<QString>("error");

        QTest::newRow("a page") << QString() << Answer{.body = "<html>"} << u"По этому адресу нет моделей."_s;
        QTest::newRow("nothing of ours")
            << QString() << Answer{.status = 404}
            << u"Сервер вернул код 404 вместо файла модели (возможно, файл недоступен)."_s;
        QTest::newRow("insecure") << u"http://models.example.org"_s << Answer()
                                  << u"Адрес хранилища моделей должен начинаться с https://."_s;
        QTest::newRow("no address") << u"ftp://example.org"_s << Answer()
                                    << u"Адрес хранилища моделей должен начинаться с http:// или https://: "
                                       u"ftp://example.org"_s;
        QTest::newRow("nobody") << u"http://127.0.0.1:1"_s << Answer()
                                << u"Не удалось соединиться с сервером моделей. Повторите загрузку."_s;
    }

    void refusesOtherAddresses()
    {
        QFETCH(QString, typed);
        QFETCH(const Answer, answer);
        QFETCH(const QString, error);
        m_server->setRule([answer](const FaultServer::Request &) { return answer; });
        m_repository->check(typed.isEmpty() ? m_server->url(QString()).toString() : typed);
        QTRY_COMPARE(m_repository->error(), error);
        QCOMPARE(m_services->settings().modelRepository(), QString());
        QVERIFY(!m_catalogue->canDownload());
    }

    /// A repository need not have every model.
    void acceptsWhatHasOneModel()
    {
        m_server->setRule([](const FaultServer::Request &request) {
            return request.path.endsWith("ggml-small.bin") ? Answer() : Answer{.status = 404};
        });
        m_repository->check(u"  %1//"_s.arg(m_server->url(QString()).toString()));
        QTRY_COMPARE(m_services->settings().modelRepository(), m_server->url(QString()).toString());
        m_repository->check({});
        QCOMPARE(m_services->settings().modelRepository(), QString());
    }

    void addsWhatIsChosenOrDropped()
    {
        m_chooser.path = m_home->filePath(u"ggml-tiny.bin"_s);
        put(m_chooser.path, "lmgg");
        const QString base = m_home->filePath(u"ggml-base.bin"_s);
        put(base, "lmgg");
        const QString other = m_home->filePath(u"notes.txt"_s);
        put(other, "text");
        m_catalogue->importFile();
        m_catalogue->importFiles({QUrl::fromLocalFile(base), QUrl(u"https://example.org/ggml-small.bin"_s)});
        QTRY_COMPARE(of(u"base"_s, "state"), u"here"_s);
        QTRY_COMPARE(of(u"tiny"_s, "state"), u"used"_s);
        m_catalogue->importFiles({QUrl::fromLocalFile(other)});
        QTRY_COMPARE(m_catalogue->error(), u"Это не файл модели: notes.txt"_s);
    }

    void tellsOfTheLanguageEngines()
    {
        LanguageCatalogue catalogue({.settings = m_services->settings(),
                                     .models = m_services->correctionModels(),
                                     .corrector = m_services->corrector(),
                                     .chooser = m_chooser});
        QCOMPARE(catalogue.engineIndex(), 0);
        QVERIFY(catalogue.engineNote().endsWith(
            m_services->corrector().builtInAvailability().message)); // nothing else works either
        catalogue.setEngineIndex(7);
        QCOMPARE(catalogue.engineIndex(), 0);
        catalogue.setEngineIndex(1);
        QCOMPARE(m_services->settings().correctionEngine(), CorrectionEngine::Local);
        put(m_services->correctionModels().localPath(u"gemma-2-2b"_s), "GGUF");
        catalogue.look();
        const QVariantMap row = catalogue.rows().at(1);
        QCOMPARE(row.value(u"state"_s), u"used"_s);
        QCOMPARE(row.value(u"detail"_s),
                 u"≈ 1,6 ГБ · ≈ 3 ГБ ОЗУ · Лёгкая\nМногоязычная (Google). Русский — хорошо."_s);
    }

private:
    [[nodiscard]] QString of(const QString &id, const char *value) const
    {
        for (const QVariantMap &row : m_catalogue->rows()) {
            if (row.value(u"modelId"_s) == id)
                return row.value(QString::fromLatin1(value)).toString();
        }
        return u"no such row"_s;
    }
    void putModel(const QString &name)
    {
        const QString folder = m_services->models().directory();
        QVERIFY(QDir().mkpath(folder));
        put(folder + u'/' + name, "lmgg");
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<FaultServer> m_server;
    std::unique_ptr<AppServices> m_services;
    FakeFileChooser m_chooser;
    std::unique_ptr<SpeechCatalogue> m_catalogue;
    std::unique_ptr<Repository> m_repository;
};

QTEST_GUILESS_MAIN(TestCatalogue)
#include "tst_catalogue.moc"
