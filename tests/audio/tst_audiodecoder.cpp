#include "FailingReads.h"

#include "audio/AudioDecoder.h"
#include "audio/AudioDecoderError.h"
#include "base/localization/Localization.h"
#include "tests/support/Tone.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using Kind = AudioDecoderError::Kind;

namespace {

constexpr int rate = 16000;
constexpr double pitch = 440;
constexpr double level = 0.5;

// ffmpeg's arguments for a source of two seconds in which every channel sounds at 440 Hz.
QStringList tone(int sourceRate, const QString &layout, int channels, double seconds = 2,
                 double frequency = pitch)
{
    const QString wave = u"%1*sin(2*PI*%2*t)"_s.arg(level).arg(frequency);
    const QString source = u"aevalsrc=%1:s=%2:d=%3:c=%4"_s.arg(QStringList(channels, wave).join(u'|'))
                               .arg(sourceRate)
                               .arg(seconds)
                               .arg(layout);
    return {u"-f"_s, u"lavfi"_s, u"-i"_s, source};
}

QStringList stereo(int sourceRate = 44100, double seconds = 2)
{
    return tone(sourceRate, u"stereo"_s, 2, seconds);
}

const QStringList picture = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=s=64x48:r=10:d=2"_s};

// Empty unless the samples are that tone and nothing else, for about that long.
QString faultOf(const std::vector<float> &samples, double seconds = 2, double amplitude = level)
{
    const auto count = double(samples.size());
    if (std::abs(count - seconds * rate) > 0.06 * rate) // what encoders add or cut at the ends
        return u"%1 samples for %2 s"_s.arg(count).arg(seconds);
    if (!std::ranges::all_of(samples, [](float sample) { return sample >= -1 && sample <= 1; }))
        return u"samples outside of −1…1"_s;
    const auto middle = std::span(samples).subspan(samples.size() / 4, samples.size() / 2);
    const double found = amplitudeAt(pitch, middle);
    const double all = wholeAmplitude(middle);
    if (std::abs(found - amplitude) > 0.06 * amplitude || std::abs(all - found) > 0.02 * amplitude)
        return u"amplitude %1, whole %2 instead of %3"_s.arg(found).arg(all).arg(amplitude);
    return {};
}

} // namespace

class TestAudioDecoder : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_folder;
    const AudioDecoder m_decoder{QStringLiteral(ORVANE_RESOURCES)};

    [[nodiscard]] QString at(const QString &name) const { return m_folder.filePath(name); }

    // Makes a file with the ffmpeg program; its path.
    QString make(const QString &name, const QStringList &arguments) const
    {
        QProcess ffmpeg;
        ffmpeg.start(u"ffmpeg"_s, QStringList{u"-nostdin"_s, u"-v"_s, u"error"_s, u"-y"_s} + arguments +
                                      QStringList{at(name)});
        if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitCode() != 0)
            qFatal("ffmpeg did not make %s: %s %s", qUtf8Printable(name),
                   qUtf8Printable(ffmpeg.errorString()), ffmpeg.readAllStandardError().constData());
        return at(name);
    }

    QString put(const QString &name, const QByteArray &content) const
    {
        QFile file(at(name));
        if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
            qFatal("%s: %s", qUtf8Printable(name), qUtf8Printable(file.errorString()));
        return at(name);
    }

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

    // The error's description; "decoded" when there is none.
    QString failure(const QString &path) const
    {
        try {
            return u"decoded %1"_s.arg(m_decoder.decode(path).size());
        } catch (const AudioDecoderError &error) {
            return error.description();
        }
    }

    // Empty unless the file decodes to the tone.
    QString faultOfFile(const QString &path, double seconds = 2) const
    {
        try {
            return faultOf(m_decoder.decode(path), seconds);
        } catch (const Error &error) {
            return error.description();
        }
    }

