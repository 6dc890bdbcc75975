#include "tests/support/Speech.h"

#include "audio/WavFileWriter.h"

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <random>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr qsizetype headerSize = 44;
constexpr float inaudible = 0.003F;

QString program(Speech::Voice voice)
{
    return voice == Speech::Voice::English ? u"flite"_s : u"text2wave"_s;
}

/// Without the moment of nothing at both ends.
std::vector<float> played(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    const QByteArray bytes = file.readAll().mid(headerSize);
    std::vector<float> said(size_t(bytes.size() / 2));
    for (size_t i = 0; i < said.size(); ++i)
        said[i] = float(qFromLittleEndian<qint16>(bytes.constData() + 2 * i)) / 32768;
    const auto isAudible = [](float sample) { return std::abs(sample) > inaudible; };
    said.erase(std::find_if(said.rbegin(), said.rend(), isAudible).base(), said.end());
    said.erase(said.begin(), std::ranges::find_if(said, isAudible));
    return said;
}

std::vector<float> spoken(const QString &text, Speech::Voice voice)
{
    const QTemporaryDir folder;
    const QString textFile = folder.filePath(u"text"_s);
    const QString sound = folder.filePath(u"sound.wav"_s);
    QFile file(textFile);
    if (!file.open(QFile::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("no place for a text");
    file.close();
    const QStringList arguments =
        voice == Speech::Voice::English
            ? QStringList{u"-voice"_s, u"rms"_s, u"-f"_s, textFile, u"-o"_s, sound}
            : QStringList{u"-eval"_s, u"(voice_msu_ru_nsh_clunits)"_s, textFile, u"-o"_s, sound};
    if (QProcess::execute(program(voice), arguments) != 0)
        qFatal("nobody speaks");
    return played(sound);
}

} // namespace

bool Speech::isInstalled(Voice voice)
{
    return !QStandardPaths::findExecutable(program(voice)).isEmpty();
}

void Speech::say(const QString &text, Voice voice)
{
    static QHash<QString, std::vector<float>> said; // voices are slow
    std::vector<float> &samples = said[text];
    if (samples.empty())
        samples = spoken(text, voice);
    add(samples);
}

void Speech::play(const QString &file)
{
    add(played(file));
}

void Speech::add(std::span<const float> samples)
{
    m_samples.insert(m_samples.end(), samples.begin(), samples.end());
}

void Speech::makeWeaker(float factor)
{
    for (float &sample : m_samples)
        sample *= factor;
}

void Speech::pause(double seconds)
{
    const size_t begin = m_samples.size();
    m_samples.resize(begin + size_t(seconds * sampleRate));
    m_pauses.push_back({.begin = begin, .end = m_samples.size()});
}

void Speech::addNoise(double decibels)
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, float(std::pow(10, decibels / 20)));
    for (float &sample : m_samples)
        sample = std::clamp(sample + noise(random), -1.0F, 1.0F);
}

void Speech::write(const QString &file) const
{
    WavFileWriter writer(file, sampleRate);
    appendInPieces(writer, m_samples);
    writer.finalize();
}

} // namespace orvane::test
