#include "history/LegacyMigration.h"

#include "settings/UserDefaults.h"

#include <QFile>

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace orvane {

namespace {

fs::path pathOf(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

// Counts a link that leads nowhere: it must not be overwritten either.
bool somethingAt(const fs::path &path)
{
    std::error_code failure;
    return fs::exists(fs::symlink_status(path, failure));
}

bool isFolder(const fs::path &path)
{
    std::error_code failure;
    return fs::is_directory(path, failure);
}

bool isEmptyFolder(const fs::path &path)
{
    std::error_code failure;
    return isFolder(path) && fs::is_empty(path, failure) && !failure;
}

bool copyTree(const fs::path &source, const fs::path &target)
{
    std::error_code failure;
    fs::copy(source, target, fs::copy_options::recursive | fs::copy_options::copy_symlinks, failure);
    return !failure;
}

// Onto another disk it is copied under another name first, so that a half of it never counts as the whole.
void moveAcrossDisks(const fs::path &source, const fs::path &target)
{
    fs::path copy = target;
    copy += ".partial";
    std::error_code failure;
    fs::remove_all(copy, failure);
    if (copyTree(source, copy))
        fs::rename(copy, target, failure);
    else
        failure = std::make_error_code(std::errc::io_error);
    if (failure)
        fs::remove_all(copy, failure);
    else
        fs::remove_all(source, failure);
}

// An empty folder at the target is replaced in one step, or stays.
void move(const fs::path &source, const fs::path &target)
{
    std::error_code failure;
    if (isEmptyFolder(target) && !isFolder(source))
        fs::remove(target, failure);
    fs::rename(source, target, failure);
    if (failure == std::errc::cross_device_link)
        moveAcrossDisks(source, target);
}

void mergeEntry(const fs::path &entry, const fs::path &target)
{
    if (isEmptyFolder(target) || !somethingAt(target))
        move(entry, target);
}

// Listed before the first entry moves: a listing need not survive changes.
std::vector<fs::path> entriesOf(const fs::path &folder)
{
    std::error_code failure;
    std::vector<fs::path> entries;
    fs::directory_iterator entry(folder, failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure))
        entries.push_back(entry->path());
    return entries;
}

} // namespace

void LegacyMigration::migrateAppSupportDirectory(const StandardFolders &folders)
{
    const fs::path oldFolder = pathOf(folders.applicationSupport + u"/Vesk"_s);
    const fs::path newFolder = pathOf(folders.orvane());
    if (!isFolder(oldFolder))
        return;

    std::error_code ignored;
    if (!somethingAt(newFolder)) {
        move(oldFolder, newFolder);
        return;
    }
    if (fs::equivalent(oldFolder, newFolder, ignored))
        return; // one is a link to the other
    for (const fs::path &entry : entriesOf(oldFolder))
        mergeEntry(entry, newFolder / entry.filename());
    if (isEmptyFolder(oldFolder))
        fs::remove(oldFolder, ignored);
}

void LegacyMigration::migrateDefaults(UserDefaults &defaults)
{
    static const std::pair<QString, QString> keys[] = {
        {u"vesk.update.notifiedVersion"_s, u"orvane.update.notifiedVersion"_s},
    };
    for (const auto &[oldKey, newKey] : keys) {
        if (!defaults.contains(oldKey))
            continue;
        if (!defaults.contains(newKey))
            defaults.set(newKey, defaults.value(oldKey));
        defaults.remove(oldKey);
    }
}

} // namespace orvane
