#include "tests/support/DictationReplay.h"

#include "dictation/EarlyRecognition.h"
#include "tests/support/TaskResult.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr size_t delivery = sampleRate / 10;

template <typename Value>
Value resultOf(QCoro::Task<Value> task)
{
    const TaskResult<Value> result = finished(std::move(task));
    if (!result.succeeded())
        qFatal("%s", qPrintable(result.error()));
    return result.value();
}

} // namespace

DictationReplay::DictationReplay(const QString &engineFolder, const QString &model)
    : m_model(model),
      m_engine({.resources = {}, .folders = {engineFolder}}, m_registry, m_folder.path())
{}

QString DictationReplay::whole(const std::vector<float> &samples)
{
    const RecognisedSpeech speech =
        resultOf(m_engine.transcribe(samples, m_model, u"auto"_s, WhisperServerEngine::NonSpeech::Suppress));
    QString text;
    for (const RawSegment &segment : speech.segments)
        text += segment.text;
    return text.trimmed();
}

DictationReplay::Dictated DictationReplay::dictated(const std::vector<float> &samples)
{
    if (const auto load = finished(m_engine.load(m_model)); !load.succeeded())
        qFatal("%s", qPrintable(load.error()));
    size_t heard = 0;
    int begun = 0;
    int answered = 0;
    const auto samplesAfter = [&](size_t first, size_t count) {
        // What was read before is read again for a snapshot only.
        begun += first + delivery < heard ? 1 : 0;
        return std::vector<float>(samples.begin() + std::ptrdiff_t(first),
                                  samples.begin() + std::ptrdiff_t(first + std::min(count, heard - first)));
    };
    EarlyRecognition recognition({.engine = m_engine,
                                  .turns = m_turns,
                                  .battery = m_battery,
                                  .modelFile = [this] { return m_model; },
                                  .samplesAfter = samplesAfter});
    QObject::connect(&recognition, &EarlyRecognition::liveTextChanged, &recognition, [&] { ++answered; });
    while (heard < samples.size()) {
        heard = std::min(heard + delivery, samples.size());
        recognition.hear();
        while (answered < begun)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return {.text = resultOf(recognition.textOf(samples, {})), .snapshots = begun};
}

} // namespace orvane::test
