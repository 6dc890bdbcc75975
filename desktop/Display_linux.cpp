#include "desktop/Display.h"

#include "desktop/DesktopSession.h"
#include "desktop/Xcb.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QPluginLoader>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Whether Qt has a plugin for the platform.
bool hasPlugin(const QString &platform)
{
    QStringList folders = {QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforms"_s,
                           qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH")};
    for (const QString &folder : qEnvironmentVariable("QT_PLUGIN_PATH").split(u':', Qt::SkipEmptyParts))
        folders << folder + u"/platforms"_s;
    folders.removeAll(QString());
    for (const QString &folder : std::as_const(folders)) {
        for (const QFileInfo &file : QDir(folder).entryInfoList({u"*.so"_s}, QDir::Files)) {
            const QJsonObject described = QPluginLoader(file.filePath()).metaData()[u"MetaData"_s].toObject();
            if (described[u"Keys"_s].toArray().contains(platform))
                return true;
        }
    }
    return false;
}

/// Whether windows can be shown by that one of Qt's platforms, which may have options after a colon.
bool works(const QString &platform)
{
    const QString name = platform.section(u':', 0, 0);
    if (name == "xcb"_L1)
        return XcbConnection::open() && hasPlugin(name);
    if (name.startsWith("wayland"_L1))
        return DesktopSession::ofThisProcess().isWayland() && hasPlugin(name);
    return hasPlugin(name);
}

} // namespace

QString displayPlatform()
{
    // Qt takes the first that it has a plugin for, and ends the program when nobody answers there.
    QStringList platforms = qEnvironmentVariable("QT_QPA_PLATFORM").split(u';', Qt::SkipEmptyParts);
    // A Wayland compositor gives a plain window the focus and the place that it likes, so the dictation
    // indicator is right only where its own X server shows it.
    if (platforms.isEmpty())
        platforms = {u"xcb"_s, u"wayland"_s};
    const auto working = std::ranges::find_if(platforms, works);
    return working == platforms.cend() ? QString() : *working;
}

} // namespace orvane