private Q_SLOTS:
    void initTestCase();
    void cleanup() { Localization::setLanguage(u"ru"_s); }

    void decodes_data();
    void decodes();
    void unknownLayout_data();
    void unknownLayout();
    void mixesLikeOtherPrograms();
    void onlyTheFirstTrack();
    void notANumber();
    void changesOnTheWay_data();
    void changesOnTheWay();
    void lengthNotTold();

    void refuses_data();
    void refuses();
    void refusesInEnglish();
    void namesAreNotAddresses_data();
    void namesAreNotAddresses();
    void opensNothingElse_data();
    void opensNothingElse();
    void readErrors_data();
    void readErrors();

    void endsEarly_data();
    void endsEarly();
    void skipsDamage_data();
    void skipsDamage();
    void survivesAnyDamage_data();
    void survivesAnyDamage();

    void duration_data();
    void duration();
    void cancels();
    void withoutModule();
    void onManyThreads();
};

void TestAudioDecoder::initTestCase()
{
    QVERIFY2(!QStandardPaths::findExecutable(u"ffmpeg"_s).isEmpty(),
             "The ffmpeg program makes the files for this test and is not installed.");
    QVERIFY(m_folder.isValid());
}

void TestAudioDecoder::decodes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");

    const auto row = [](const QString &name, const QStringList &source, const QStringList &codec = {}) {
        QTest::newRow(qUtf8Printable(name)) << name << source + codec;
    };
    const auto as = [](const char *codec) { return QStringList{u"-c:a"_s, QString::fromLatin1(codec)}; };
    row(u"16.wav"_s, stereo());
    row(u"8bit.wav"_s, tone(8000, u"mono"_s, 1), as("pcm_u8"));
    row(u"24bit.wav"_s, stereo(192000), as("pcm_s24le"));
    row(u"float.wav"_s, stereo(96000), as("pcm_f32le"));
    row(u"double.wav"_s, tone(16000, u"mono"_s, 1), as("pcm_f64le"));
    row(u"mulaw.wav"_s, tone(8000, u"mono"_s, 1), as("pcm_mulaw"));
    row(u"adpcm.wav"_s, stereo(), as("adpcm_ms"));
    row(u"11025.wav"_s, tone(11025, u"mono"_s, 1));
    row(u"22050.wav"_s, stereo(22050));
    row(u"37800.wav"_s, stereo(37800));
    row(u"quad.wav"_s, tone(48000, u"quad"_s, 4));
    row(u"5.1.flac"_s, tone(48000, u"5.1"_s, 6));
    row(u"7.1.wav"_s, tone(48000, u"7.1"_s, 8));
    row(u"big-endian.aiff"_s, stereo());
    row(u"a.au"_s, stereo());
    row(u"a.caf"_s, stereo());
    row(u"a.mp3"_s, stereo());
    row(u"a.mp2"_s, stereo());
    row(u"a.m4a"_s, stereo());
    row(u"lossless.m4a"_s, stereo(), as("alac"));
    row(u"a.aac"_s, stereo());
    row(u"a.ac3"_s, tone(48000, u"5.1"_s, 6));
    row(u"a.wma"_s, stereo());
    row(u"a.wv"_s, stereo());
    row(u"vorbis.ogg"_s, stereo(), as("libvorbis"));
    row(u"a.opus"_s, stereo(48000));
    row(u"voice.ogg"_s, tone(16000, u"mono"_s, 1), as("libopus"));
    row(u"surround.opus"_s, tone(48000, u"5.1"_s, 6), as("libopus") + QStringList{u"-b:a"_s, u"400k"_s});
    row(u"a.webm"_s, picture + stereo(48000), as("libopus"));
    row(u"a.mkv"_s, picture + stereo(), as("aac"));
    row(u"a.mp4"_s, picture + stereo());
    row(u"a.mov"_s, picture + stereo(), as("pcm_s16be"));
    row(u"a.avi"_s, picture + stereo());
    row(u"a.ts"_s, picture + stereo());
    row(u"a.3gp"_s, stereo(), as("aac"));
    // The picture comes first in the second of these.
    const QStringList still = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=s=64x48:r=1:d=1"_s};
    const QStringList cover = {u"-c:v"_s, u"mjpeg"_s, u"-disposition:v"_s, u"attached_pic"_s};
    row(u"cover.mp3"_s, stereo() + still, cover);
    row(u"cover.m4a"_s, still + stereo(), cover);
    row(u"cover.flac"_s, stereo() + still, cover);
    row(u"звук с пробелом %d.m4a"_s, stereo());
    row(u"late.mp4"_s, picture + QStringList{u"-itsoffset"_s, u"5"_s} + stereo());
    row(u"times.mkv"_s, stereo(),
        as("aac") + QStringList{u"-bsf:a"_s, u"setts=ts=if(mod(N\\,5)\\,TS\\,N*900)"_s});
    row(u"no ending"_s, stereo(), {u"-f"_s, u"mp3"_s});
    row(u"wrong ending.txt"_s, stereo(), {u"-f"_s, u"ipod"_s});
}

