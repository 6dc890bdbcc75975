#pragma once

#include "base/Operation.h"
#include "base/Scope.h"
#include "ui/presentation/RowModel.h"

#include <QElapsedTimer>
#include <QList>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <optional>
#include <stop_token>

namespace orvane {

/// Files to transcribe, one after the other in their order; one that fails does not stop those behind it.
/// Main thread.
class FileQueue : public RowModel
{
    Q_OBJECT
public:
    /// How a file is transcribed and saved: the record's id, or none when there was no speech.
    struct Transcriber
    {
        /// Waits until the engine is free.
        std::function<QCoro::Task<std::optional<QUuid>>(QString path, std::stop_token stop)> transcribe;
        /// Asks the user for files; empty when none were chosen.
        std::function<QCoro::Task<QList<QUrl>>()> choose;
    };

    explicit FileQueue(Transcriber transcriber, QObject *parent = nullptr);
    ~FileQueue() override;

    [[nodiscard]] bool isWorking() const { return m_isWorking; }

    /// Begins with the first when none is being transcribed.
    Q_INVOKABLE void add(const QList<QUrl> &urls);
    Q_INVOKABLE void choose();
    /// The interface language is another.
    void relabel() { show(); }
    /// Only among those that wait.
    Q_INVOKABLE void move(int from, int to);
    /// Also ends the one that is being transcribed.
    Q_INVOKABLE void removeAt(int index);
    /// One that failed goes to the end.
    Q_INVOKABLE void retry(int index);
    /// What is known of the file that is being transcribed.
    void setProgress(const QString &stage, double fraction, qint64 remainingMs);

Q_SIGNALS:
    /// The queue is at its end: with that record if it was of one file.
    void finished(const QUuid &onlyRecord);

private:
    enum class State { Waiting, Working, Done, Failed };
    struct Entry
    {
        int key;
        QString path;
        State state = State::Waiting;
        QString detail = {};
        double progress = 0;
        QUuid record = {};
    };

    QCoro::Task<> work();
    QCoro::Task<> add();
    [[nodiscard]] bool waits(qsizetype index) const;
    [[nodiscard]] Entry *find(int key);
    [[nodiscard]] Entry *working();
    [[nodiscard]] static QString detailOf(const Entry &entry);
    void show();

    const Transcriber m_transcriber;
    QList<Entry> m_entries;
    int m_lastKey = 0;
    bool m_isWorking = false;
    QElapsedTimer m_elapsed;
    /// Of the file that is being transcribed.
    std::stop_source m_stop;
    Scope m_scope;
};

} // namespace orvane
