#include "desktop/Autostart.h"

#include "base/Async.h"
#include "base/StandardFolders.h"
#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// One word of a command line, as entries of the desktop have them: quoted once for the command, and once
/// more as every text of an entry.
QString quoted(const QString &word)
{
    QString command;
    for (const QChar c : word) {
        if (u"\"`$\\"_s.contains(c))
            command += u'\\';
        command += c;
        if (c == u'%')
            command += c;
    }
    return u'"' + command.replace(u'\\', u"\\\\"_s) + u'"';
}

QByteArray entryFor(const QString &program)
{
    return u"[Desktop Entry]\nType=Application\nName=Orvane\nExec=%1 --background\nTerminal=false\n"_s
        .arg(quoted(program))
        .toUtf8();
}

/// Desktops switch an entry off by a line in it.
bool isOnIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly | QFile::Text))
        return false;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QByteArray bare = line.simplified().replace(' ', QByteArray());
        if (bare == "Hidden=true" || bare == "X-GNOME-Autostart-enabled=false")
            return false;
    }
    return true;
}

void write(const QString &path, const QString &program)
{
    QDir().mkpath(QFileInfo(path).path());
    replaceFile(path, entryFor(program), FileAccess::Usual);
}

void remove(const QString &path)
{
    QFile file(path);
    if (!file.remove() && file.exists())
        throw FileError::notWritten(file);
}

} // namespace

Autostart::Autostart(const QString &file, const QString &program, QObject *parent)
    : QObject(parent),
      m_file(file),
      m_program(program)
{
    m_thread.setMaxThreadCount(1);
    look();
}

Autostart::~Autostart()
{
    m_scope.end();
    waitForDone(m_thread);
}

QString Autostart::standardFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/autostart/orvane.desktop"_s;
}

QString Autostart::thisProgram()
{
    return commandOfProgram();
}

void Autostart::look()
{
    spawn(read());
}

QCoro::Task<> Autostart::read()
{
    const auto work = [file = m_file] { return isOnIn(file); };
    const int choices = m_choices;
    const bool isOn = co_await m_scope(offMainThread(&m_thread, work));
    if (choices == m_choices && std::exchange(m_isOn, isOn) != isOn)
        Q_EMIT changed();
}

void Autostart::set(bool on)
{
    if (on == m_isOn)
        return;
    ++m_choices;
    m_isOn = on;
    m_error.clear();
    Q_EMIT changed();
    spawn(store(on));
}

QCoro::Task<> Autostart::store(bool on)
{
    const auto work = [on, file = m_file, program = m_program] { on ? write(file, program) : remove(file); };
    try {
        co_await m_scope(offMainThread(&m_thread, work));
        co_return;
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        m_error = descriptionOf(error);
    }
    Q_EMIT changed();
    co_await m_scope(read());
}

} // namespace orvane
