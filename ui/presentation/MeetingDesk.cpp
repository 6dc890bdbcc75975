#include "ui/presentation/MeetingDesk.h"

#include "audio/Microphone.h"
#include "audio/SampleRate.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "meeting/MeetingTranscriber.h"
#include "ui/presentation/Spans.h"

#include <QDesktopServices>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

using Localization::text;

namespace {

/// How soon a microphone that was plugged in is seen, and a disk that fills.
constexpr auto lookInterval = 5s;
constexpr qint64 bytesPerSecond = qint64(sampleRate) * 2;

QString shownRoom(qint64 bytes)
{
    constexpr qint64 minute = 60;
    const qint64 minutes = bytes / bytesPerSecond / minute;
    return minutes < 2 * minute ? text(u"на диске места на %1 мин").arg(minutes)
                                : text(u"на диске места на %1 ч").arg(minutes / minute);
}

} // namespace

MeetingDesk::Machine MeetingDesk::Machine::ofUser(const QString &moduleFolder,
                                                  const QString &recordingsFolder)
{
    return {.microphone = [moduleFolder] { return microphoneName(moduleFolder); },
            .freeSpace = [recordingsFolder] { return MeetingRecorder::freeSpaceOfDisk(recordingsFolder); },
            .open = QDesktopServices::openUrl};
}

MeetingDesk::MeetingDesk(MeetingTranscriber &meeting, Machine machine, QObject *parent)
    : QObject(parent),
      m_meeting(meeting),
      m_machine(std::move(machine)),
      m_leftovers({"name", "title", "detail"})
{
    for (const auto signal :
         {&MeetingState::stateChanged, &MeetingState::statusTextChanged, &MeetingState::errorTextChanged,
          &MeetingState::resultChanged, &MeetingState::outcomeChanged})
        connect(&meeting, signal, this, &MeetingDesk::changed);
    connect(&meeting, &MeetingTranscriber::elapsedChanged, this, &MeetingDesk::clockChanged);
    connect(&meeting, &MeetingTranscriber::levelChanged, this, &MeetingDesk::waveformChanged);
    connect(&meeting, &MeetingTranscriber::progressChanged, this, &MeetingDesk::progressChanged);
    connect(&meeting, &MeetingTranscriber::leftoversChanged, this, &MeetingDesk::showLeftovers);
    m_look.setInterval(lookInterval);
    m_look.callOnTimeout(this, [this] { spawn(look()); });
    showLeftovers();
}

MeetingDesk::~MeetingDesk()
{
    m_scope.end();
}

void MeetingDesk::setShown(bool shown)
{
    if (shown == isShown())
        return;
    if (shown) {
        m_look.start();
        spawn(look());
        showLeftovers(); // in the language of now
    } else {
        m_look.stop();
    }
    Q_EMIT shownChanged();
}

QCoro::Task<> MeetingDesk::look()
{
    const qint64 freeSpace = co_await m_scope(offMainThread(m_machine.freeSpace));
    const QString microphone = co_await m_scope(m_machine.microphone());
    m_freeSpace = freeSpace;
    m_microphone = microphone;
    m_hasLooked = true;
    Q_EMIT surroundingsChanged();
}

bool MeetingDesk::isRunning() const
{
    return m_meeting.isRunning();
}

bool MeetingDesk::isTranscribing() const
{
    return m_meeting.isTranscribing();
}

QString MeetingDesk::startRefusal() const
{
    return m_meeting.startRefusal();
}

QString MeetingDesk::statusText() const
{
    if (isRunning())
        return text(u"Идёт запись…"); // the warning has a line of its own
    const bool isOfAnEarlierOne = m_meeting.outcome() == MeetingState::Outcome::NotStarted;
    return isOfAnEarlierOne ? QString() : m_meeting.statusText();
}

QString MeetingDesk::errorText() const
{
    return m_meeting.errorText();
}

QString MeetingDesk::warning() const
{
    QString warning = m_meeting.warning();
    if (!warning.isEmpty())
        warning.front() = warning.front().toUpper();
    return warning;
}

QString MeetingDesk::lastRecordId() const
{
    const QUuid id = m_meeting.lastRecordID();
    return id.isNull() ? QString() : id.toString();
}

QString MeetingDesk::clock() const
{
    return Spans::clock(qint64(m_meeting.elapsed() * 1000));
}

QList<float> MeetingDesk::waveform() const
{
    return m_meeting.waveform();
}

double MeetingDesk::progress() const
{
    return m_meeting.progress();
}

QString MeetingDesk::remaining() const
{
    return Spans::remaining(m_meeting.remainingMs());
}

QString MeetingDesk::surroundings() const
{
    if (!m_hasLooked)
        return {};
    QStringList parts = {m_microphone.isEmpty() ? text(u"Микрофон не найден") : m_microphone};
    if (m_freeSpace >= 0)
        parts.append(shownRoom(m_freeSpace));
    return parts.join(u" · "_s);
}

void MeetingDesk::start()
{
    spawn(m_meeting.start());
}

void MeetingDesk::stop()
{
    m_meeting.stop();
}

void MeetingDesk::cancelTranscription()
{
    m_meeting.cancelTranscription();
}

void MeetingDesk::showLeftovers()
{
    QList<QVariantMap> rows;
    for (const RecordedMeeting &leftover : m_meeting.leftovers()) {
        rows.append({{u"name"_s, leftover.audioFileName},
                     {u"title"_s, meetingTitle(leftover.startedAt)},
                     {u"detail"_s, Spans::clock(leftover.durationMs)}});
    }
    m_leftovers.setRows(rows);
}

QString MeetingDesk::leftoverAt(int index) const
{
    return index >= 0 && index < m_leftovers.count()
               ? m_leftovers.rows().at(index).value(u"name"_s).toString()
               : QString();
}

void MeetingDesk::playLeftover(int index)
{
    const QString path = m_meeting.leftoverPath(leftoverAt(index));
    if (!path.isEmpty() && !m_machine.open(QUrl::fromLocalFile(path)))
        Q_EMIT refused(text(u"Открыть запись нечем: ") + path);
}

void MeetingDesk::transcribeLeftover(int index)
{
    if (const QString reason = m_meeting.leftoverRefusal(); !reason.isEmpty())
        Q_EMIT refused(reason);
    else
        m_meeting.transcribeLeftover(leftoverAt(index));
}

void MeetingDesk::dismissLeftover(int index)
{
    m_meeting.dismissLeftover(leftoverAt(index));
}

void MeetingDesk::relabel()
{
    showLeftovers();
    Q_EMIT changed();
    Q_EMIT progressChanged();
    Q_EMIT surroundingsChanged();
}

} // namespace orvane
