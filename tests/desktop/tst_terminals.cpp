#include "desktop/Terminals.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestTerminals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const auto install = [this](const QString &name, const QByteArray &categories) {
            put(m_data.filePath(u"applications/"_s + name + u".desktop"_s),
                "[Desktop Entry]\nName=Some\nExec=/usr/bin/" + name.toUtf8() + "-bin %U\nStartupWMClass=" +
                    name.toUtf8() + "Class\n" + categories + "[Desktop Action New]\nExec=other\n");
        };
        install(u"org.example.Shellter"_s, "Categories=System;TerminalEmulator;\n");
        install(u"org.example.Notes"_s, "Categories=Utility;\n");
        qputenv("XDG_DATA_HOME", m_data.path().toLocal8Bit());
    }

    void areRecognised_data()
    {
        const Rows<QByteArray, bool> rows("windowClass", "isTerminal");
        const auto row = [&rows](const char *name, const QByteArray &first, const QByteArray &second,
                                 bool isTerminal) { rows(name, first + '\0' + second + '\0', isTerminal); };
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

    void areRecognised()
    {
        QFETCH(const QByteArray, windowClass);
        QTEST(Terminals::include(windowClass, {u"Dev.Warp.warp"_s}), "isTerminal");
    }

private:
    QTemporaryDir m_data;
};

QTEST_GUILESS_MAIN(TestTerminals)
#include "tst_terminals.moc"
