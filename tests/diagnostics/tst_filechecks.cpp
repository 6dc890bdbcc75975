#include "diagnostics/FileChecks.h"
#include "tests/support/Files.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

using State = CheckResult::State;

class TestFileChecks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    void models_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("isGood");
        const QByteArray whole = "lmgg" + QByteArray(2'000'000, 'x');
        QTest::newRow("whole") << whole << true;
        QTest::newRow("of another kind") << "GGUF" + whole << false;
        QTest::newRow("beginning of a copy") << whole.first(1000) << false;
        QTest::newRow("empty") << QByteArray() << false;
    }

    void models()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const bool, isGood);
        const QString good = path(u"good.bin"_s);
        const QString other = path(u"other.bin"_s);
        test::put(good, "lmgg" + QByteArray(2'000'000, 'x'));
        test::put(other, content);

        const CheckResult result = FileChecks::models({{.name = u"Base"_s, .path = good, .magic = "lmgg"},
                                                       {.name = u"Small"_s, .path = other, .magic = "lmgg"}});

        QCOMPARE(result.state, isGood ? State::Good : State::Bad);
        QCOMPARE(result.text.contains(u"Small"_s), !isGood);
        QVERIFY(!result.text.contains(u"Base"_s));
    }

    void noModelIsNoFault() { QCOMPARE(FileChecks::models({}).state, State::Unknown); }

    void folders_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("isPrivate");
        QTest::addColumn<State>("state");
        QTest::addColumn<QString>("advice");
        QTest::newRow("there") << u"open"_s << false << State::Good << u""_s;
        QTest::newRow("to be made") << u"open/a/b"_s << true << State::Good << u""_s;
        QTest::newRow("others look in") << u"open"_s << true << State::Bad << u"chmod 700"_s;
        QTest::newRow("a file is there") << u"file"_s << false << State::Bad << u"удалите"_s;
        QTest::newRow("below a file") << u"file/a"_s << false << State::Bad << u"удалите"_s;
        QTest::newRow("nobody can write") << u"/proc/a"_s << false << State::Bad << u"/proc"_s;
    }

    void folders()
    {
        QFETCH(const QString, folder);
        QFETCH(const bool, isPrivate);
        QFETCH(const State, state);
        QFETCH(const QString, advice);
        QVERIFY(QDir().mkdir(path(u"open"_s)));
        QVERIFY(QFile::setPermissions(path(u"open"_s), QFile::ReadOwner | QFile::WriteOwner |
                                                           QFile::ExeOwner | QFile::ReadOther));
        test::put(path(u"file"_s), "x");

        const QString checked = folder.startsWith(u'/') ? folder : path(folder);
        const CheckResult result = FileChecks::folders({{.path = checked, .isPrivate = isPrivate}});

        QCOMPARE(result.state, state);
        QVERIFY2(result.text.contains(advice), qPrintable(result.text));
        QCOMPARE(QDir(path(u"open"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList());
    }

    void disk()
    {
        QCOMPARE(FileChecks::disk(path(u"not/there/yet"_s)), FileChecks::disk(m_home->path()));
        QCOMPARE(FileChecks::disk(u"/proc/a"_s).state, State::Bad); // has no room for anything
    }

private:
    [[nodiscard]] QString path(const QString &name) const { return m_home->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_home;
};

QTEST_GUILESS_MAIN(TestFileChecks)
#include "tst_filechecks.moc"
