#include "ui/presentation/ListeningMicrophone.h"

#include "audio/CaptureError.h"
#include "audio/MicrophoneAccess.h"
#include "base/Async.h"
#include "base/localization/Localization.h"

namespace orvane {

namespace {

/// A level that room noise does not reach.
constexpr float speech = 0.4F;

} // namespace

ListeningMicrophone::ListeningMicrophone(const QString &moduleFolder, QObject *parent)
    : QObject(parent),
      m_recorder(moduleFolder)
{
    m_recorder.setChunks(1, [](const std::vector<float> &) {});
    connect(&m_recorder, &AudioRecorder::levelChanged, this, &ListeningMicrophone::takeLevel);
    connect(&m_recorder, &AudioRecorder::deviceIsSilentChanged, this, &ListeningMicrophone::changed);
    connect(&m_recorder, &AudioRecorder::endedByItself, this, &ListeningMicrophone::setProblem);
}

ListeningMicrophone::~ListeningMicrophone()
{
    m_scope.end();
    m_listening.request_stop();
}

QString ListeningMicrophone::text() const
{
    if (!m_problem.isEmpty())
        return m_problem;
    if (m_recorder.deviceIsSilent())
        return Localization::text(u"Нет звука с микрофона — проверьте его");
    return m_hasHeard ? Localization::text(u"Микрофон слышит вас.")
                      : Localization::text(u"Скажите что-нибудь: полоски должны подпрыгнуть.");
}

void ListeningMicrophone::listen()
{
    m_listening.request_stop();
    m_listening = std::stop_source();
    setProblem({});
    spawn(open(m_listening.get_token()));
}

QCoro::Task<> ListeningMicrophone::open(std::stop_token stop)
{
    QString problem;
    try {
        const bool isAllowed = co_await m_scope(requestMicrophone(stop), stop);
        if (!isAllowed)
            throw CaptureError(CaptureError::accessRefused());
        co_await m_scope(m_recorder.start(), stop);
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        problem = descriptionOf(error);
    }
    if (!problem.isEmpty())
        setProblem(problem);
}

void ListeningMicrophone::end()
{
    m_listening.request_stop();
    m_recorder.discard();
}

void ListeningMicrophone::takeLevel()
{
    Q_EMIT levelChanged();
    if (m_hasHeard || m_recorder.level() < speech)
        return;
    m_hasHeard = true;
    Q_EMIT changed();
}

void ListeningMicrophone::setProblem(const QString &text)
{
    m_problem = text;
    Q_EMIT changed();
}

} // namespace orvane
