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
    QString name;
    QStringList arguments;
    QString windowClass;
};

Program programOf(FocusedEditor::Kind kind, const QString &file)
{
    switch (kind) {
    case FocusedEditor::Kind::Gtk:
        return {.name = u"l3afpad"_s, .arguments = {file}, .windowClass = u"l3afpad"_s};
    case FocusedEditor::Kind::Qt:
        return {
            .name = u"featherpad"_s, .arguments = {u"--standalone"_s, file}, .windowClass = u"featherpad"_s};
    case FocusedEditor::Kind::Terminal:
        return {.name = u"xterm"_s,
                .arguments = {u"-e"_s, u"sh"_s, u"-c"_s,
                              u"stty -icanon -isig -ixon -echo; echo >\"$0.ready\"; exec cat >\"$0\""_s,
                              file},
                .windowClass = u"xterm"_s};
    }
    return {};
}

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

FocusedEditor::FocusedEditor(Kind kind) : m_kind(kind)
{
    const QString file = m_folder.filePath(u"text.txt"_s);
    const QString ready = file + u".ready"_s;
    QFile(kind == Kind::Terminal ? file : ready).open(QFile::WriteOnly);
    QFile(file).open(QFile::WriteOnly);
    const Program program = programOf(kind, file);
    if (kind == Kind::Terminal)
        QFile::remove(ready);
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program.name, program.arguments);
    for (const QDeadlineTimer end(patience);
         !m_keyboard.focusedClass().startsWith(program.windowClass, ::Qt::CaseInsensitive) ||
         !QFile::exists(ready);
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
    return contentOf(m_folder.filePath(u"text.txt"_s));
}

} // namespace orvane::test
