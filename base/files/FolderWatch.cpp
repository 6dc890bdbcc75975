#include "base/files/FolderWatch.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <chrono>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto delay = 100ms;
constexpr auto blindInterval = 3s;

/// The folder, or the one in which it will be made, or a folder on the way to it.
QString nearestFolder(QString folder)
{
    while (!QFileInfo(folder).isDir() && folder != QDir::rootPath())
        folder = QFileInfo(folder).path();
    return folder;
}

} // namespace

FolderWatch::FolderWatch(const QString &folder, QObject *parent)
    : QObject(parent),
      m_folder(QDir::cleanPath(QFileInfo(folder).absoluteFilePath()))
{
    m_delay.setSingleShot(true);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderWatch::startDelay);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FolderWatch::startDelay);
    connect(&m_delay, &QTimer::timeout, this, [this] {
        follow();
        Q_EMIT changed();
    });
    follow();
}

void FolderWatch::startDelay()
{
    if (!m_delay.isActive() || m_delay.intervalAsDuration() > delay)
        m_delay.start(delay);
}

void FolderWatch::follow()
{
    for (;;) {
        const QString nearest = nearestFolder(m_folder);
        const QStringList watched = m_watcher.directories();
        if (watched.contains(nearest))
            return;
        if (!watched.isEmpty())
            m_watcher.removePaths(watched);
        if (!m_watcher.addPath(nearest)) {
            m_delay.start(blindInterval);
            return;
        }
        // The next folder on the way may have been made meanwhile.
    }
}

void FolderWatch::setFiles(const QStringList &paths)
{
    const QStringList files = m_watcher.files();
    const QSet<QString> before(files.begin(), files.end());
    const QSet<QString> after(paths.begin(), paths.end());
    if (const QSet<QString> gone = before - after; !gone.isEmpty())
        m_watcher.removePaths(gone.values());
    if (const QSet<QString> added = after - before; !added.isEmpty())
        m_watcher.addPaths(added.values());
}

} // namespace orvane
