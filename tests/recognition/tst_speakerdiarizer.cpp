#include "audio/AudioDecoder.h"
#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "recognition/labelling/SpeakerDiarizer.h"
#include "recognition/labelling/VoiceFeatures.h"
#include "tests/recognition/PlainLabelling.h"
#include "tests/recognition/Voices.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Segments = QList<DisplaySegment>;

namespace {

using Numbers = QList<qint64>;

Numbers speakersOf(const Segments &segments)
{
    Numbers speakers;
    for (const DisplaySegment &segment : segments)
        speakers.append(segment.speaker.value_or(0));
    return speakers;
}

/// Voices one after the other, and a segment for each.
class Talk
{
public:
    Talk &say(double seconds, float pitch, float noise = 0)
    {
        const std::vector<float> voice = Voices::vowel(seconds, pitch, noise, m_random);
        return add(voice);
    }
    Talk &beSilent(double seconds)
    {
        return add(std::vector<float>(static_cast<size_t>(seconds * sampleRate)));
    }

    [[nodiscard]] const std::vector<float> &samples() const { return m_samples; }
    [[nodiscard]] const Segments &segments() const { return m_segments; }

private:
    Talk &add(const std::vector<float> &voice)
    {
        const auto milliseconds = [this] {
            return static_cast<qint64>(m_samples.size()) * 1000 / sampleRate;
        };
        DisplaySegment segment;
        segment.start = milliseconds();
        m_samples.insert(m_samples.end(), voice.begin(), voice.end());
        segment.end = milliseconds();
        m_segments.append(segment);
        return *this;
    }

    std::mt19937 m_random{1};
    std::vector<float> m_samples;
    Segments m_segments;
};

} // namespace

class TestSpeakerDiarizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersVoices_data()
    {
        const Rows<Talk, int, Numbers> row("talk", "max", "speakers");
        row("two in turn, the higher first", Talk().say(1, 240).say(1, 100).say(1, 250).say(1, 105), 2,
            Numbers{1, 2, 1, 2});
        row("alike", Talk().say(1, 120).say(1, 125).say(1, 118), 2, Numbers{1, 1, 1});
        row("short ones count with the one before",
            Talk().say(0.2, 100).say(1, 240).say(0.2, 100).say(1, 100).beSilent(1).say(0.2, 240), 2,
            Numbers{1, 1, 1, 2, 2, 2});
        row("too short to tell anything", Talk().say(0.2, 100).say(0.2, 300), 2, Numbers{1, 1});
        row("only one is asked for", Talk().say(1, 100).say(1, 300), 1, Numbers{1, 1});
        row("three", Talk().say(1, 90).say(1, 200).say(1, 330).say(1, 91), 3, Numbers{1, 2, 3, 1});
        row("none", Talk(), 2, Numbers());
    }

    void numbersVoices()
    {
        QFETCH(const Talk, talk);
        QFETCH(const int, max);
        QFETCH(const Numbers, speakers);
        const Segments labelled =
            SpeakerDiarizer::assignByVoice(talk.segments(), talk.samples(), sampleRate, max);
        QCOMPARE(speakersOf(labelled), speakers);
        for (qsizetype i = 0; i < labelled.size(); ++i)
            QCOMPARE(labelled[i].id, talk.segments()[i].id);
    }

    void toleratesTimesBeyondTheAudio()
    {
        const Talk talk = Talk().say(1, 240).say(1, 100);
        Segments segments = talk.segments();
        constexpr qint64 far = std::numeric_limits<qint64>::max();
        for (const auto &[start, end] :
             {std::pair(far - 1, far), {-far, -far + 1}, {5000, 9000}, {900, 100}}) {
            DisplaySegment segment;
            segment.start = start;
            segment.end = end;
            segments.append(segment);
        }
        const Segments labelled = SpeakerDiarizer::assignByVoice(segments, talk.samples(), sampleRate, 2);
        QCOMPARE(speakersOf(labelled), (Numbers{1, 2, 2, 2, 2, 2}));
    }

    void featuresAreThoseOfThePlainForm()
    {
        std::mt19937 random(1);
        const auto between = [&random](float min, float max) {
            return std::uniform_real_distribution(min, max)(random);
        };
        Talk talk;
        for (int i = 0; i < 60; ++i) {
            const double seconds = between(0.1F, 2.2F);
            if (between(0, 1) < 0.1F)
                talk.beSilent(seconds);
            else
                talk.say(seconds, between(60, 420), between(0, 1) < 0.5F ? between(0, 0.4F) : 0);
        }
        for (const DisplaySegment &segment : talk.segments()) {
            const std::vector<float> span(talk.samples().begin() + segment.start * sampleRate / 1000,
                                          talk.samples().begin() + segment.end * sampleRate / 1000);
            const auto plain = PlainLabelling::features(span, sampleRate);
            const auto ours = SpeakerDiarizer::voiceFeatures(span, sampleRate);
            QCOMPARE(ours.has_value(), plain.has_value());
            if (plain)
                QVERIFY(std::ranges::equal(*ours, *plain)); // to the last bit
        }
    }

    void labelsFiles()
    {
        const AudioDecoder decoder{QStringLiteral(ORVANE_RESOURCES)};
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.wav"_s);
        const Talk talk = Talk().say(1, 240).say(1, 100);
        WavFileWriter writer(path, sampleRate);
        writer.append(talk.samples());
        writer.finalize();

        const auto labelled = finished(SpeakerDiarizer::assignByVoice(talk.segments(), path, 2, &decoder));
        QVERIFY(labelled.succeeded());
        QCOMPARE(speakersOf(labelled.value()), (Numbers{1, 2}));

        const auto unreadable = finished(
            SpeakerDiarizer::assignByVoice(talk.segments(), folder.filePath(u"none.wav"_s), 2, &decoder));
        QVERIFY(unreadable.succeeded());
        QCOMPARE(speakersOf(unreadable.value()), (Numbers{1, 1}));

        std::stop_source stop;
        stop.request_stop();
        const TaskResult stopped(
            SpeakerDiarizer::assignByVoice(talk.segments(), path, 2, &decoder, stop.get_token()));
        QTRY_VERIFY(stopped.isCancelled());
    }
};

QTEST_GUILESS_MAIN(TestSpeakerDiarizer)
#include "tst_speakerdiarizer.moc"
