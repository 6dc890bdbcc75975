#include "tests/support/WaylandEditor.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <csignal>
#include <linux/input-event-codes.h>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 60'000; // ms
constexpr int pollInterval = 100;

struct Program
{
    QString name;
    QStringList arguments;
};

/// The editor opens the file, the terminal makes it when it is ready to fill it.
Program programOf(WaylandEditor::Kind kind, const QString &file)
{
    if (kind == WaylandEditor::Kind::Gtk)
        return {.name = u"l3afpad"_s, .arguments = {file}};
    const QStringList shell = {u"sh"_s, u"-c"_s, u"stty -icanon -isig -ixon -echo; exec cat >\"$0\""_s, file};
    if (kind == WaylandEditor::Kind::X11Terminal)
        return {.name = u"xterm"_s, .arguments = QStringList{u"-e"_s} + shell};
    return {.name = u"foot"_s, .arguments = shell};
}

} // namespace

WaylandEditor::WaylandEditor(Compositor &compositor, Kind kind)
    : m_compositor(compositor),
      m_kind(kind),
      m_file(m_folder.filePath(u"text.txt"_s))
{
    if (kind == Kind::Gtk && !QFile(m_file).open(QFile::WriteOnly))
        qFatal("no temporary folder");
    const Program program = programOf(kind, m_file);
    QProcessEnvironment environment = compositor.environment();
    environment.insert(u"GDK_BACKEND"_s, u"wayland"_s);
    m_process.setProcessEnvironment(environment);
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.setStandardErrorFile(compositor.file(program.name + u".log"_s));
    m_process.start(program.name, program.arguments);
    // Only what it is sent says that it has the focus; the last key, that all before have come.
    const QDeadlineTimer end(patience);
    const auto wait = [&] {
        if (end.hasExpired())
            qFatal("%s does not take what is typed", qPrintable(program.name));
        QThread::msleep(pollInterval);
    };
    for (; received().isEmpty(); wait())
        compositor.tap({KEY_X});
    for (compositor.tap({KEY_Z}); !received().endsWith(u'z');)
        wait();
    m_start = m_received.size();
}

WaylandEditor::~WaylandEditor()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString WaylandEditor::text()
{
    return received().mid(m_start);
}

QString WaylandEditor::received()
{
    if (m_kind == Kind::Gtk)
        m_compositor.tap({KEY_LEFTCTRL, KEY_S});
    QFile file(m_file);
    // An editor empties the file before it writes it.
    if (const QByteArray content = file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
        !content.isEmpty())
        m_received = QString::fromUtf8(content);
    if (m_kind == Kind::Gtk && m_received.endsWith(u'\n')) // which it ends its files with
        m_received.chop(1);
    return m_received;
}

} // namespace orvane::test
