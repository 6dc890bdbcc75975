#include "dictation/EarlyRecognition.h"

#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "dictation/Advice.h"
#include "dictation/Battery.h"
#include "engine/EngineTurns.h"
#include "recognition/WhisperServerEngine.h"

#include <algorithm>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// What is not longer than 0.3 s is a slip of the keys, not speech.
constexpr size_t longestSlip = sampleRate * 3 / 10;
/// Of the quiet at the end as much is recognised too, in case it holds a word after all.
constexpr size_t lastQuiet = sampleRate;
/// Dictations are in any language, whatever the files are in.
constexpr auto anyLanguage = "auto"_L1;
/// In a word or two the engine may take one language for another.
constexpr size_t enoughForLanguage = 3 * sampleRate;

} // namespace

EarlyRecognition::EarlyRecognition(Collaborators collaborators)
    : m_services(std::move(collaborators)),
      m_language(anyLanguage)
{
    spawn(load());
}

EarlyRecognition::~EarlyRecognition()
{
    m_scope.end();
}

QCoro::Task<> EarlyRecognition::load()
{
    try {
        // Goes on when the dictation is given up: the next one needs the engine too.
        co_await m_scope(m_services.engine.load(m_services.modelFile()));
        m_isLoaded = true;
    } catch (const Gone &) {
        throw;
    } catch (const Error &) {
        // The recognition will meet it again, and say so if it is still true then.
    }
}

void EarlyRecognition::hear()
{
    const std::vector<float> samples = m_services.samplesAfter(m_heard, SIZE_MAX);
    if (samples.empty())
        return; // the recording has ended
    m_heard += samples.size();
    m_speech.add(samples);
    if (mayTakeSnapshot())
        spawn(takeSnapshot());
}

bool EarlyRecognition::mayTakeSnapshot() const
{
    return m_isLoaded && !m_snapshot && m_rhythm.allows(m_speech, m_heard) && !m_services.turns.isTaken() &&
           !m_services.battery.isLow();
}

QCoro::Task<> EarlyRecognition::takeSnapshot()
{
    const std::shared_ptr<OneTimeEvent> end = m_snapshot = OneTimeEvent::create();
    m_rhythm.begin(m_speech, m_heard);
    try {
        co_await m_scope(recogniseSoFar());
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &) {
        // What is not recognised now is recognised at the end, which says what is wrong.
    }
    m_rhythm.end(m_heard);
    m_snapshot = nullptr;
    end->happen();
}

QCoro::Task<> EarlyRecognition::recogniseSoFar()
{
    useChosenModel();
    m_text.settle(m_heard, m_speech.pauses());
    const size_t end = endOfSnapshot();
    const size_t count = end - m_text.begin();
    std::vector<float> samples = m_services.samplesAfter(m_text.begin(), count);
    if (samples.size() < count)
        co_return; // the recording has ended
    // Goes on when the dictation is given up: the engine finishes its pass in any case, and one that is found
    // busy long after it was told to stop is started anew.
    co_await m_scope(recognise(std::move(samples), end, {}));
}

/// In the pause that lasts, or in one before when that is more than the model takes in at once. In much quiet
/// the engine hears words that nobody said.
size_t EarlyRecognition::endOfSnapshot() const
{
    const auto &pauses = m_speech.pauses();
    const auto fits = [begin = m_text.begin()](const PauseDetector::Pause &pause) {
        return pause.begin <= begin + DictatedText::window;
    };
    const auto last = std::find_if(pauses.rbegin(), pauses.rend(), fits);
    const bool brings = last != pauses.rend() && last->begin > m_text.begin();
    return (brings ? *last : pauses.back()).begin + PauseDetector::minQuiet;
}

QCoro::Task<QString> EarlyRecognition::textOf(std::vector<float> recording, std::stop_token stop)
{
    if (recording.size() <= longestSlip)
        co_return QString();
    m_speech.add(std::span(recording).subspan(m_heard));
    m_heard = recording.size();
    if (const auto snapshot = m_snapshot)
        co_await m_scope(snapshot->wait(stop), stop);
    useChosenModel();
    if (const std::optional<QString> text = m_text.whole(m_speech.speechEnd()))
        co_return *text;
    m_text.settle(m_heard, m_speech.pauses());
    if (m_speech.speechEnd() > 0)
        recording.resize(std::min(recording.size(), m_speech.speechEnd() + lastQuiet));
    recording.erase(recording.begin(), recording.begin() + std::ptrdiff_t(m_text.begin()));
    co_await m_scope(recognise(std::move(recording), m_heard, stop), stop);
    co_return m_text.whole(m_heard).value_or(QString());
}

void EarlyRecognition::useChosenModel()
{
    const QString model = m_services.modelFile();
    if (model.isEmpty())
        throw Error(Advice::onMissingModel().detail);
    if (std::exchange(m_model, model) == model)
        return;
    m_language = anyLanguage;
    const LiveText before = std::exchange(m_text, {}).live();
    if (before != LiveText())
        Q_EMIT liveTextChanged();
}

QCoro::Task<> EarlyRecognition::recognise(std::vector<float> samples, size_t end, std::stop_token stop)
{
    const bool isEnough = m_speech.speech() >= enoughForLanguage;
    const RecognisedSpeech speech =
        co_await m_scope(m_services.engine.transcribe(std::move(samples), m_model, m_language,
                                                      WhisperServerEngine::NonSpeech::Suppress, stop),
                         stop);
    QString text;
    for (const RawSegment &segment : speech.segments)
        text += segment.text;
    if (isEnough && !text.isEmpty() && !speech.language.isEmpty())
        m_language = speech.language;
    m_text.add(end, text);
    Q_EMIT liveTextChanged();
}

} // namespace orvane
