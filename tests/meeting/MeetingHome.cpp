#include "tests/meeting/MeetingHome.h"

#include "base/Async.h"

#include <QFile>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QCoro::Task<bool> answer(bool isAllowed)
{
    co_await sleepFor(std::chrono::milliseconds(1));
    co_return isAllowed;
}

} // namespace

MeetingHome::MeetingHome(const QString &folder, const QString &engineFolder)
    : m_folders({.applicationSupport = folder, .resources = engineFolder, .temporary = folder}),
      m_defaults(folder + u"/settings.json"_s),
      m_settings(m_defaults),
      m_models(m_folders.models()),
      m_decoder(engineFolder)
{
    installModel(u"base"_s);
    m_history = std::make_unique<HistoryStore>(m_folders);
    m_engine = std::make_unique<WhisperServerEngine>(
        EngineServer::SearchPath{.resources = engineFolder, .folders = {}}, m_registry, folder);
    m_pipeline = std::make_unique<TranscriptPipeline>(*m_engine, m_decoder);
    MeetingTranscriber::AccessRequest request = [isAllowed = m_isAllowed](const std::stop_token &) {
        return answer(*isAllowed);
    };
    m_meeting = std::make_unique<MeetingTranscriber>(
        MeetingTranscriber::Collaborators{
            .models = m_models,
            .settings = m_settings,
            .history = *m_history,
            .pipeline = *m_pipeline,
            .turns = m_turns,
            .makeSource = [control = m_control] { return std::make_unique<FakeMeetingSource>(control); },
            .requestMicrophone = request,
            .freeSpace = [freeSpace = m_freeSpace](const QString &) -> qint64 { return *freeSpace; }},
        m_folders.recordings());
}

void MeetingHome::installModel(const QString &id)
{
    QDir().mkpath(m_folders.models());
    QFile model(m_models.localPath(id));
    if (!model.open(QFile::WriteOnly))
        qFatal("cannot make %s", qPrintable(model.fileName()));
    model.write("lmgg");
    model.close();
    m_models.refresh();
}

qint64 MeetingHome::patternIn(const QString &audioFileName) const
{
    QFile file(recordings().filePath(audioFileName));
    if (!file.open(QFile::ReadOnly))
        return -1;
    const QByteArray bytes = file.readAll();
    const auto count = static_cast<size_t>(bytes.size() - 44) / 2;
    if (bytes.size() < 44 || qFromLittleEndian<quint32>(bytes.constData() + 40) != count * 2 ||
        qFromLittleEndian<quint32>(bytes.constData() + 4) != count * 2 + 36)
        return -1;
    for (size_t i = 0; i < count; ++i) {
        if (qFromLittleEndian<qint16>(bytes.constData() + 44 + 2 * i) != FakeMeetingSource::storedPattern(i))
            return -1;
    }
    return static_cast<qint64>(count);
}

} // namespace orvane
