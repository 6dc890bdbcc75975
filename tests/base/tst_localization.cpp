#include "SourceTexts.h"
#include "TextList.h"

#include "base/localization/Localization.h"
#include "base/localization/LocalizationTable.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

const QString sourceFolder = QStringLiteral(ORVANE_SOURCE_DIR);
const QString testFolder = QStringLiteral(ORVANE_TEST_DIR);

bool hasCyrillic(const QString &text)
{
    return std::ranges::any_of(text, [](QChar c) { return c.script() == QChar::Script_Cyrillic; });
}

// The program's own sources; build folders, tests and the table itself are not.
QStringList sources()
{
    static const QStringList kinds = {u"*.cpp"_s, u"*.h"_s, u"*.h.in"_s, u"*.mm"_s, u"*.qml"_s, u"*.js"_s};
    QStringList files;
    const QDir root(sourceFolder);
    for (const QString &folder : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (folder == u"tests"_s || QFile::exists(root.filePath(folder + u"/CMakeCache.txt"_s)))
            continue;
        QDirIterator entries(root.filePath(folder), kinds, QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext())
            files << entries.next();
    }
    files.removeIf([](const QString &file) { return file.endsWith(u"/LocalizationTable.cpp"_s); });
    files.sort();
    return files;
}

QList<SourceText> textsOf(const QString &file)
{
    QFile source(file);
    if (!source.open(QFile::ReadOnly))
        return {};
    const bool qml = file.endsWith(u".qml"_s) || file.endsWith(u".js"_s);
    return stringLiterals(QString::fromUtf8(source.readAll()),
                          qml ? SourceLanguage::Qml : SourceLanguage::Cpp);
}

QString quoted(const QString &text)
{
    QString shown = text;
    shown.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s).replace(u'\n', u"\\n"_s);
    return u'"' + shown + u'"';
}

QStringList placeholders(QStringView text)
{
    static const QRegularExpression placeholder(u"%(\\d+|n|L\\d+)"_s);
    QStringList found;
    for (const QRegularExpressionMatch &match : placeholder.globalMatch(text.toString()))
        found << match.captured();
    found.sort();
    return found;
}

QStringView leadingBlanks(QStringView text)
{
    const auto end = std::ranges::find_if_not(text, [](QChar c) { return c.isSpace(); });
    return text.first(end - text.begin());
}

QStringView trailingBlanks(QStringView text)
{
    qsizetype count = 0;
    while (count < text.size() && text[text.size() - 1 - count].isSpace())
        ++count;
    return text.last(count);
}

// Says what is wrong in full, which the message of a failed comparison would cut off.
bool none(const QStringList &texts, const char *what)
{
    if (!texts.isEmpty())
        qWarning("%s", what);
    for (const QString &text : texts)
        qWarning("  %s", qUtf8Printable(text));
    return texts.isEmpty();
}

} // namespace

class TestLocalization : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Localization::setLanguage(u"ru"_s); }

    void everyTextHasItsTwin();
    void twinsFitWhereTheTextStands();
    void shows_data();
    void shows();
    void readOnAnyThread();

    void literals_data();
    void literals();
    void lists_data();
    void lists();
};

void TestLocalization::everyTextHasItsTwin()
{
    TextList russianOnly(testFolder + u"/texts_that_stay_russian.txt"_s);
    TextList awaited(testFolder + u"/texts_awaiting_their_code.txt"_s);
    QVERIFY(none(russianOnly.faults(), "texts_that_stay_russian.txt:"));
    QVERIFY(none(awaited.faults(), "texts_awaiting_their_code.txt:"));

    const QStringList files = sources();
    QVERIFY(files.size() > 10);
    QStringList missing;
    QSet<QString> used;
    for (const QString &file : files) {
        for (const SourceText &found : textsOf(file)) {
            used.insert(found.text);
            if (hasCyrillic(found.text) && !Localization::en().contains(found.text) &&
                !russianOnly.covers(found.text))
                missing << u"%1:%2: %3"_s.arg(file.sliced(sourceFolder.size() + 1))
                               .arg(found.line)
                               .arg(quoted(found.text));
        }
    }
    QStringList both;
    QStringList unused;
    for (const QString &text : Localization::en().keys()) {
        if (russianOnly.covers(text))
            both << quoted(text);
        if (!used.contains(text) && !awaited.covers(text))
            unused << quoted(text);
    }
    QStringList unusedRussian;
    for (const QString &text : russianOnly.unused()) {
        if (!awaited.covers(text))
            unusedRussian << quoted(text);
    }
    int faults = 0;
    faults += !none(missing, "No twin in LocalizationTable.cpp, and not in texts_that_stay_russian.txt:");
    faults += !none(both, "Has a twin and is in texts_that_stay_russian.txt too:");
    faults += !none(unused, "Has a twin in LocalizationTable.cpp, but no source uses it:");
    faults += !none(unusedRussian, "In texts_that_stay_russian.txt, but no source uses it:");
    faults += !none(awaited.unused(), "Take out of texts_awaiting_their_code.txt, its code has come:");
    QCOMPARE(faults, 0);
}

void TestLocalization::twinsFitWhereTheTextStands()
{
    QSet<QString> seen;
    for (const Localization::TextPair &pair : Localization::table()) {
        const QString text = pair.russian.toString();
        QVERIFY2(!seen.contains(text), qUtf8Printable(u"stands twice: "_s + quoted(text)));
        seen.insert(text);
        QVERIFY2(!pair.english.trimmed().isEmpty() && !hasCyrillic(pair.english.toString()),
                 qUtf8Printable(quoted(text)));
        QVERIFY2(placeholders(pair.russian) == placeholders(pair.english), qUtf8Printable(quoted(text)));
        QVERIFY2(leadingBlanks(pair.russian) == leadingBlanks(pair.english), qUtf8Printable(quoted(text)));
        QVERIFY2(trailingBlanks(pair.russian) == trailingBlanks(pair.english), qUtf8Printable(quoted(text)));
    }
}

