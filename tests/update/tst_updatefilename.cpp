#include "update/UpdateFileName.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestUpdateFileName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void suggested_data();
    void suggested();
    void longNames_data();
    void longNames();
    void hostileNamesStayInTheirFolder();
};

void TestUpdateFileName::suggested_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");

    const auto row = [](const char *name, const QByteArray &header, const QString &url,
                        const QString &expected) { QTest::newRow(name) << header << url << expected; };
    const QString url = u"https://h/x/of-url.deb"_s;
    const QString ofUrl = u"of-url.deb"_s;
    const QString ofVersion = u"Orvane-2.0.deb"_s;

    row("token", "attachment; filename=a.deb", url, u"a.deb"_s);
    row("quoted", "attachment; filename=\"a b; c=\\\"d\\\".deb\"", url, u"a b; c=\"d\".deb"_s);
    row("any case and blanks", "Attachment ;  FileName = a.deb ", url, u"a.deb"_s);
    row("after others", "attachment; size=\"1;2\"; creation-date=x; filename=a.deb", url, u"a.deb"_s);
    row("encoded", "attachment; filename*=UTF-8''%D0%9E%20a.deb", url, u"О a.deb"_s);
    row("encoded goes first", "attachment; filename=b.deb; filename*=utf-8'ru'a.deb; x=y", url, u"a.deb"_s);
    row("encoded badly", "attachment; filename*=a.deb; filename=b.deb", url, u"b.deb"_s);
    row("raw UTF-8", "attachment; filename=\"Орвейн.deb\"", url, u"Орвейн.deb"_s);
    row("raw Latin-1", "attachment; filename=\"\xE9.deb\"", url, u"é.deb"_s);
    row("unfinished quotes", "attachment; filename=\"a.deb", url, u"a.deb"_s);
    row("backslash at the end", "attachment; filename=\"a.deb\\", url, ofUrl);
    row("no name", "attachment", url, ofUrl);
    row("empty name", "attachment; filename=\"\"", url, ofUrl);
    row("no value", "attachment; filename=", url, ofUrl);
    row("only semicolons", ";;;=;;", url, ofUrl);
    row("no header", "", url, ofUrl);

    row("parents", "attachment; filename=\"../../x\"", url, u"x"_s);
    row("encoded parents", "attachment; filename*=UTF-8''..%2F..%2Fx", url, u"x"_s);
    row("absolute", "attachment; filename=\"/etc/passwd\"", url, u"passwd"_s);
    row("backslashes", "attachment; filename=\"..\\\\..\\\\x.exe\"", url, u"x.exe"_s);
    row("only dots", "attachment; filename=\"..\"", url, ofUrl);
    row("ends with a slash", "attachment; filename=\"a/\"", url, ofUrl);
    row("hidden", "attachment; filename=\" ..bashrc \"", url, u"bashrc"_s);
    row("NUL", "attachment; filename*=UTF-8''a%00.deb", url, u"a.deb"_s);
    row("line ends", "attachment; filename*=UTF-8''a%0A%0D%E2%80%A8b.deb", url, u"ab.deb"_s);
    row("turned around", "attachment; filename*=UTF-8''a%E2%80%AEbed.exe", url, u"abed.exe"_s);

    row("address with escapes", "", u"https://h/x/a%20b.deb?c=/d#/e"_s, u"a b.deb"_s);
    row("address with an escaped slash", "", u"https://h/x/..%2F..%2Fa"_s, u"a"_s);
    row("address without a name", "", u"https://h/x/"_s, ofVersion);
    row("address of parents", "", u"https://h/%2E%2E"_s, ofVersion);
    row("address without a path", "", u"https://h"_s, ofVersion);
}

void TestUpdateFileName::suggested()
{
    QFETCH(const QByteArray, header);
    QFETCH(const QString, url);
    QTEST(UpdateFileName::suggested(header, QUrl(url), u"2.0"_s), "name");
}

void TestUpdateFileName::longNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("end");
    QTest::newRow("suffix kept") << QString(100'000, u'a') + u".tar.deb"_s << u".deb"_s;
    QTest::newRow("two bytes each") << QString(500, u'Ы') + u".deb"_s << u".deb"_s;
    QTest::newRow("four bytes each") << u"😀"_s.repeated(300) + u".deb"_s << u"😀.deb"_s;
    QTest::newRow("suffix of its own length") << u"a."_s + QString(5'000, u'b') << u"b"_s;
    QTest::newRow("no suffix") << QString(5'000, u'c') << u"c"_s;
}

void TestUpdateFileName::longNames()
{
    QFETCH(const QString, name);
    QFETCH(const QString, end);
    const QString safe = UpdateFileName::safe(name);
    QVERIFY2(safe.endsWith(end), qUtf8Printable(safe));
    QCOMPARE_GT(safe.toUtf8().size(), 190);
    QCOMPARE_LE(safe.toUtf8().size(), 200);
    QVERIFY(safe.isValidUtf16());
}

void TestUpdateFileName::hostileNamesStayInTheirFolder()
{
    const QStringList pieces = {u"/"_s,      u"\\"_s, u".."_s, u"."_s,      u" "_s,
                                u"\u0000"_s, u"\n"_s, u"a"_s,  u"\u200E"_s, QString(QChar(0xD800))};
    for (int number = 0; number < 10'000; ++number) {
        QString name;
        for (int rest = number, count = 0; count < 4; ++count, rest /= 10)
            name += pieces[rest % 10];
        const QString safe = UpdateFileName::safe(name);
        QVERIFY2(!safe.contains(u'/') && !safe.contains(QChar(0)) && !safe.startsWith(u'.'),
                 qUtf8Printable(name));
        QCOMPARE(safe.toUtf8().contains('\n'), false);
        const QString suggested = UpdateFileName::suggested({}, QUrl(), name);
        QVERIFY2(!suggested.isEmpty() && !suggested.contains(u'/'), qUtf8Printable(name));
    }
}

QTEST_GUILESS_MAIN(TestUpdateFileName)
#include "tst_updatefilename.moc"
