#pragma once

#include "diagnostics/CheckResult.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// Whether what lies on the disk can be used. All of it waits for the disk: off the main thread.
namespace orvane::FileChecks {

struct Model
{
    QString name;
    QString path;
    /// What its file has to begin with.
    QByteArray magic;
};
/// Of the models that are there: whether their files are whole, as far as their beginning and size tell.
[[nodiscard]] CheckResult models(const QList<Model> &models);

/// Whether the folder's disk has room. The folder need not exist.
[[nodiscard]] CheckResult disk(const QString &folder);

struct Folder
{
    QString path;
    /// Nobody else may look into it.
    bool isPrivate = false;
};
/// Whether files can be made in all of them; a folder that does not exist yet must be possible to make.
[[nodiscard]] CheckResult folders(const QList<Folder> &folders);

} // namespace orvane::FileChecks
