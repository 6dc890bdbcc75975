// compare-joined ENGINES MODEL TEXTS…: recognises recordings twice, as a whole and as a dictation that is
// recognised while it is spoken, and prints a row of a table for each: how the words differ. How much the
// engine's answer depends on anything at all shows the whole a third time, a little later. A file of TEXTS
// has one sentence in a line, with a bar wherever the speaker may pause; one that ends in .wav is a recording
// with what it says in a file beside it.

#include "tests/support/DictationReplay.h"
#include "tests/support/Speech.h"
#include "tests/support/WordError.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <random>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr size_t laterBy = sampleRate / 4;
constexpr double shortestPause = 0.2;
constexpr double longestPause = 2;
constexpr double roomNoise = -60;                              // decibels
constexpr std::array lengths = {10, 20, 40, 60, 90, 120, 180}; // seconds, at least

struct Recording
{
    QString name;
    Speech speech;
    QString said;
};

QString contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

/// Sentences of the file, from the one of that number on, until the recording is that long.
Recording spoken(const QString &path, int seconds, qsizetype firstSentence, unsigned seed)
{
    const QString name = QFileInfo(path).baseName();
    const auto voice = name == u"russian" ? Speech::Voice::Russian : Speech::Voice::English;
    const QStringList sentences = contentOf(path).split(u'\n', Qt::SkipEmptyParts);
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> pause(shortestPause, longestPause);
    Recording recording{.name = u"%1, %2"_s.arg(name).arg(seed), .speech = {}, .said = {}};
    for (qsizetype i = firstSentence; recording.speech.seconds() < seconds; ++i) {
        for (const QString &part : sentences[i % sentences.size()].split(u'|')) {
            recording.speech.say(part, voice);
            recording.speech.pause(pause(random));
            recording.said += part + u' ';
        }
    }
    recording.speech.addNoise(roomNoise);
    return recording;
}

Recording recorded(const QString &path)
{
    Recording recording{
        .name = QFileInfo(path).baseName(), .speech = {}, .said = contentOf(path.chopped(3) + u"txt"_s)};
    recording.speech.play(path);
    return recording;
}

class Comparison
{
public:
    Comparison(const QString &engineFolder, const QString &model) : m_replay(engineFolder, model) {}

    void compare(const Recording &recording);
    void printTotal() const;

private:
    DictationReplay m_replay;
    struct
    {
        double words = 0, laterDifferent = 0, different = 0, wholeWrong = 0, joinedWrong = 0;
    } m_total;
};

void Comparison::compare(const Recording &recording)
{
    const QString asWhole = m_replay.whole(recording.speech.samples());
    const auto [text, snapshots] = m_replay.dictated(recording.speech.samples());
    std::vector<float> later(laterBy);
    later.insert(later.end(), recording.speech.samples().begin(), recording.speech.samples().end());
    const double laterDifferent = wordError(m_replay.whole(later), asWhole);
    const double different = wordError(text, asWhole);
    const double wholeWrong = wordError(asWhole, recording.said);
    const double joinedWrong = wordError(text, recording.said);
    std::printf("| %s | %.0f s | %d | %.1f %% | %.1f %% | %.1f %% | %.1f %% |\n", qPrintable(recording.name),
                recording.speech.seconds(), snapshots, 100 * laterDifferent, 100 * different,
                100 * wholeWrong, 100 * joinedWrong);
    std::fflush(stdout);
    if (different > 0)
        std::fprintf(stderr, "%s\n  whole:  %s\n  joined: %s\n", qPrintable(recording.name),
                     qPrintable(asWhole), qPrintable(text));
    const auto words = double(wordsOf(recording.said).size());
    m_total.words += words;
    m_total.different += different * double(wordsOf(asWhole).size());
    m_total.laterDifferent += laterDifferent * double(wordsOf(asWhole).size());
    m_total.wholeWrong += wholeWrong * words;
    m_total.joinedWrong += joinedWrong * words;
}

void Comparison::printTotal() const
{
    std::printf("| all, %.0f words | | | %.1f %% | %.1f %% | %.1f %% | %.1f %% |\n", m_total.words,
                100 * m_total.laterDifferent / m_total.words, 100 * m_total.different / m_total.words,
                100 * m_total.wholeWrong / m_total.words, 100 * m_total.joinedWrong / m_total.words);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (argc < 4) {
        std::fputs("usage: compare-joined ENGINES MODEL TEXTS…\n", stderr);
        return 2;
    }
    Comparison comparison(arguments[1], arguments[2]);
    for (const QString &path : arguments.mid(3)) {
        if (path.endsWith(u".wav")) {
            comparison.compare(recorded(path));
            continue;
        }
        unsigned seed = 0;
        for (const int seconds : lengths) {
            ++seed;
            comparison.compare(spoken(path, seconds, 5 * qsizetype(seed), seed));
        }
    }
    comparison.printTotal();
    return 0;
}
