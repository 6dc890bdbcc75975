#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace orvane {

/// The built program in a home of its own: data, preferences and temporary files lie in a folder that
/// ends with this object. Its engine and models are the real ones.
class OrvaneProgram
{
public:
    struct Result
    {
        int exitCode = -1;
        QByteArray output;
        QByteArray complaints;
    };

    /// With that speech model ("base") in the models folder, or without one.
    explicit OrvaneProgram(const QString &model = {});

    [[nodiscard]] QString dataFolder() const { return m_home.filePath(QStringLiteral("data/Orvane")); }
    [[nodiscard]] QString temporaryFolder() const { return m_home.filePath(QStringLiteral("tmp")); }
    [[nodiscard]] QString path(const QString &name) const { return m_home.filePath(name); }
    /// What was left in the temporary folder.
    [[nodiscard]] QStringList temporaryFiles() const;
    /// The files of the history.
    [[nodiscard]] QStringList recordFiles() const;

    /// Puts a speech model ("base") into the models folder.
    void install(const QString &model) const;
    /// Puts the small language model into its folder, under the name of the catalogue's first.
    void installLanguageModel() const;
    /// From now on the program runs from this home, with such engines ("llama-server") alone.
    void placeEngine(const QString &name, const QString &executable);
    /// Adds a record file to the history.
    void addRecord(const QString &id, const QByteArray &json) const;
    /// Writes the preferences file.
    void setPreferences(const QByteArray &json) const;
    void setEnvironment(const QString &name, const QString &value) { m_environment.insert(name, value); }
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }

    /// Runs to the end, with the file as its standard input.
    [[nodiscard]] Result run(const QStringList &arguments, const QString &input = {}) const;
    /// Starts and returns at once.
    [[nodiscard]] std::unique_ptr<QProcess> start(const QStringList &arguments,
                                                  const QString &input = {}) const;

    /// Process identifiers of the engines that children of this home's program run.
    [[nodiscard]] QList<qint64> enginesOf(const QProcess &program) const;

private:
    void place();

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    bool m_isPlaced = false;
    QString m_program = QStringLiteral(ORVANE_PROGRAM);
};

/// A recording of the fixtures, such as "jfk.wav".
[[nodiscard]] QString fixture(const QString &name);

/// Whether the process still exists and is no zombie.
[[nodiscard]] bool isAlive(qint64 pid);

/// What a process holds on to.
struct Holdings
{
    qint64 residentKiB = 0;
    qsizetype openFiles = 0;
};
[[nodiscard]] Holdings holdingsOf(qint64 pid);

} // namespace orvane
