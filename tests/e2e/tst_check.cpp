#include "tests/e2e/Surroundings.h"
#include "tests/support/Files.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

/// Whether the program finds out what works here and what does not, with the real engine.
class CheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsEverythingWorking()
    {
        OrvaneProgram orvane;
        orvane.install(u"base"_s);
        constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
        QVERIFY(
            QFile::setPermissions(orvane.dataFolder() + u"/History"_s, ownerOnly)); // as the program makes it
        test::Surroundings surroundings(orvane);
        const auto speech =
            surroundings.sound().startSpeaking(test::Surroundings::microphone, fixture(u"russian.wav"_s));
        const auto result = orvane.run({u"check"_s, u"--json"_s});
        const QMap<QString, QString> states = statesIn(result.output);
        for (const QString &id : {u"speech-engine"_s, u"models"_s, u"microphone"_s, u"disk"_s, u"folders"_s})
            QVERIFY2(states.value(id) == "good"_L1, result.output.constData());
        for (const QString &id : {u"language-engine"_s, u"keys"_s, u"paste"_s}) // no model, no screen
            QVERIFY2(states.value(id) == "unknown"_L1, result.output.constData());
        QCOMPARE(result.complaints, QByteArray());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(QJsonDocument::fromJson(result.output).object().value(u"good"_s), true);
    }

    void findsFaults_data()
    {
        QTest::addColumn<QString>("bad");
        QTest::newRow("broken model") << u"models"_s;
        QTest::newRow("no engine") << u"speech-engine"_s;
        QTest::newRow("unwritable folder") << u"folders"_s;
    }

    void findsFaults()
    {
        QFETCH(const QString, bad);
        OrvaneProgram orvane;
        if (bad == "models"_L1) {
            test::put(orvane.dataFolder() + u"/Models/ggml-base.bin"_s, "lmgg");
        } else if (bad == "speech-engine"_L1) {
            orvane.install(u"base"_s);
            orvane.placeEngine(u"nothing"_s, u"/bin/true"_s); // from a home without one
            orvane.setEnvironment(u"PATH"_s, orvane.path(u"bin"_s));
        } else {
            QDir(orvane.dataFolder() + u"/History"_s).removeRecursively();
            test::put(orvane.dataFolder() + u"/History"_s, "a file");
        }
        const auto result = orvane.run({u"check"_s, u"--json"_s});
        QVERIFY2(statesIn(result.output).value(bad) == "bad"_L1, result.output.constData());
        QCOMPARE(result.exitCode, 1);
        QVERIFY(orvane.run({u"check"_s}).output.contains("✗"));
    }

private:
    [[nodiscard]] static QMap<QString, QString> statesIn(const QByteArray &json)
    {
        QMap<QString, QString> states;
        for (const QJsonValue &check : QJsonDocument::fromJson(json).object().value(u"checks"_s).toArray())
            states.insert(check[u"id"_s].toString(), check[u"state"_s].toString());
        return states;
    }
};

QTEST_GUILESS_MAIN(CheckTest)
#include "tst_check.moc"
