#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace orvane {

/// Says when files have come to a folder, gone from it or been replaced, by whatever program. The folder need
/// not exist and may go. Main thread.
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    explicit FolderWatch(const QString &folder, QObject *parent = nullptr);

    /// Files of which it is to be said, too, that something has been written into them.
    void setFiles(const QStringList &paths);

Q_SIGNALS:
    /// Soon after a change, once for many at a time. Where the system has no watches left: every few seconds.
    void changed();

private:
    void follow();
    void startDelay();

    const QString m_folder;
    QFileSystemWatcher m_watcher;
    QTimer m_delay;
};

} // namespace orvane
