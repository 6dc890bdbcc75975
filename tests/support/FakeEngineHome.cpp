#include "tests/support/FakeEngineHome.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

void require(bool done, const QString &what)
{
    if (!done)
        qFatal("cannot make %s", qPrintable(what));
}

} // namespace

FakeEngineHome::FakeEngineHome(const QString &executable) : m_executable(executable)
{
    install(engineFolder(), executable);
    behave({});
}

QByteArray FakeEngineHome::Request::body() const
{
    QFile file(bodyFile);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

QList<FakeEngineHome::Launch> FakeEngineHome::launchesIn(const QString &folder)
{
    QList<Launch> launches;
    for (const QJsonObject &entry : log(folder, u"launch"_s)) {
        QStringList arguments;
        for (const QJsonValue argument : entry[u"arguments"_s].toArray())
            arguments.append(argument.toString());
        launches.append({.pid = entry[u"pid"_s].toInteger(),
                         .program = entry[u"program"_s].toString(),
                         .arguments = arguments,
                         .backendPath = entry[u"GGML_BACKEND_PATH"_s].toString(),
                         .isSigtermBlocked = entry[u"isSigtermBlocked"_s].toBool()});
    }
    return launches;
}

QList<FakeEngineHome::Request> FakeEngineHome::requests(const QString &path) const
{
    QList<Request> requests;
    for (const QJsonObject &entry : log(engineFolder(), u"request"_s)) {
        if (entry[u"path"_s] != path)
            continue;
        requests.append({.pid = entry[u"pid"_s].toInteger(),
                         .method = entry[u"method"_s].toString(),
                         .path = path,
                         .headers = entry[u"headers"_s].toObject(),
                         .bodySize = entry[u"bodySize"_s].toInteger(),
                         .bodyFile = entry[u"bodyFile"_s].toString()});
    }
    return requests;
}

qsizetype FakeEngineHome::abandoned(const QString &path) const
{
    const QList<QJsonObject> entries = log(engineFolder(), u"abandoned"_s);
    return std::count_if(entries.begin(), entries.end(),
                         [&path](const QJsonObject &entry) { return entry[u"path"_s] == path; });
}

QList<QJsonObject> FakeEngineHome::log(const QString &folder, const QString &event)
{
    QFile file(folder + u'/' + QString::fromUtf16(FakeEngineFiles::log));
    if (!file.open(QFile::ReadOnly))
        return {};
    QList<QJsonObject> entries;
    QByteArrayList lines = file.readAll().split('\n');
    lines.removeLast(); // empty, or a line that is still being written
    for (const QByteArray &line : lines) {
        const QJsonObject entry = QJsonDocument::fromJson(line).object();
        if (entry[u"event"_s] == event)
            entries.append(entry);
    }
    return entries;
}

bool FakeEngineHome::allEnded() const
{
    const QList<Launch> launches = this->launches();
    return std::none_of(launches.begin(), launches.end(), [](const Launch &launch) {
        return QFile::exists(u"/proc/%1"_s.arg(launch.pid)); // a zombie too
    });
}

void FakeEngineHome::install(const QString &folder, const QString &executable, Form form)
{
    require(QDir().mkpath(folder), folder);
    const QString program = QStringLiteral(ORVANE_FAKE_ENGINE);
    const QString name = folder + u'/' + executable;
    require(form == Form::Link ? QFile::link(program, name) : QFile::copy(program, name), name);
}

void FakeEngineHome::behaveIn(const QString &folder, const FakeEngineBehaviour &behaviour)
{
    // Replaced in one step: the engine may be reading it.
    QSaveFile file(folder + u'/' + QString::fromUtf16(FakeEngineFiles::behaviour));
    require(file.open(QSaveFile::WriteOnly), file.fileName());
    file.write(QJsonDocument(behaviour.toJson()).toJson());
    require(file.commit(), file.fileName());
}

bool FakeEngineHome::isRunning(qint64 pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    if (!file.open(QFile::ReadOnly))
        return false;
    // "pid (name) state …": a zombie has ended and only waits for its parent to notice.
    const QByteArray stat = file.readAll();
    const char state = stat.mid(stat.lastIndexOf(')') + 2, 1).front();
    return state != 'Z' && state != 'X';
}

} // namespace orvane
