#include "history/LegacyMigration.h"

#include "settings/UserDefaults.h"
#include "tests/history/WithoutPrivileges.h"
#include "tests/support/Rows.h"

#include <QDir>
#include <QDirIterator>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <filesystem>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

// As the link holds it: QFileInfo makes it absolute.
QString linkTarget(const QString &path)
{
    return QString::fromStdString(std::filesystem::read_symlink(path.toStdString()).string());
}

} // namespace

/// A tree of files is written as its paths, in order: "Vesk/History/a" is a file, "Vesk/Models/" an empty
/// folder, "Orvane->Vesk" a link. A file holds the path that it had first.
class TestLegacyMigration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void folders_data()
    {
        const Rows<QStringList, QStringList> row("before", "after");
        row("nothing old", {u"Orvane/a"_s, u"Other/"_s}, {u"Orvane/a"_s, u"Other/"_s});
        row("old only", {u"Vesk/.hidden"_s, u"Vesk/History/a.json"_s, u"Vesk/Models/"_s},
            {u"Orvane/.hidden"_s, u"Orvane/History/a.json"_s, u"Orvane/Models/"_s});
        row("new history empty", {u"Vesk/History/old"_s, u"Orvane/History/"_s, u"Orvane/Models/m"_s},
            {u"Orvane/History/old"_s, u"Orvane/Models/m"_s});
        row("some stay",
            {u"Vesk/History/old"_s, u"Vesk/Models/m"_s, u"Vesk/pids"_s, u"Orvane/History/new"_s,
             u"Orvane/pids"_s},
            {u"Orvane/History/new"_s, u"Orvane/Models/m"_s, u"Orvane/pids"_s, u"Vesk/History/old"_s,
             u"Vesk/pids"_s});
        row("file against empty folder", {u"Vesk/x"_s, u"Orvane/x/"_s}, {u"Orvane/x"_s});
        row("old one is a link to a folder", {u"Disk/a"_s, u"Vesk->Disk"_s},
            {u"Disk/a"_s, u"Orvane->Disk"_s});
        row("old one leads to itself", {u"Vesk->Vesk"_s, u"Orvane/"_s}, {u"Orvane/"_s, u"Vesk->Vesk"_s});
        row("new one is a link to the old", {u"Vesk/a"_s, u"Vesk/b/"_s, u"Orvane->Vesk"_s},
            {u"Orvane->Vesk"_s, u"Vesk/a"_s, u"Vesk/b/"_s});
        row("links among the entries", {u"Vesk/a->../x"_s, u"Vesk/b"_s, u"Orvane/b->nowhere"_s},
            {u"Orvane/a->../x"_s, u"Orvane/b->nowhere"_s, u"Vesk/b"_s});
    }

    void folders()
    {
        QFETCH(const QStringList, before);
        QFETCH(const QStringList, after);
        plant(before);
        migrate();
        QCOMPARE(tree(), after);
        migrate();
        QCOMPARE(tree(), after);
    }

    // Another disk is a folder of the memory file system, which a link stands for.
    void ontoAnotherDisk()
    {
        const QTemporaryDir disk(u"/dev/shm/orvane-test"_s);
        if (!disk.isValid() || QStorageInfo(disk.path()) == QStorageInfo(m_folder->path()))
            QSKIP("there is one file system only");
        plant({u"Vesk/History/a"_s, u"Vesk/pids"_s, u"Orvane->"_s + disk.path()});
        QVERIFY(QDir(disk.path()).mkpath(u"History"_s));
        migrate();
        QFile moved(disk.filePath(u"History/a"_s));
        QVERIFY(moved.open(QFile::ReadOnly));
        QCOMPARE(moved.readAll(), "Vesk/History/a");
        QCOMPARE(QDir(disk.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 2);
        QCOMPARE(tree(), QStringList(u"Orvane->"_s + disk.path()));
    }

    void withoutPermission_data()
    {
        const Rows<QString, QFileDevice::Permissions> row("closed", "permissions");
        const QFileDevice::Permissions readOnly = QFileDevice::ReadOwner | QFileDevice::ExeOwner;
        row("old one read-only", u"Vesk"_s, readOnly);
        row("new one read-only", u"Orvane"_s, readOnly);
    }

    void withoutPermission()
    {
        QFETCH(const QString, closed);
        QFETCH(const QFileDevice::Permissions, permissions);
        const QStringList before = {u"Orvane/b"_s, u"Vesk/a"_s, u"Vesk/c/d"_s};
        plant(before);
        QVERIFY(QFile::setPermissions(m_folder->filePath(closed), permissions));
        {
            const WithoutPrivileges asUser;
            migrate();
        }
        QVERIFY(QFile::setPermissions(m_folder->filePath(closed), QFileDevice::Permissions(0x7000)));
        QCOMPARE(tree(), before);
    }

    void defaults_data()
    {
        const Rows<QVariant, QVariant, QVariant> row("oldValue", "newValue", "expected");
        row("old only", QVariant(u"1.2"_s), QVariant(), QVariant(u"1.2"_s));
        row("both", QVariant(u"1.2"_s), QVariant(u"2.0"_s), QVariant(u"2.0"_s));
    }

    void defaults()
    {
        QFETCH(const QVariant, oldValue);
        QFETCH(const QVariant, newValue);
        const QString oldKey = u"vesk.update.notifiedVersion"_s;
        const QString newKey = u"orvane.update.notifiedVersion"_s;
        UserDefaults defaults(m_folder->filePath(u"settings.json"_s));
        if (oldValue.isValid())
            defaults.set(oldKey, oldValue);
        if (newValue.isValid())
            defaults.set(newKey, newValue);

        LegacyMigration::migrateDefaults(defaults);
        QVERIFY(!defaults.contains(oldKey));
        QTEST(defaults.value(newKey), "expected");
    }

private:
    void plant(const QStringList &tree) const
    {
        for (const QString &entry : tree) {
            const QString path = m_folder->filePath(entry.section(u"->"_s, 0, 0));
            QVERIFY(QDir().mkpath(path.section(u'/', 0, -2)));
            QFile file(path);
            if (entry.contains(u"->"_s)) {
                QVERIFY(QFile::link(entry.section(u"->"_s, 1), path));
            } else if (!entry.endsWith(u'/')) {
                QVERIFY(file.open(QFile::WriteOnly));
                file.write(entry.toUtf8());
            }
        }
    }

    [[nodiscard]] QStringList tree() const
    {
        QStringList found;
        const QDir::Filters all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
        QDirIterator entries(m_folder->path(), all, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QFileInfo entry = entries.nextFileInfo();
            const QString path = QDir(m_folder->path()).relativeFilePath(entry.filePath());
            if (entry.isSymLink())
                found.append(path + u"->"_s + linkTarget(entry.filePath()));
            else if (!entry.isDir())
                found.append(path);
            else if (QDir(entry.filePath()).isEmpty(all))
                found.append(path + u'/');
        }
        found.sort();
        return found;
    }

    void migrate() const { LegacyMigration::migrateAppSupportDirectory({m_folder->path(), {}, {}}); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestLegacyMigration)
#include "tst_legacymigration.moc"
