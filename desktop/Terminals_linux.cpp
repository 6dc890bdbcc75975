#include "desktop/Terminals.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane::Terminals {

namespace {

/// Parts of class names that nothing else has.
constexpr const char *parts[] = {
    "terminal",          "xterm",   "rxvt",     "konsole",     "kitty",   "alacritty", "wezterm",
    "ghostty",           "termite", "tilix",    "guake",       "tilda",   "yakuake",   "mlterm",
    "cool-retro-term",   "contour", "sakura",   "terminology", "roxterm", "ptyxis",    "eterm",
    "org.gnome.console", "zutty",   "blackbox",
};
/// Whole names that would be parts of others.
constexpr const char *names[] = {"st",         "st-256color", "kgx",   "foot",  "footclient",
                                 "terminator", "rio",         "hyper", "tabby", "waveterm"};

/// What a desktop entry calls the windows of its program: its own name, the class it says that they have, and
/// the program. Nothing unless that is a terminal.
QStringList namesOfTerminal(const QString &entry)
{
    QFile file(entry);
    if (!file.open(QFile::ReadOnly))
        return {};
    QStringList found = {QFileInfo(entry).completeBaseName()};
    bool isTerminal = false;
    for (bool isMain = false; !file.atEnd();) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const QString value = line.section(u'=', 1).trimmed();
        if (line.startsWith(u'['))
            isMain = line == "[Desktop Entry]"_L1;
        else if (isMain && line.startsWith("Categories="_L1))
            isTerminal = value.split(u';').contains(u"TerminalEmulator"_s);
        else if (isMain && line.startsWith("StartupWMClass="_L1))
            found << value;
        else if (isMain && line.startsWith("Exec="_L1))
            found << QFileInfo(value.section(u' ', 0, 0)).fileName();
    }
    return isTerminal ? found : QStringList();
}

QSet<QByteArray> installedTerminals()
{
    // Wrappers that run any program stand for none.
    const QStringList wrappers = {u"env"_s, u"sh"_s, u"bash"_s, u"flatpak"_s, u"snap"_s, u"python3"_s};
    QSet<QByteArray> all;
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
        for (QDirIterator entries(folder, {u"*.desktop"_s}, QDir::Files); entries.hasNext();) {
            for (const QString &name : namesOfTerminal(entries.next())) {
                if (!name.isEmpty() && !wrappers.contains(name))
                    all.insert(name.toLower().toUtf8());
            }
        }
    }
    return all;
}

} // namespace

bool include(const QByteArray &windowClass, const QStringList &namedByUser)
{
    const QByteArray lower = windowClass.toLower();
    const QList<QByteArray> given = lower.split('\0');
    const auto isGiven = [&](const QByteArray &name) { return given.contains(name); };
    if (std::ranges::any_of(parts, [&](const char *part) { return lower.contains(part); }) ||
        std::ranges::any_of(names, isGiven) ||
        std::ranges::any_of(namedByUser, isGiven,
                            [](const QString &name) { return name.toLower().toUtf8(); }))
        return true;
    static const QSet<QByteArray> installed = installedTerminals();
    return std::ranges::any_of(given, [](const QByteArray &name) { return installed.contains(name); });
}

} // namespace orvane::Terminals