void TestAudioDecoder::decodes()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    const QString path = make(name, arguments);
    m_decoder.requireReadable(path);
    QCOMPARE(faultOfFile(path), QString());
}

void TestAudioDecoder::unknownLayout_data()
{
    QTest::addColumn<int>("channels");
    for (const int channels : {1, 2, 3, 6, 9, 12, 64})
        QTest::addRow("%d channels", channels) << channels;
}

void TestAudioDecoder::unknownLayout()
{
    QFETCH(const int, channels);
    QByteArray wav = contentOf(make(u"one.wav"_s, tone(16000, u"mono"_s, 1) + QStringList{u"-bitexact"_s}));
    const QByteArray samples = wav.sliced(44);
    wav.truncate(44); // of plain PCM, which says nothing of the channels' places
    qToLittleEndian(quint16(channels), wav.data() + 22);
    qToLittleEndian(quint32(rate * 2 * channels), wav.data() + 28);
    qToLittleEndian(quint16(2 * channels), wav.data() + 32);
    qToLittleEndian(quint32(samples.size() * channels), wav.data() + 40);
    for (qsizetype place = 0; place < samples.size(); place += 2)
        wav += samples.sliced(place, 2).repeated(channels);
    QCOMPARE(faultOfFile(put(u"many.wav"_s, wav)), QString());
}

void TestAudioDecoder::mixesLikeOtherPrograms()
{
    const QString path = make(
        u"mix.wav"_s, {u"-f"_s, u"lavfi"_s, u"-i"_s,
                       u"aevalsrc=0.4*sin(2*PI*300*t)|0.2*sin(2*PI*500*t)|0.3*sin(2*PI*700*t)|"
                       "0.9*sin(2*PI*60*t)|0.1*sin(2*PI*900*t)|0.5*sin(2*PI*1100*t):s=44100:d=3:c=5.1"_s});
    const QByteArray mixed = contentOf(
        make(u"mix.raw"_s, {u"-i"_s, path, u"-ac"_s, u"1"_s, u"-ar"_s, u"16000"_s, u"-f"_s, u"s16le"_s}));
    const std::vector<float> samples = m_decoder.decode(path);
    QCOMPARE(qsizetype(samples.size()), mixed.size() / 2);
    float furthest = 0;
    for (size_t index = 0; index < samples.size(); ++index) {
        const auto sample = qFromLittleEndian<qint16>(mixed.constData() + 2 * index);
        furthest = std::max(furthest, std::abs(samples[index] - float(sample) / 32768));
    }
    QVERIFY2(furthest < 0.0005F, qPrintable(QString::number(furthest)));
}

void TestAudioDecoder::onlyTheFirstTrack()
{
    const QString path = make(u"two.mkv"_s, picture + stereo() + tone(44100, u"stereo"_s, 2, 5, 3000) +
                                                QStringList{u"-map"_s, u"0"_s, u"-map"_s, u"1"_s, u"-map"_s,
                                                            u"2"_s, u"-disposition:a:0"_s, u"0"_s,
                                                            u"-disposition:a:1"_s, u"default"_s});
    QCOMPARE(faultOfFile(path), QString());
}

void TestAudioDecoder::notANumber()
{
    QByteArray wav =
        contentOf(make(u"nan.wav"_s, tone(16000, u"mono"_s, 1) + QStringList{u"-c:a"_s, u"pcm_f32le"_s}));
    const float loud[] = {NAN, INFINITY, -INFINITY, 1000.0F, -1000.0F};
    std::memcpy(wav.data() + 4000, loud, sizeof loud);
    QCOMPARE(faultOfFile(put(u"nan.wav"_s, wav)), QString());
}

