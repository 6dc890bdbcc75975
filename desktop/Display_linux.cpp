#include "desktop/Display.h"

#include "desktop/Xcb.h"

#include <QByteArray>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QPluginLoader>

#include <algorithm>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Whether somebody answers where the environment says that a Wayland compositor is.
bool hasCompositor()
{
    QByteArray path = qgetenv("WAYLAND_DISPLAY");
    if (path.isEmpty())
        return false;
    if (!path.startsWith('/'))
        path = qgetenv("XDG_RUNTIME_DIR") + '/' + path;
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (size_t(path.size()) >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return false;
    const bool answers =
        ::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    ::close(socket);
    return answers;
}

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
        return hasCompositor() && hasPlugin(name);
    return hasPlugin(name);
}

} // namespace

QString displayPlatform()
{
    // Qt takes the first that it has a plugin for, and ends the program when nobody answers there.
    QStringList platforms = qEnvironmentVariable("QT_QPA_PLATFORM").split(u';', Qt::SkipEmptyParts);
    if (platforms.isEmpty()) {
        const bool isGnome = qgetenv("XDG_CURRENT_DESKTOP").toLower().contains("gnome");
        if (!isGnome)
            platforms << u"wayland"_s;
        platforms << u"xcb"_s;
        if (isGnome)
            platforms << u"wayland"_s;
    }
    const auto working = std::ranges::find_if(platforms, works);
    return working == platforms.cend() ? QString() : *working;
}

} // namespace orvane
