#include "tests/support/Rows.h"

#include "update/UpdateFileName.h"

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestUpdateFileName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data()
    {
        const Rows<QByteArray, QString, QString> row("header", "url", "name");
        const QString url = u"https://h/x/of%20url.deb?c=/d"_s;
        row("token", "attachment; FileName = a.deb ", url, u"a.deb"_s);
        row("quoted", "attachment; filename=\"Орвейн b.deb\"; size=1", url, u"Орвейн b.deb"_s);
        row("no name", "attachment; filename=", url, u"of url.deb"_s);
        row("no header", "", url, u"of url.deb"_s);
        row("nothing", "", u"https://h/%2E%2E"_s, u"Orvane-2.0.deb"_s);
        row("parents", "attachment; filename=\"../../.bashrc\"", url, u"bashrc"_s);
        row("backslashes", "attachment; filename=\"..\\..\\x.exe\"", url, u"x.exe"_s);
        row("turned around", "attachment; filename=\"a\xE2\x80\xAE\nbed.exe\"", url, u"abed.exe"_s);
        row("long", "attachment; filename=" + QByteArray(1000, 'a') + ".deb", url,
            QString(76, u'a') + u".deb"_s);
    }

    void names()
    {
        QFETCH(const QByteArray, header);
        QFETCH(const QString, url);
        QTEST(updateFileName(header, QUrl(url), u"2.0"_s), "name");
    }
};

QTEST_GUILESS_MAIN(TestUpdateFileName)
#include "tst_updatefilename.moc"