void TestAudioDecoder::changesOnTheWay_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QStringList>("firstArguments");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QStringList>("secondArguments");
    QTest::newRow("rate and channels")
        << u"1.aac"_s << stereo(44100, 1) << u"2.aac"_s << tone(22050, u"mono"_s, 1, 1);
    QTest::newRow("chained Opus") << u"1.opus"_s << stereo(48000, 1) << u"2.opus"_s << stereo(48000, 1);
    QTest::newRow("chained Vorbis") << u"1.ogg"_s << stereo(44100, 1) << u"2.ogg"_s << stereo(44100, 1);
    QTest::newRow("MP3 of another rate") << u"1.mp3"_s << stereo(44100, 1) << u"2.mp3"_s << stereo(48000, 1);
}

void TestAudioDecoder::changesOnTheWay()
{
    QFETCH(const QString, first);
    QFETCH(const QStringList, firstArguments);
    QFETCH(const QString, second);
    QFETCH(const QStringList, secondArguments);
    const QByteArray both = contentOf(make(first, firstArguments)) + contentOf(make(second, secondArguments));
    const std::vector<float> samples = m_decoder.decode(put(u"both-"_s + first, both));
    const double seconds = double(samples.size()) / rate;
    QVERIFY2(std::abs(seconds - 2) < 0.15, qPrintable(QString::number(seconds)));
    const auto all = std::span(samples);
    QVERIFY(std::abs(amplitudeAt(pitch, all.subspan(rate / 4, rate / 2)) - level) < 0.04);
    QVERIFY(std::abs(amplitudeAt(pitch, all.last(3 * rate / 4).first(rate / 2)) - level) < 0.04);
}

void TestAudioDecoder::lengthNotTold()
{
    const QString told = make(u"told.mka"_s, stereo(48000, 50) + QStringList{u"-c:a"_s, u"libopus"_s});
    const QString live = make(u"live.mka"_s, {u"-i"_s, told, u"-c"_s, u"copy"_s, u"-live"_s, u"1"_s});
    QVERIFY(!m_decoder.duration(live));
    const std::vector<float> samples = m_decoder.decode(live);
    QCOMPARE(faultOf(samples, 50), QString());
    QVERIFY(samples == m_decoder.decode(told));
}

