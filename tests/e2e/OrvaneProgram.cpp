#include "tests/e2e/OrvaneProgram.h"
#include "tests/support/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <utility>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// Long enough for a busy machine under a sanitizer.
constexpr int patience = 240'000;

void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

QList<QByteArray> statFields(qint64 pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = stat.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' '); // state, parent, …
}

} // namespace

OrvaneProgram::OrvaneProgram(const QString &model) : m_environment(QProcessEnvironment::systemEnvironment())
{
    require(m_home.isValid(), "no temporary folder");
    QDir home(m_home.path());
    for (const QString &folder : {u"data/Orvane/Models"_s, u"data/Orvane/CorrectionModels"_s,
                                  u"data/Orvane/History"_s, u"config/Orvane"_s, u"tmp"_s})
        home.mkpath(folder);
    m_environment.insert(u"XDG_DATA_HOME"_s, m_home.filePath(u"data"_s));
    m_environment.insert(u"XDG_CONFIG_HOME"_s, m_home.filePath(u"config"_s));
    m_environment.insert(u"TMPDIR"_s, temporaryFolder());
    m_environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
    if (!model.isEmpty())
        install(model);
}

QStringList OrvaneProgram::temporaryFiles() const
{
    return QDir(temporaryFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

QStringList OrvaneProgram::recordFiles() const
{
    const QDir folder(dataFolder() + u"/History"_s);
    QStringList files;
    for (const QString &name : folder.entryList(QDir::Files))
        files.append(folder.filePath(name));
    return files;
}

void OrvaneProgram::install(const QString &model) const
{
    const QString name = u"/ggml-%1.bin"_s.arg(model);
    const QString source = qEnvironmentVariable("ORVANE_TEST_MODELS") + name;
    require(QFileInfo(source).isFile(), "the speech models are missing: run ./test, which provides them");
    QFile::link(source, dataFolder() + u"/Models"_s + name);
}

void OrvaneProgram::installLanguageModel() const
{
    const QString source = qEnvironmentVariable("ORVANE_TEST_LLM_MODEL");
    require(QFileInfo(source).isFile(), "the language model is missing: run ./test, which provides it");
    QFile::link(source, dataFolder() + u"/CorrectionModels/Qwen2.5-1.5B-Instruct-Q4_K_M.gguf"_s);
}

void OrvaneProgram::placeEngine(const QString &name, const QString &executable)
{
    if (!std::exchange(m_isPlaced, true))
        place();
    require(QFile::link(executable, path(u"lib/orvane/engine/"_s + name)), "cannot place the engine");
}

void OrvaneProgram::place()
{
    m_program = path(u"bin/orvane"_s);
    QDir(m_home.path()).mkpath(u"lib/orvane/engine"_s);
    for (const auto &[built, place] :
         {std::pair(QStringLiteral(ORVANE_PROGRAM), m_program),
          {QStringLiteral(ORVANE_DESKTOP_PROGRAM), path(u"libexec/orvane-desktop"_s)}}) {
        QDir().mkpath(QFileInfo(place).path());
        std::error_code error;
        std::filesystem::create_hard_link(built.toStdString(), place.toStdString(), error);
        require(!error || QFile::copy(built, place), "cannot place the program");
    }
    const QDir modules(QFileInfo(QStringLiteral(ORVANE_PROGRAM)).path() + u"/../lib/orvane"_s);
    for (const QFileInfo &module : modules.entryInfoList({u"*.so"_s}, QDir::Files))
        require(QFile::link(module.absoluteFilePath(), path(u"lib/orvane/"_s + module.fileName())),
                "cannot place a module");
}

void OrvaneProgram::addRecord(const QString &id, const QByteArray &json) const
{
    test::put(u"%1/History/%2.json"_s.arg(dataFolder(), id), json);
}

void OrvaneProgram::setPreferences(const QByteArray &json) const
{
    test::put(m_home.filePath(u"config/Orvane/settings.json"_s), json);
}

OrvaneProgram::Result OrvaneProgram::run(const QStringList &arguments, const QString &input) const
{
    const std::unique_ptr<QProcess> process = start(arguments, input);
    require(process->waitForFinished(patience), "the program did not end");
    return {.exitCode = process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1,
            .output = process->readAllStandardOutput(),
            .complaints = process->readAllStandardError()};
}

std::unique_ptr<QProcess> OrvaneProgram::start(const QStringList &arguments, const QString &input) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(m_environment);
    if (!input.isEmpty())
        process->setStandardInputFile(input);
    process->start(m_program, arguments);
    require(process->waitForStarted(patience), "the program cannot be started");
    return process;
}

QList<qint64> OrvaneProgram::enginesOf(const QProcess &program) const
{
    QList<qint64> engines;
    for (const QString &entry : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        bool isProcess = false;
        const qint64 pid = entry.toLongLong(&isProcess);
        if (!isProcess || statFields(pid).value(1).toLongLong() != program.processId())
            continue;
        std::error_code error;
        const auto executable =
            std::filesystem::read_symlink(u"/proc/%1/exe"_s.arg(pid).toStdString(), error);
        if (executable.filename() == "whisper-server")
            engines.append(pid);
    }
    return engines;
}

QString fixture(const QString &name)
{
    const QString path = qEnvironmentVariable("ORVANE_TEST_FIXTURES") + u'/' + name;
    require(QFileInfo(path).isFile(), "the recordings are missing: run ./test, which provides them");
    return path;
}

bool isAlive(qint64 pid)
{
    const QByteArray state = statFields(pid).value(0);
    return !state.isEmpty() && state != "Z";
}

Holdings holdingsOf(qint64 pid)
{
    const QDir process(u"/proc/%1"_s.arg(pid));
    QFile memory(process.filePath(u"statm"_s));
    require(memory.open(QFile::ReadOnly), "the program has ended");
    const qint64 residentPages = memory.readAll().split(' ').value(1).toLongLong();
    const QStringList files =
        QDir(process.filePath(u"fd"_s)).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    return {.residentKiB = residentPages * ::sysconf(_SC_PAGESIZE) / 1024, .openFiles = files.size()};
}

} // namespace orvane
