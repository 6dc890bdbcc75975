#include "desktop/Terminals.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestTerminals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void areRecognised_data();
    void areRecognised();

private:
    QTemporaryDir m_data;
};

void TestTerminals::initTestCase()
{
    const QDir data(m_data.path());
    QVERIFY(data.mkpath(u"applications"_s));
    const auto install = [&data](const QString &name, const QByteArray &categories) {
        QFile entry(data.filePath(u"applications/"_s + name + u".desktop"_s));
        QVERIFY(entry.open(QFile::WriteOnly));
        entry.write("[Desktop Entry]\nName=Some\nExec=/usr/bin/" + name.toUtf8() +
                    "-bin %U\nStartupWMClass=" + name.toUtf8() + "Class\n" + categories +
                    "[Desktop Action New]\nExec=other\n");
    };
    install(u"org.example.Shellter"_s, "Categories=System;TerminalEmulator;\n");
    install(u"org.example.Notes"_s, "Categories=Utility;\n");
    qputenv("XDG_DATA_HOME", m_data.path().toLocal8Bit());
}

void TestTerminals::areRecognised_data()
{
    QTest::addColumn<QByteArray>("windowClass");
    QTest::addColumn<bool>("isTerminal");
    const auto row = [](const char *name, QByteArrayView first, QByteArrayView second, bool isTerminal) {
        QTest::newRow(name) << first.toByteArray() + '\0' + second.toByteArray() + '\0' << isTerminal;
    };
    row("known", "xterm", "XTerm", true);
    row("part of a name", "gnome-terminal-server", "Gnome-terminal", true);
    row("whole short name", "st", "st-256color", true);
    row("short name within another", "stellarium", "Stellarium", false);
    row("named by the user", "warp", "dev.warp.Warp", true);
    row("entry by its name", "x", "org.example.Shellter", true);
    row("entry by the class it tells", "x", "org.example.ShellterClass", true);
    row("entry by its program", "org.example.shellter-bin", "x", true);
    row("entry of another category", "x", "org.example.Notes", false);
    row("action of an entry", "other", "Other", false);
}

void TestTerminals::areRecognised()
{
    QFETCH(const QByteArray, windowClass);
    QTEST(Terminals::include(windowClass, {u"Dev.Warp.warp"_s}), "isTerminal");
}

QTEST_GUILESS_MAIN(TestTerminals)
#include "tst_terminals.moc"