void TestAudioDecoder::refuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, const QString &path, const QString &text) {
        QTest::newRow(name) << path << text;
    };
    const QString notMedia = u"Не удалось открыть файл: это не аудио и не видео, или файл повреждён"_s;
    row("missing", at(u"missing.mp3"_s), u"Не удалось открыть файл: файл не найден"_s);
    row("below a file", put(u"plain"_s, "x") + u"/a.mp3"_s, u"Не удалось открыть файл: файл не найден"_s);
    row("folder", m_folder.path(), u"Не удалось открыть файл: это папка"_s);
    row("empty", put(u"empty.mp3"_s, {}), u"Не удалось открыть файл: файл пуст"_s);
    row("text", put(u"text.mp3"_s, QByteArray("Not a sound. ").repeated(900)), notMedia);
    row("short text", put(u"short.m4a"_s, "hello"), notMedia);
    row("zeros", put(u"zeros.wav"_s, QByteArray(100'000, '\0')), notMedia);

    ::mkfifo(QFile::encodeName(at(u"pipe.wav"_s)).constData(), 0600);
    row("pipe", at(u"pipe.wav"_s), u"Не удалось открыть файл: это не обычный файл"_s);
    if (::geteuid() != 0) {
        QFile::setPermissions(put(u"secret.wav"_s, "x"), QFile::Permissions());
        row("no access", at(u"secret.wav"_s), u"Не удалось открыть файл: нет доступа"_s);
    } else {
        qInfo("Without the row \"no access\": to root every file is open.");
    }

    QByteArray m4a = contentOf(make(u"whole.m4a"_s, stereo()));
    row("m4a cut before its index", put(u"cut.m4a"_s, m4a.first(m4a.size() - 500)), notMedia);
    const qsizetype data = m4a.indexOf("mdat") + 4;
    const qsizetype index = m4a.indexOf("moov") - 4;
    m4a.replace(data, index - data, QByteArray(index - data, char(0xff)));
    row("nothing decodes", put(u"noise.m4a"_s, m4a), u"Ошибка декодирования аудио: данные повреждены"_s);

    QByteArray mkv = contentOf(make(u"codec.mka"_s, stereo(48000) + QStringList{u"-c:a"_s, u"libopus"_s}));
    row("unknown codec", put(u"codec.mka"_s, mkv.replace("A_OPUS", "A_ODD1")),
        u"Ошибка декодирования аудио: формат звука не поддерживается: none"_s);
    row("no sound", make(u"silent.mp4"_s, picture), u"В файле нет аудиодорожки."_s);
    row("picture", make(u"picture.png"_s, picture + QStringList{u"-frames:v"_s, u"1"_s}),
        u"В файле нет аудиодорожки."_s);
    row("no samples", put(u"header.wav"_s, contentOf(make(u"header.wav"_s, stereo())).first(78)),
        u"В файле не найдено аудиоданных."_s);
}

void TestAudioDecoder::refuses()
{
    QFETCH(const QString, path);
    QTEST(failure(path), "text");
}

void TestAudioDecoder::refusesInEnglish()
{
    Localization::setLanguage(u"en"_s);
    QCOMPARE(failure(at(u"missing.mp3"_s)), u"Could not open the file: file not found"_s);
    try {
        m_decoder.requireReadable(m_folder.path());
        QFAIL("a folder passed");
    } catch (const AudioDecoderError &error) {
        QCOMPARE(error.kind(), Kind::couldNotOpen);
        QCOMPARE(error.description(), u"Could not open the file: it is a folder"_s);
    }
}

void TestAudioDecoder::namesAreNotAddresses_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"-", "pipe:0", "concat:a.wav|b.wav", "http:", "data:audio", "%d.jpg", "subfile,,:a.wav", "*.wav"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestAudioDecoder::namesAreNotAddresses()
{
    QFETCH(const QString, name);
    const QString former = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder.path()));
    QFile::remove(name);
    const QString missing = failure(name);
    QFile::copy(make(u"plain.wav"_s, stereo()), name);
    const std::vector<float> samples = m_decoder.decode(name);
    QDir::setCurrent(former);
    QCOMPARE(missing, u"Не удалось открыть файл: файл не найден"_s);
    QCOMPARE(faultOf(samples), QString());
}

void TestAudioDecoder::opensNothingElse_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("content");
    QTest::newRow("address") << u"a.m3u8"_s
                             << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n%1\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("renamed") << u"b.mp3"_s
                             << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n%1\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("key")
        << u"c.m3u8"_s
        << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXT-X-KEY:METHOD=AES-128,URI=\"%1\"\n#EXTINF:9,\n%2\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("neighbour")
        << u"d.m3u8"_s << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nplain.ts\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("list of files") << u"e.ffconcat"_s << u"ffconcat version 1.0\nfile plain.ts\n"_s;
    QTest::newRow("list of addresses") << u"f.ffconcat"_s << u"ffconcat version 1.0\nfile '%1'\n"_s;
    QTest::newRow("session")
        << u"g.sdp"_s
        << u"v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 5004 RTP/AVP 0\n"_s;
    QTest::newRow("manifest")
        << u"h.mpd"_s
        << u"<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" mediaPresentationDuration=\"PT9S\"><Period><AdaptationSet mimeType=\"audio/mp4\"><Representation id=\"0\" bandwidth=\"9\"><BaseURL>%1</BaseURL></Representation></AdaptationSet></Period></MPD>"_s;
}

void TestAudioDecoder::opensNothingElse()
{
    QFETCH(const QString, name);
    QFETCH(QString, content);
    make(u"plain.ts"_s, stereo());
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QString address = u"http://127.0.0.1:%1/a.ts"_s.arg(server.serverPort());
    content.replace(u"%1"_s, address).replace(u"%2"_s, u"file://"_s + at(u"plain.ts"_s));
    const QString text = failure(put(name, content.toUtf8()));
    QVERIFY2(text.startsWith(u"Не удалось открыть файл: "_s), qUtf8Printable(text));
    QVERIFY(!server.waitForNewConnection(0));
}

