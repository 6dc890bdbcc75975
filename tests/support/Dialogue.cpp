#include "tests/support/Dialogue.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

struct Line
{
    qint64 speaker;
    QString text;
};

const QList<Line> &lines()
{
    static const QList<Line> all = {
        {1, u"Good morning everyone. Let us hear about the money for the new year."_s},
        {2, u"Thank you, I have all the numbers here, and they are a little lower than we hoped."_s},
        {1, u"Then we will talk about the building, who would like to begin?"_s},
        {2, u"Our garden and the big old kitchen, both of them need more room."_s},
    };
    return all;
}

QSet<QString> wordsOf(const QString &text)
{
    static const QRegularExpression noLetters(u"[^a-z]+"_s);
    const QStringList words = text.toLower().split(noLetters, Qt::SkipEmptyParts);
    return {words.begin(), words.end()};
}

QSet<QString> wordsOf(qint64 speaker)
{
    QSet<QString> words;
    for (const Line &line : lines()) {
        if (line.speaker == speaker)
            words += wordsOf(line.text);
    }
    return words;
}

void run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60'000) || process.exitCode() != 0)
        qFatal("%s fails: %s", qPrintable(program), process.readAllStandardError().constData());
}

} // namespace

bool Dialogue::canSpeak()
{
    return !QStandardPaths::findExecutable(u"flite"_s).isEmpty() &&
           !QStandardPaths::findExecutable(u"ffmpeg"_s).isEmpty();
}

Dialogue::Dialogue(const QString &folder) : m_folder(folder)
{
    for (const Line &line : lines()) {
        const QString near = folder + u"/near%1.wav"_s.arg(m_turns.size());
        const QString far = folder + u"/far%1.wav"_s.arg(m_turns.size());
        const QString voice = line.speaker == 1 ? u"rms"_s : u"slt"_s;
        run(u"flite"_s, {u"-voice"_s, voice, u"-t"_s, line.text, u"-o"_s, near});
        // Across the room little of the hissing sounds arrives.
        run(u"ffmpeg"_s,
            {u"-v"_s, u"error"_s, u"-i"_s, near, u"-af"_s, u"lowpass=f=1200,apad=pad_dur=0.7"_s, far});
        m_turns.append({.speaker = line.speaker, .sound = far});
    }
}

QString Dialogue::joined() const
{
    QStringList arguments = {u"-v"_s, u"error"_s};
    for (const Turn &turn : m_turns)
        arguments << u"-i"_s << turn.sound;
    const QString whole = m_folder + u"/dialogue.wav"_s;
    run(u"ffmpeg"_s,
        arguments << u"-filter_complex"_s << u"concat=n=%1:v=0:a=1"_s.arg(m_turns.size()) << whole);
    return whole;
}

std::optional<qint64> Dialogue::speakerOf(const QString &text)
{
    const QSet<QString> words = wordsOf(text);
    const QSet<QString> first = wordsOf(1);
    const QSet<QString> second = wordsOf(2);
    const bool isOfFirst = words.intersects(first - second);
    const bool isOfSecond = words.intersects(second - first);
    if (isOfFirst == isOfSecond)
        return std::nullopt;
    return isOfFirst ? 1 : 2;
}

} // namespace orvane::test
