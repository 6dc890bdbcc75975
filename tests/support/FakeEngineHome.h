#pragma once

#include "tests/support/FakeEngineBehaviour.h"

#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>

namespace orvane {

/// A temporary resources folder whose "engine" subfolder holds a fake engine, the control of that engine
/// and what it wrote down.
class FakeEngineHome
{
public:
    /// The fake engine is found under that name.
    explicit FakeEngineHome(const QString &executable);

    struct Launch
    {
        qint64 pid;
        QString program;
        QStringList arguments;
        QString backendPath;
        bool isSigtermBlocked;
    };

    struct Request
    {
        qint64 pid;
        QString method;
        QString path;
        /// Names in lower case.
        QJsonObject headers;
        qint64 bodySize;
        /// Empty when there was none, or it was not kept.
        QString bodyFile;

        [[nodiscard]] QByteArray body() const;
    };

    [[nodiscard]] QString resources() const { return m_folder.path(); }
    [[nodiscard]] QString engineFolder() const { return m_folder.filePath(QStringLiteral("engine")); }
    [[nodiscard]] QString executable() const { return engineFolder() + u'/' + m_executable; }

    /// From the next launch or request on.
    void behave(const FakeEngineBehaviour &behaviour) const { behaveIn(engineFolder(), behaviour); }

    [[nodiscard]] QList<Launch> launches() const { return launchesIn(engineFolder()); }
    /// Requests that came in whole, to that path.
    [[nodiscard]] QList<Request> requests(const QString &path) const;
    /// How many requests to that path lost their connection before they were answered.
    [[nodiscard]] qsizetype abandoned(const QString &path) const;

    /// Whether all its engines have ended, and the program that started them has taken note of it.
    [[nodiscard]] bool allEnded() const;

    /// Puts the fake engine into another folder, as a link or as a file of its own.
    enum class Form { Link, Copy };
    static void install(const QString &folder, const QString &executable, Form form = Form::Link);
    [[nodiscard]] static QList<Launch> launchesIn(const QString &folder);
    static void behaveIn(const QString &folder, const FakeEngineBehaviour &behaviour);

    /// Whether the process exists and has not ended.
    [[nodiscard]] static bool isRunning(qint64 pid);

private:
    [[nodiscard]] static QList<QJsonObject> log(const QString &folder, const QString &event);

    QTemporaryDir m_folder;
    const QString m_executable;
};

} // namespace orvane
