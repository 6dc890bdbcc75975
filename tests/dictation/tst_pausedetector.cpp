#include "dictation/PauseDetector.h"
#include "tests/support/Rows.h"
#include "tests/support/Speech.h"

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Voice = Speech::Voice;

namespace {

constexpr double silence = -200;  // decibels
constexpr size_t delivery = 1365; // samples that come at a time
constexpr size_t tolerance = sampleRate / 4;

const QString first = u"The quick brown fox jumps over the lazy dog"_s;
const QString second = u"Tomorrow we shall look for it in the forest with two dogs"_s;
const QString third = u"Nobody has ever seen it again"_s;
const QString russian = u"Меня зовут Иван, я живу в Москве и работаю инженером"_s;

PauseDetector heard(const Speech &speech)
{
    PauseDetector detector;
    for (std::span<const float> rest = speech.samples(); !rest.empty();
         rest = rest.subspan(std::min(delivery, rest.size())))
        detector.add(rest.first(std::min(delivery, rest.size())));
    return detector;
}

double seconds(size_t samples)
{
    return double(samples) / sampleRate;
}

bool isNear(size_t position, size_t expected)
{
    const bool isNear = position + tolerance >= expected && position <= expected + tolerance;
    if (!isNear)
        qWarning("%.2f s where %.2f s should be", seconds(position), seconds(expected));
    return isNear;
}

} // namespace

class TestPauseDetector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!Speech::isInstalled(Voice::English) || !Speech::isInstalled(Voice::Russian))
            QSKIP("neither flite nor festival speaks");
    }

    void hearsPauses_data()
    {
        const Rows<Voice, double> row("voice", "noise");
        for (const double noise : {silence, -60.0, -50.0, -42.0}) {
            row(u"English over %1 dB"_s.arg(noise), Voice::English, noise);
            row(u"Russian over %1 dB"_s.arg(noise), Voice::Russian, noise);
        }
    }

    void hearsPauses()
    {
        QFETCH(const Voice, voice);
        QFETCH(const double, noise);
        const bool isEnglish = voice == Voice::English;
        Speech speech;
        speech.say(isEnglish ? first : russian, voice);
        speech.pause(0.6);
        speech.say(isEnglish ? second : russian, voice);
        speech.pause(0.2); // none yet
        speech.say(isEnglish ? third : russian, voice);
        speech.pause(2);
        speech.addNoise(noise);

        const PauseDetector detector = heard(speech);
        const auto &pauses = detector.pauses();
        QCOMPARE(pauses.size(), 2U);
        for (size_t i = 0; i < 2; ++i) {
            const Speech::Pause &cut = speech.pauses()[2 * i];
            QVERIFY(isNear(pauses[i].begin, cut.begin));
            QVERIFY(isNear(pauses[i].end, cut.end));
            // Where a cut is made there is nothing of a word.
            QVERIFY(pauses[i].middle() > cut.begin && pauses[i].middle() < cut.end);
        }
        QVERIFY(detector.isPausing());
        QVERIFY(isNear(detector.speechEnd(), speech.pauses().back().begin));
        const size_t quiet = speech.pauses()[0].end - speech.pauses()[0].begin + 2 * sampleRate;
        QVERIFY(isNear(detector.speech(), speech.samples().size() - quiet));
    }

    void shortWordIsNoSpeechToPauseAfter()
    {
        Speech speech;
        speech.say(u"Yes"_s);
        speech.pause(2);
        speech.addNoise(-60);
        QVERIFY(heard(speech).pauses().empty());
    }

    void whatComesAfterSpeech_data()
    {
        const Rows<QString, float, bool> row("what", "strength", "isSpeech");
        row("a soft word", u"forest"_s, 0.1F, true);
        row("a short word", u"yes"_s, 1.0F, true);
        row("a key", {}, 0.5F, false);
    }

    void whatComesAfterSpeech()
    {
        QFETCH(const QString, what);
        QFETCH(const float, strength);
        QFETCH(const bool, isSpeech);
        Speech speech;
        speech.say(first);
        speech.pause(1);
        Speech last;
        if (what.isEmpty())
            last.add(std::vector<float>(sampleRate / 50, 1)); // 20 ms
        else
            last.say(what);
        last.makeWeaker(strength);
        speech.add(last.samples());
        speech.pause(0.2);
        speech.addNoise(-60);
        const PauseDetector detector = heard(speech);
        QCOMPARE(detector.isPausing(), !isSpeech);
        QVERIFY(isNear(detector.speechEnd(), speech.pauses()[isSpeech ? 1 : 0].begin));
    }

    /// Neither the pop of a device that begins nor a bump at the microphone makes weak speech inaudible.
    void hearsWeakSpeechAfterABump()
    {
        Speech speech;
        speech.add(std::vector<float>(sampleRate / 50, 1));
        speech.pause(0.5);
        Speech weak;
        weak.say(first);
        weak.makeWeaker(0.12F);
        speech.add(weak.samples());
        speech.pause(0.5);
        speech.add(std::vector<float>(sampleRate / 8, 0.7F)); // 125 ms
        speech.pause(0.5);
        speech.add(weak.samples());
        speech.pause(1);
        speech.addNoise(-70);
        QVERIFY(isNear(heard(speech).speechEnd(), speech.samples().size() - sampleRate));
    }

    void getsUsedToNoise()
    {
        Speech before;
        before.say(first);
        before.pause(1);
        Speech after; // a fan has been switched on
        for (int i = 0; i < 3; ++i) {
            after.say(second);
            after.pause(1);
        }
        after.addNoise(-42);
        before.add(after.samples());
        const auto pauses = heard(before).pauses();
        QVERIFY(pauses.size() >= 2);
        QVERIFY(isNear(pauses.back().end, before.samples().size()));
        QVERIFY(isNear(pauses.back().begin, before.samples().size() - sampleRate));
    }
};

QTEST_APPLESS_MAIN(TestPauseDetector)
#include "tst_pausedetector.moc"