void TestAudioDecoder::readErrors_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<qint64>("from");
    const QString wav = make(u"errors.wav"_s, stereo());
    const QString m4a = make(u"errors.m4a"_s, stereo(44100, 20));
    QTest::newRow("at once") << wav << qint64(0);
    QTest::newRow("in the middle") << wav << qint64(100'000);
    QTest::newRow("container") << m4a << qint64(100'000);
    QTest::newRow("MP3") << make(u"errors.mp3"_s, stereo(44100, 20)) << qint64(100'000);
    QTest::newRow("Ogg") << make(u"errors.ogg"_s, stereo(44100, 60)) << qint64(70'000);
}

void TestAudioDecoder::readErrors()
{
    QFETCH(const QString, path);
    QFETCH(const qint64, from);
    QVERIFY(QFileInfo(path).size() > from);
    const FailingReads failing(from);
    QCOMPARE(failure(path), u"Ошибка декодирования аудио: ошибка чтения"_s);
}

void TestAudioDecoder::endsEarly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("WAV") << u"early.wav"_s << stereo(44100, 4);
    QTest::newRow("MP3") << u"early.mp3"_s << stereo(44100, 4);
    QTest::newRow("FLAC") << u"early.flac"_s << stereo(44100, 4);
    QTest::newRow("Opus") << u"early.opus"_s << stereo(48000, 4);
    QTest::newRow("m4a, index first")
        << u"early.m4a"_s << stereo(44100, 4) + QStringList{u"-movflags"_s, u"faststart"_s};
    QTest::newRow("Matroska") << u"early.mka"_s << stereo(44100, 4);
}

void TestAudioDecoder::endsEarly()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    const QByteArray whole = contentOf(make(name, arguments));
    const std::vector<float> samples = m_decoder.decode(put(name, whole.first(whole.size() / 2)));
    const double seconds = double(samples.size()) / rate;
    QVERIFY2(seconds > 1 && seconds < 3, qPrintable(QString::number(seconds)));
    QCOMPARE(faultOf(samples, seconds), QString());
}

void TestAudioDecoder::skipsDamage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("MP3") << u"damaged.mp3"_s << stereo(44100, 4);
    QTest::newRow("m4a") << u"damaged.m4a"_s << stereo(44100, 4);
    QTest::newRow("Vorbis") << u"damaged.ogg"_s << stereo(44100, 4);
    QTest::newRow("FLAC") << u"damaged.flac"_s << stereo(44100, 4);
}

void TestAudioDecoder::skipsDamage()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    QByteArray bytes = contentOf(make(name, arguments));
    QRandomGenerator random(7);
    for (qsizetype place = bytes.size() / 2; place < bytes.size() / 2 + 600; ++place)
        bytes[place] = char(random.generate());
    const std::vector<float> samples = m_decoder.decode(put(name, bytes));
    const double seconds = double(samples.size()) / rate;
    QVERIFY2(seconds > 2.5 && seconds < 4.5, qPrintable(QString::number(seconds)));
    QVERIFY(std::abs(amplitudeAt(pitch, std::span(samples).first(rate)) - level) < 0.04);
    QVERIFY(std::abs(amplitudeAt(pitch, std::span(samples).last(rate).first(rate / 2)) - level) < 0.04);
}

void TestAudioDecoder::survivesAnyDamage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const QString &name, const QStringList &arguments) {
        QTest::newRow(qUtf8Printable(name)) << name << arguments;
    };
    row(u"any.wav"_s, stereo(44100, 0.3));
    row(u"any.mp3"_s, stereo(44100, 0.3));
    row(u"any.m4a"_s, stereo(44100, 0.3));
    row(u"any.ogg"_s, stereo(44100, 0.3));
    row(u"any.opus"_s, stereo(48000, 0.3));
    row(u"any.flac"_s, stereo(44100, 0.3));
    row(u"any.mkv"_s, picture + stereo(44100, 0.3));
    row(u"any.avi"_s, stereo(44100, 0.3));
}

