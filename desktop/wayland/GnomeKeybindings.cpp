#include "desktop/wayland/GnomeKeybindings.h"

#include "desktop/wayland/GnomeAccelerator.h"

#include <QProcess>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane::GnomeKeybindings {

namespace {

constexpr int patience = 2000; // ms, for each run
const QString mediaKeys = u"org.gnome.settings-daemon.plugins.media-keys"_s;
const QString listKey = u"custom-keybindings"_s;
const QString parent = u"/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/"_s;
const QStringList schemas = {mediaKeys, u"org.gnome.desktop.wm.keybindings"_s,
                             u"org.gnome.mutter.keybindings"_s, u"org.gnome.mutter.wayland.keybindings"_s,
                             u"org.gnome.shell.keybindings"_s};

/// What it writes; none when it fails.
std::optional<QString> gsettings(const QStringList &arguments)
{
    QProcess process;
    process.start(u"gsettings"_s, arguments);
    if (!process.waitForFinished(patience)) {
        process.kill();
        process.waitForFinished();
        return std::nullopt;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// The texts in a value as GVariant writes it.
QStringList textsIn(const QString &value)
{
    static const QRegularExpression text(uR"re('((?:[^'\\]|\\.)*)'|"((?:[^"\\]|\\.)*)")re"_s);
    static const QRegularExpression escaped(u"\\\\(.)"_s);
    QStringList texts;
    for (auto match = text.globalMatch(value); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        QString unquoted = found.captured(1) + found.captured(2);
        texts << unquoted.replace(escaped, u"\\1"_s);
    }
    return texts;
}

QString quoted(QString text)
{
    return u'\'' + text.replace(u'\\', u"\\\\"_s).replace(u'\'', u"\\'"_s) + u'\'';
}

QString schemaOf(const QString &path)
{
    return mediaKeys + u".custom-keybinding:"_s + path;
}

QString value(const QString &path, const QString &key)
{
    return textsIn(gsettings({u"get"_s, schemaOf(path), key}).value_or(QString())).value(0);
}

std::optional<QStringList> paths()
{
    const std::optional<QString> list = gsettings({u"get"_s, mediaKeys, listKey});
    return list ? std::optional(textsIn(*list)) : std::nullopt;
}

bool isOurs(const QString &path, const QString &prefix)
{
    return path.startsWith(parent + prefix);
}

} // namespace

std::optional<QList<Keybinding>> withPrefix(const QString &prefix)
{
    const std::optional<QStringList> all = paths();
    if (!all)
        return std::nullopt;
    QList<Keybinding> keybindings;
    for (const QString &path : *all) {
        if (isOurs(path, prefix))
            keybindings.append({.folder = path.mid(parent.size()).chopped(1),
                                .name = value(path, u"name"_s),
                                .command = value(path, u"command"_s),
                                .accelerator = value(path, u"binding"_s)});
    }
    return keybindings;
}

bool set(const Keybinding &keybinding)
{
    std::optional<QStringList> all = paths();
    if (!all)
        return false;
    const QString path = parent + keybinding.folder + u'/';
    const auto put = [&path](const QString &key, const QString &text) {
        return gsettings({u"set"_s, schemaOf(path), key, quoted(text)}).has_value();
    };
    if (!put(u"name"_s, keybinding.name) || !put(u"command"_s, keybinding.command) ||
        !put(u"binding"_s, keybinding.accelerator))
        return false;
    if (all->contains(path))
        return true;
    all->append(path);
    std::ranges::transform(*all, all->begin(), quoted);
    return gsettings({u"set"_s, mediaKeys, listKey, u'[' + all->join(u", "_s) + u']'}).has_value();
}

QStringList boundOutside(const QString &prefix)
{
    QStringList bound;
    for (const QString &schema : schemas) {
        for (const QString &text : textsIn(gsettings({u"list-recursively"_s, schema}).value_or(QString())))
            bound << GnomeAccelerator::normalised(text);
    }
    for (const QString &path : paths().value_or(QStringList())) {
        if (!isOurs(path, prefix))
            bound << GnomeAccelerator::normalised(value(path, u"binding"_s));
    }
    return bound;
}

} // namespace orvane::GnomeKeybindings
