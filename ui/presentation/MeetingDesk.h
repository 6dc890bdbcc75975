#pragma once

#include "base/Scope.h"
#include "ui/presentation/RowModel.h"

#include <QTimer>
#include <QUrl>

#include <functional>

namespace orvane {

class MeetingTranscriber;

/// The page of meetings: what is recorded or transcribed, what became of the last one, and the recordings
/// that are not transcribed yet. Main thread.
class MeetingDesk : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isShown READ isShown WRITE setShown NOTIFY shownChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY changed)
    Q_PROPERTY(bool isTranscribing READ isTranscribing NOTIFY changed)
    Q_PROPERTY(bool canStart READ canStart NOTIFY changed)
    Q_PROPERTY(QString startRefusal READ startRefusal NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)
    Q_PROPERTY(QString warning READ warning NOTIFY changed)
    Q_PROPERTY(QString lastRecordId READ lastRecordId NOTIFY changed)
    Q_PROPERTY(QString clock READ clock NOTIFY clockChanged)
    Q_PROPERTY(QList<float> waveform READ waveform NOTIFY waveformChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString remaining READ remaining NOTIFY progressChanged)
    Q_PROPERTY(QString surroundings READ surroundings NOTIFY surroundingsChanged)
    Q_PROPERTY(QAbstractItemModel *leftovers READ leftovers CONSTANT)

public:
    /// What the page asks the machine.
    struct Machine
    {
        /// What the microphone is called; empty when there is none.
        std::function<QCoro::Task<QString>()> microphone;
        /// Bytes that recordings can still take; negative when unknown. Called on another thread.
        std::function<qint64()> freeSpace;
        /// Opens a file with the desktop's own program; false when there is none.
        std::function<bool(const QUrl &)> open;

        /// This one: the module that records lies in `moduleFolder`.
        [[nodiscard]] static Machine ofUser(const QString &moduleFolder, const QString &recordingsFolder);
    };

    /// The meeting outlives this.
    MeetingDesk(MeetingTranscriber &meeting, Machine machine, QObject *parent = nullptr);
    ~MeetingDesk() override;

    /// While it is, the machine is asked.
    [[nodiscard]] bool isShown() const { return m_look.isActive(); }
    void setShown(bool shown);

    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] bool isTranscribing() const;
    [[nodiscard]] bool canStart() const { return startRefusal().isEmpty(); }
    [[nodiscard]] QString startRefusal() const;
    /// What goes on, or how the last meeting ended.
    [[nodiscard]] QString statusText() const;
    [[nodiscard]] QString errorText() const;
    /// What the user should know of the recording in progress; empty when there is nothing.
    [[nodiscard]] QString warning() const;
    /// Empty without one.
    [[nodiscard]] QString lastRecordId() const;
    /// "24:07"
    [[nodiscard]] QString clock() const;
    [[nodiscard]] QList<float> waveform() const;
    [[nodiscard]] double progress() const;
    /// "осталось 4 мин"; empty while unknown.
    [[nodiscard]] QString remaining() const;
    /// The microphone and for how long the disk has room.
    [[nodiscard]] QString surroundings() const;
    [[nodiscard]] RowModel *leftovers() { return &m_leftovers; }

    Q_INVOKABLE void start();
    Q_INVOKABLE void stop();
    Q_INVOKABLE void cancelTranscription();
    Q_INVOKABLE void playLeftover(int index);
    Q_INVOKABLE void transcribeLeftover(int index);
    Q_INVOKABLE void dismissLeftover(int index);

    /// The interface language is another.
    void relabel();

Q_SIGNALS:
    void shownChanged();
    void changed();
    void clockChanged();
    void waveformChanged();
    void progressChanged();
    void surroundingsChanged();
    /// Why what was asked for cannot be done, one sentence.
    void refused(const QString &reason);

private:
    void showLeftovers();
    [[nodiscard]] QString leftoverAt(int index) const;
    QCoro::Task<> look();

    MeetingTranscriber &m_meeting;
    const Machine m_machine;
    RowModel m_leftovers;
    QString m_microphone;
    qint64 m_freeSpace = -1;
    bool m_hasLooked = false;
    QTimer m_look;
    Scope m_scope;
};

} // namespace orvane
