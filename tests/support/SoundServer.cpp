#include "tests/support/SoundServer.h"

#include "engine/ProcessControl.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

} // namespace

void SoundServer::SpeechEnd::operator()(QProcess *speech) const
{
    speech->kill();
    speech->waitForFinished();
    delete speech;
}

SoundServer::SoundServer()
{
    require(m_folder.isValid(), "no temporary folder");
    start();
}

SoundServer::~SoundServer()
{
    crash();
}

bool SoundServer::isInstalled()
{
    return !QStandardPaths::findExecutable(u"pulseaudio"_s).isEmpty() &&
           !QStandardPaths::findExecutable(u"pactl"_s).isEmpty();
}

void SoundServer::start()
{
    const QString socket = m_folder.filePath(u"native"_s);
    QFile::remove(socket);
    m_modules.clear();
    m_process.setProcessEnvironment(environment());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    ProcessControl::bindToThisProgram(m_process);
    m_process.start(u"pulseaudio"_s,
                    {u"-n"_s, u"--daemonize=no"_s, u"--use-pid-file=no"_s, u"--exit-idle-time=-1"_s,
                     u"--realtime=no"_s, u"--high-priority=no"_s, u"-L"_s,
                     u"module-native-protocol-unix auth-anonymous=1 socket="_s + socket});
    require(m_process.waitForStarted(), "pulseaudio cannot be started");
    QElapsedTimer timer;
    timer.start();
    while (control({u"info"_s}).isEmpty()) {
        if (m_process.state() != QProcess::Running || timer.hasExpired(30000))
            qFatal("pulseaudio does not run: %s", m_process.readAll().constData());
        QThread::msleep(5);
    }
}

void SoundServer::refuseThisProcess(quint16 freePort) const
{
    control({u"load-module"_s, u"module-native-protocol-tcp"_s, u"listen=127.0.0.1"_s,
             u"port=%1"_s.arg(freePort), u"auth-cookie="_s + m_folder.filePath(u"cookie-of-others"_s)});
    qputenv("PULSE_SERVER", u"tcp:127.0.0.1:%1"_s.arg(freePort).toUtf8());
}

void SoundServer::breakRecordingHere()
{
    // The audio thread waits for more files than that.
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit few{.rlim_cur = 1, .rlim_max = files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    QThread::msleep(500);
    setrlimit(RLIMIT_NOFILE, &files);
}

void SoundServer::crash()
{
    m_process.kill();
    m_process.waitForFinished();
}

QProcessEnvironment SoundServer::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    environment.insert(u"PULSE_SERVER"_s, u"unix:"_s + m_folder.filePath(u"native"_s));
    environment.insert(u"PULSE_COOKIE"_s, m_folder.filePath(u"cookie"_s));
    return environment;
}

void SoundServer::enter() const
{
    const QProcessEnvironment values = environment();
    for (const char *name : {"XDG_RUNTIME_DIR", "PULSE_SERVER", "PULSE_COOKIE"})
        qputenv(name, values.value(QString::fromLatin1(name)).toUtf8());
}

void SoundServer::plugIn(const QString &microphone, const Format &format)
{
    const QString sink = sinkOf(microphone);
    // Without rewinds the sink goes on in steps of 50 ms instead of 2 s, like a sound card.
    if (!control({u"list"_s, u"short"_s, u"sinks"_s}).contains(sink)) {
        control({u"load-module"_s, u"module-null-sink"_s, u"norewinds=1"_s, u"sink_name="_s + sink,
                 u"rate=%1"_s.arg(format.rate), u"channels=%1"_s.arg(format.channels),
                 u"format="_s + format.sample});
    }
    // Programs take a monitor for no microphone, but a source made of it for one.
    m_modules[microphone] = control({u"load-module"_s, u"module-remap-source"_s,
                                     u"source_name="_s + microphone, u"master="_s + sink + u".monitor"_s});
    require(!m_modules[microphone].isEmpty(), "the microphone cannot be plugged in");
    if (m_modules.size() == 1)
        setDefault(microphone);
}

void SoundServer::unplug(const QString &microphone)
{
    control({u"unload-module"_s, m_modules.take(microphone)});
}

void SoundServer::setDefault(const QString &microphone) const
{
    control({u"set-default-source"_s, microphone});
}

void SoundServer::speak(const QString &microphone, const QString &file)
{
    const auto speaking = startSpeaking(microphone, file);
    require(speaking->waitForFinished(120000) && speaking->exitCode() == 0, "paplay cannot play the file");
}

SoundServer::Speech SoundServer::startSpeaking(const QString &microphone, const QString &file)
{
    Speech process(new QProcess);
    process->setProcessEnvironment(environment());
    ProcessControl::bindToThisProgram(*process);
    process->start(u"paplay"_s, {u"--device="_s + sinkOf(microphone), file});
    require(process->waitForStarted(), "paplay cannot be started");
    return process;
}

QString SoundServer::control(const QStringList &arguments) const
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(u"pactl"_s, arguments);
    process.waitForFinished();
    return process.exitCode() == 0 ? QString::fromUtf8(process.readAllStandardOutput()).trimmed() : QString();
}

} // namespace orvane::test
