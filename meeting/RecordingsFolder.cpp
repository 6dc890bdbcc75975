#include "meeting/RecordingsFolder.h"

#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "base/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const QString markerSuffix = u".unfinished.json"_s;

} // namespace

RecordingsFolder::RecordingsFolder(const QString &folder) : m_folder(folder) {}

RecordedMeeting RecordingsFolder::create(RecordedMeeting meeting)
{
    makePrivateFolder(m_folder);
    meeting.audioFileName = createAudio(meeting.startedAt);
    try {
        if (std::optional<FileLock> lock = FileLock::tryLock(audioPath(meeting.audioFileName)))
            m_locks.emplace(meeting.audioFileName, std::move(*lock));
        writeMarker(meeting);
    } catch (const FileError &) {
        discard(meeting);
        throw;
    }
    return meeting;
}

QString RecordingsFolder::createAudio(const QDateTime &startedAt) const
{
    const QString base = u"Совещание "_s + startedAt.toString(u"yyyy-MM-dd HH.mm.ss"_s);
    for (int number = 1;; ++number) {
        const QString name = number == 1 ? base + u".wav"_s : u"%1 (%2).wav"_s.arg(base).arg(number);
        QFile file(audioPath(name));
        if (file.open(QFile::WriteOnly | QFile::NewOnly, privateFile))
            return name;
        if (!file.exists())
            throw FileError::notWritten(file);
    }
}

void RecordingsFolder::writeMarker(const RecordedMeeting &meeting) const
{
    replaceFile(markerPath(meeting.audioFileName), meeting.json(), FileAccess::Private);
}

void RecordingsFolder::discard(const RecordedMeeting &meeting)
{
    QFile::remove(audioPath(meeting.audioFileName));
    forget(meeting);
}

void RecordingsFolder::forget(const RecordedMeeting &meeting)
{
    QFile::remove(markerPath(meeting.audioFileName));
    m_locks.erase(meeting.audioFileName);
}

RecordingsFolder::Leftovers RecordingsFolder::leftovers()
{
    Leftovers found;
    for (const QString &marker : QDir(m_folder).entryList({u'*' + markerSuffix}, QDir::Files)) {
        try {
            if (const auto meeting = takeOver(marker.chopped(markerSuffix.size())))
                found.meetings.append(*meeting);
        } catch (const FileError &error) {
            found.problem = error.description(); // it stays as it is for the next start
        }
    }
    std::ranges::sort(found.meetings, {}, &RecordedMeeting::startedAt);
    return found;
}

std::optional<RecordedMeeting> RecordingsFolder::takeOver(const QString &audioFileName)
{
    RecordedMeeting meeting = readMarker(audioFileName);
    const QString path = audioPath(audioFileName);
    if (!QFile::exists(path)) {
        forget(meeting);
        return std::nullopt;
    }
    std::optional<FileLock> lock = FileLock::tryLock(path);
    if (!lock)
        return std::nullopt; // it is being recorded or transcribed
    const quint64 bytes = WavFileWriter::repair(path, sampleRate);
    if (bytes == 0) {
        forget(meeting);
        return std::nullopt;
    }
    meeting.durationMs = static_cast<qint64>(bytes / 2 * 1000 / sampleRate);
    m_locks.emplace(audioFileName, std::move(*lock));
    return meeting;
}

// A marker that does not tell all costs no recording.
RecordedMeeting RecordingsFolder::readMarker(const QString &audioFileName) const
{
    QFile file(markerPath(audioFileName));
    std::optional<RecordedMeeting> meeting;
    if (file.open(QFile::ReadOnly))
        meeting = RecordedMeeting::fromJson(file.readAll());
    if (!meeting) {
        meeting.emplace();
        meeting->languageCode = u"auto"_s;
        meeting->startedAt = QFileInfo(file).lastModified(); // it is written at the start
    }
    meeting->audioFileName = audioFileName;
    return *meeting;
}

QString RecordingsFolder::audioPath(const QString &fileName) const
{
    return m_folder + u'/' + fileName;
}

QString RecordingsFolder::markerPath(const QString &audioFileName) const
{
    return audioPath(audioFileName) + markerSuffix;
}

} // namespace orvane
