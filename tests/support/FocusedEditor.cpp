#include "tests/support/FocusedEditor.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 30'000; // ms

struct Program
{
    QString name; // its windows have it as their class too
    QStringList arguments;
};

/// The editors open the file, the terminal makes it when it is ready to fill it.
Program programOf(FocusedEditor::Kind kind, const QString &file)
{
    switch (kind) {
    case FocusedEditor::Kind::Gtk:
        return {.name = u"l3afpad"_s, .arguments = {file}};
    case FocusedEditor::Kind::Qt:
        return {.name = u"featherpad"_s, .arguments = {u"--standalone"_s, file}};
    case FocusedEditor::Kind::Terminal:
        return {.name = u"xterm"_s,
                .arguments = {u"-e"_s, u"sh"_s, u"-c"_s,
                              u"stty -icanon -isig -ixon -echo; exec cat >\"$0\""_s, file}};
    }
    return {};
}

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

FocusedEditor::FocusedEditor(Kind kind) : m_kind(kind), m_file(m_folder.filePath(u"text.txt"_s))
{
    if (kind != Kind::Terminal && !QFile(m_file).open(QFile::WriteOnly))
        qFatal("no temporary folder");
    const Program program = programOf(kind, m_file);
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program.name, program.arguments);
    for (const QDeadlineTimer end(patience);
         !QFile::exists(m_file) || !m_keyboard.focusedClass().startsWith(program.name, ::Qt::CaseInsensitive);
         QThread::msleep(20)) {
        if (end.hasExpired())
            qFatal("%s does not get the focus", qPrintable(program.name));
    }
}

FocusedEditor::~FocusedEditor()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString FocusedEditor::text()
{
    if (m_kind != Kind::Terminal)
        m_keyboard.tap(XKeyboard::LeftCtrl, XKeyboard::S);
    // An editor empties the file before it writes it.
    if (const QString content = contentOf(m_file); !content.isEmpty())
        m_text = content;
    return m_text;
}

} // namespace orvane::test