void TestLocalization::shows_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("Russian") << u"ru"_s << u"Автоопределение"_s << u"Автоопределение"_s;
    QTest::newRow("English") << u"en"_s << u"Автоопределение"_s << u"Auto-detect"_s;
    QTest::newRow("no twin") << u"en"_s << u"Нет такого текста"_s << u"Нет такого текста"_s;
    QTest::newRow("other case") << u"EN"_s << u"Автоопределение"_s << u"Автоопределение"_s;
    QTest::newRow("with region") << u"en_US"_s << u"Автоопределение"_s << u"Автоопределение"_s;
    QTest::newRow("empty") << u"en"_s << QString() << QString();
}

void TestLocalization::shows()
{
    QFETCH(const QString, language);
    QFETCH(const QString, text);
    Localization::setLanguage(language);
    QTEST(Localization::text(text), "shown");
}

void TestLocalization::readOnAnyThread()
{
    std::atomic<int> strange = 0;
    std::vector<std::jthread> readers;
    for (int count = 0; count < 3; ++count)
        readers.emplace_back([&strange](const std::stop_token &stop) {
            while (!stop.stop_requested()) {
                const QString shown = Localization::text(u"Автоопределение"_s);
                strange += shown != u"Автоопределение"_s && shown != u"Auto-detect"_s;
            }
        });
    for (int count = 0; count < 2000; ++count)
        Localization::setLanguage(count % 2 ? u"en"_s : u"ru"_s);
    readers.clear();
    QCOMPARE(strange, 0);
}

void TestLocalization::literals_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("qml");
    QTest::addColumn<QStringList>("texts");

    const auto cpp = [](const char *name, const QString &source, const QStringList &texts) {
        QTest::newRow(name) << source << false << texts;
    };
    const auto qml = [](const char *name, const QString &source, const QStringList &texts) {
        QTest::newRow(name) << source << true << texts;
    };
    cpp("plain and prefixed", uR"(f("а", u"б"_s, u8"в", L"г", U"д", QStringLiteral("е"));)"_s,
        {u"а"_s, u"б"_s, u"в"_s, u"г"_s, u"д"_s, u"е"_s});
    cpp("adjacent", u"u\"а \"_s /* и */ // и\n  u\"б\"_s \"в\";"_s, {u"а бв"_s});
    cpp("not adjacent", uR"(u"а" + u"б", "в" NAME "г")"_s, {u"а"_s, u"б"_s, u"в"_s, u"г"_s});
    cpp("comments", u"// \"а\"\n/* \"б\"\n \"в\" */ \"г\" // it's"_s, {u"г"_s});
    cpp("escapes", uR"("\"а\"\n\t\\ \u0431 \x41 \U0001F600")"_s, {u"\"а\"\n\t\\ б A 😀"_s});
    cpp("raw", u"uR\"x(а\"\\n)\"б)x\"_s R\"(\nв)\""_s, {u"а\"\\n)\"б\nв"_s});
    cpp("characters", uR"(f('"', u'"', '\'', 1'000, 0xff'ff, "а", '\\'))"_s, {u"а"_s});
    cpp("slashes inside", uR"("http://а", "/*", "б", "*/")"_s, {u"http://а"_s, u"/*"_s, u"б"_s, u"*/"_s});
    cpp("unfinished", u"\"а\n\"б"_s, {u"аб"_s});
    qml("both quotes", u"text: cond ? \"а'\" : 'б\"' + 'в'"_s, {u"а'"_s, u"б\""_s, u"в"_s});
    qml("template", u"`а ${f(\"б\", {x: 'в'})} г`"_s, {u"а "_s, u"б"_s, u"в"_s, u" г"_s});
    qml("comments", u"// 'а'\n/* `б` */ 'в'"_s, {u"в"_s});
}

void TestLocalization::literals()
{
    QFETCH(const QString, source);
    QFETCH(const bool, qml);
    QStringList texts;
    for (const SourceText &found : stringLiterals(source, qml ? SourceLanguage::Qml : SourceLanguage::Cpp))
        texts << found.text;
    QTEST(texts, "texts");
}

void TestLocalization::lists_data()
{
    QTest::addColumn<QString>("content");
    QTest::addColumn<int>("faults");
    QTest::addColumn<bool>("coversText");
    QTest::newRow("text") << u"# why\n\"Спикер \"\n"_s << 0 << true;
    QTest::newRow("beginning") << u"# why\n\"Спи\"…\n"_s << 0 << true;
    QTest::newRow("no beginning") << u"# why\n\"Спи\"\n"_s << 0 << false;
    QTest::newRow("blank missing") << u"# why\n\"Спикер\"\n"_s << 0 << false;
    QTest::newRow("no reason") << u"\"Спикер \"\n"_s << 1 << false;
    QTest::newRow("no quotes") << u"# why\nСпикер\n"_s << 1 << false;
    QTest::newRow("twice") << u"# why\n\"Спикер \"\n# why else\n\"Спикер \""_s << 1 << true;
}

void TestLocalization::lists()
{
    QFETCH(const QString, content);
    QTemporaryFile list;
    QVERIFY(list.open());
    list.write(content.toUtf8());
    list.close();

    TextList texts(list.fileName());
    QTEST(int(texts.faults().size()), "faults");
    QTEST(texts.covers(u"Спикер "_s), "coversText");
}

QTEST_GUILESS_MAIN(TestLocalization)
#include "tst_localization.moc"
