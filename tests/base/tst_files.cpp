#include "base/files/FileControl.h"
#include "base/files/FileError.h"
#include "base/files/FileLock.h"
#include "base/files/FileReplacement.h"
#include "tests/support/Files.h"

#include <QTemporaryDir>
#include <QTest>

#include <thread>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

int modeOf(const QString &path)
{
    struct stat status{};
    ::stat(QFile::encodeName(path).constData(), &status);
    return int(status.st_mode & ALLPERMS);
}

QString failureOf(const std::function<void()> &work)
{
    try {
        work();
    } catch (const FileError &error) {
        return error.description();
    }
    return {};
}

} // namespace

class TestFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacesWithTheRightsAskedFor()
    {
        const QString file = path(u"a"_s);
        replaceFile(file, "secret", FileAccess::Private);
        QCOMPARE(contentOf(file), "secret");
        QCOMPARE(modeOf(file), 0600);
        QVERIFY(::chmod(QFile::encodeName(file).constData(), 0664) == 0);
        replaceFile(file, "shared", FileAccess::Usual, Durability::Unflushed);
        QCOMPARE(contentOf(file), "shared");
        QCOMPARE(modeOf(file), 0664);
        replaceFile(file, {}, FileAccess::Private);
        QCOMPARE(contentOf(file), QByteArray());
        QCOMPARE(modeOf(file), 0600);
    }

    void followsALink()
    {
        replaceFile(path(u"target"_s), "old", FileAccess::Usual);
        QVERIFY(QFile::link(path(u"target"_s), path(u"link"_s)));
        replaceFile(path(u"link"_s), "new", FileAccess::Usual);
        QVERIFY(QFileInfo(path(u"link"_s)).isSymLink());
        QCOMPARE(contentOf(path(u"target"_s)), "new");
    }

    void writesIntoAPipe()
    {
        const QString pipe = path(u"pipe"_s);
        QVERIFY(::mkfifo(QFile::encodeName(pipe).constData(), 0600) == 0);
        QByteArray got;
        std::jthread reader([&] { got = contentOf(pipe); });
        replaceFile(pipe, "through", FileAccess::Usual);
        reader.join();
        QCOMPARE(got, "through");
        QVERIFY(!QFileInfo(pipe).isFile());
        QVERIFY(QFile::remove(pipe));
    }

    void longestName()
    {
        const QString file = path(QString(127, u'ж') + u'x'); // 255 bytes
        replaceFile(file, "whole", FileAccess::Usual);
        QCOMPARE(contentOf(file), "whole");
        QVERIFY(QFile::remove(file));
    }

    void failureLeavesWhatWasThere()
    {
        const QStringList before = names();
        QCOMPARE(failureOf([&] { replaceFile(path(u"no/folder"_s), "x", FileAccess::Usual); }),
                 u"Не удалось записать файл «folder»: файл не найден"_s);
        QCOMPARE(failureOf([] { replaceFile(u"/dev/full"_s, "x", FileAccess::Usual); }),
                 u"Не удалось записать файл «full»: на диске нет места"_s);
        QCOMPARE(failureOf([&] { replaceFile(m_folder.path(), "x", FileAccess::Usual); }),
                 u"Не удалось записать файл «%1»: это папка"_s.arg(QFileInfo(m_folder.path()).fileName()));
        QCOMPARE(names(), before);
    }

    void writersAtOnceLeaveOneWholeFile()
    {
        const QString file = path(u"contended"_s);
        {
            std::vector<std::jthread> writers;
            for (const char letter : {'a', 'b', 'c'}) {
                writers.emplace_back([&file, letter] {
                    for (int i = 0; i < 20; ++i)
                        replaceFile(file, QByteArray(100'000, letter), FileAccess::Private,
                                    Durability::Unflushed);
                });
            }
        }
        const QByteArray content = contentOf(file);
        QCOMPARE(content.size(), 100'000);
        QCOMPARE(content.count(content.front()), 100'000);
        QVERIFY(names().filter(u".tmp"_s).isEmpty());
    }

    void lockKeepsOthersOut()
    {
        const QString file = path(u"lock"_s);
        std::optional<FileLock> kept;
        {
            auto lock = FileLock::tryLock(file);
            QVERIFY(lock);
            QVERIFY(!FileLock::tryLock(file));
            kept = std::move(lock);
        }
        QVERIFY(!FileLock::tryLock(file));
        kept.reset();
        QVERIFY(FileLock::tryLock(file));
        QCOMPARE(failureOf([&] { static_cast<void>(FileLock::tryLock(path(u"no/folder"_s))); }),
                 u"Не удалось записать файл «folder»: файл не найден"_s);
        QCOMPARE(FileControl::tryLock(-1), FileControl::Locked::Failed);
    }

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] QStringList names() const { return QDir(m_folder.path()).entryList(QDir::Files); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestFiles)
#include "tst_files.moc"