void TestAudioDecoder::survivesAnyDamage()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    const QByteArray whole = contentOf(make(name, arguments));
    QRandomGenerator random(42);
    for (int round = 0; round < 40; ++round) {
        QByteArray bytes = whole;
        // Headers are where damage has most to break.
        const qsizetype reach = round % 2 ? bytes.size() : std::min<qsizetype>(bytes.size(), 400);
        for (int count = 1 + random.bounded(20); count > 0; --count)
            bytes[qsizetype(random.bounded(quint32(reach)))] = char(random.generate());
        if (round % 5 == 4)
            bytes.truncate(qsizetype(random.bounded(quint32(bytes.size()))) + 1);
        const QString path = put(name, bytes);
        try {
            const std::vector<float> samples = m_decoder.decode(path);
            QVERIFY(!samples.empty());
            QVERIFY(std::ranges::all_of(samples, [](float sample) { return sample >= -1 && sample <= 1; }));
        } catch (const AudioDecoderError &error) {
            QVERIFY(!error.description().isEmpty());
        }
        (void)m_decoder.duration(path);
    }
}

void TestAudioDecoder::duration_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("milliseconds"); // −1: none
    QTest::newRow("m4a") << make(u"length.m4a"_s, stereo(44100, 3)) << 3000;
    QTest::newRow("WAV") << make(u"length.wav"_s, stereo(44100, 3)) << 3000;
    QTest::newRow("MP3") << make(u"length.mp3"_s, stereo(44100, 3)) << 3000;
    QTest::newRow("Opus") << make(u"length.opus"_s, stereo(48000, 3)) << 3000;
    QTest::newRow("shorter than the video")
        << make(u"length.mp4"_s,
                QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=s=64x48:r=10:d=5"_s} + stereo(44100, 3))
        << 3000;
    QTest::newRow("no sound") << make(u"length-silent.mp4"_s, picture) << -1;
    QTest::newRow("text") << put(u"length.txt"_s, "text") << -1;
    QTest::newRow("missing") << at(u"no such file"_s) << -1;
}

void TestAudioDecoder::duration()
{
    QFETCH(const QString, path);
    QFETCH(const int, milliseconds);
    const auto found = m_decoder.duration(path);
    QCOMPARE(found.has_value(), milliseconds >= 0);
    if (found)
        QVERIFY2(std::abs(found->count() - milliseconds) < 80, qPrintable(QString::number(found->count())));
}

void TestAudioDecoder::cancels()
{
    std::stop_source before;
    before.request_stop();
    const QString wav = make(u"cancelled.wav"_s, stereo());
    QVERIFY_THROWS_EXCEPTION(Cancelled, (void)m_decoder.decode(wav, before.get_token()));

    // Three hours of nothing: decoding takes seconds.
    QByteArray header = contentOf(wav).first(78);
    qToLittleEndian(quint32(0x7fff0000), header.data() + 74);
    QFile hole(put(u"hole.wav"_s, header));
    QVERIFY(hole.resize(0x7fff0000));
    std::stop_source during;
    const std::jthread canceller([&during] {
        std::this_thread::sleep_for(50ms);
        during.request_stop();
    });
    QVERIFY_THROWS_EXCEPTION(Cancelled, (void)m_decoder.decode(hole.fileName(), during.get_token()));
    hole.remove();
}

void TestAudioDecoder::withoutModule()
{
    const AudioDecoder decoder(m_folder.path());
    const QString path = make(u"moduleless.wav"_s, stereo());
    decoder.requireReadable(path);
    QVERIFY(!decoder.duration(path));
    try {
        const auto samples = decoder.decode(path);
        QFAIL("decoded without the module");
    } catch (const AudioDecoderError &error) {
        QCOMPARE(error.kind(), Kind::couldNotOpen);
        QVERIFY(error.description().startsWith(
            u"Не удалось открыть файл: модуль декодирования не загрузился; переустановите"_s));
    }
}

void TestAudioDecoder::onManyThreads()
{
    const AudioDecoder decoder(QStringLiteral(ORVANE_RESOURCES));
    const QString path = make(u"threads.m4a"_s, stereo());
    std::vector<std::vector<float>> results(4);
    {
        std::vector<std::jthread> threads;
        threads.reserve(results.size());
        for (std::vector<float> &result : results)
            threads.emplace_back([&] { result = decoder.decode(path); });
    }
    QCOMPARE(faultOf(results.front()), QString());
    for (const std::vector<float> &result : results)
        QVERIFY(result == results.front());
}

QTEST_GUILESS_MAIN(TestAudioDecoder)
#include "tst_audiodecoder.moc"
