#include "audio/SampleRate.h"
#include "tests/audio/MediaMaker.h"
#include "tests/support/Rows.h"

#include <QtEndian>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using namespace orvane::test;

class TestAudioDecoder : public QObject
{
    Q_OBJECT

    const MediaMaker m_media;

private Q_SLOTS:
    void decodes_data()
    {
        const Rows<QString, QStringList> rows("name", "arguments");
        const auto row = [&rows](const QString &name, const QStringList &arguments) {
            rows(name, name, arguments);
        };
        const auto as = [](const char *codec) { return QStringList{u"-c:a"_s, QString::fromLatin1(codec)}; };
        row(u"16.wav"_s, stereo());
        row(u"mulaw.wav"_s, tone(8000, u"mono"_s, 1) + as("pcm_mulaw"));
        row(u"a.mp3"_s, stereo());
        row(u"surround.opus"_s, tone(48000, u"5.1"_s, 6) + as("libopus") + QStringList{u"-b:a"_s, u"400k"_s});
        row(u"a.mp4"_s, picture + stereo());
        const QStringList still = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=s=64x48:r=1:d=1"_s};
        const QStringList cover = {u"-c:v"_s, u"mjpeg"_s, u"-disposition:v"_s, u"attached_pic"_s};
        row(u"cover.mp3"_s, stereo() + still + cover);
        row(u"звук с пробелом %d.m4a"_s, stereo());
        row(u"late.mp4"_s, picture + QStringList{u"-itsoffset"_s, u"5"_s} + stereo());
        row(u"wrong ending.txt"_s, stereo() + QStringList{u"-f"_s, u"ipod"_s});
    }

    void decodes()
    {
        QFETCH(const QString, name);
        QFETCH(const QStringList, arguments);
        const QString path = m_media.make(name, arguments);
        m_media.decoder().requireReadable(path);
        QCOMPARE(m_media.faultOfFile(path), QString());
    }

    void unknownLayout_data()
    {
        const Rows<int> row("channels");
        for (const int channels : {3, 64})
            row(u"%1 channels"_s.arg(channels), channels);
    }

    void unknownLayout()
    {
        QFETCH(const int, channels);
        QByteArray wav =
            contentOf(m_media.make(u"one.wav"_s, tone(16000, u"mono"_s, 1) + QStringList{u"-bitexact"_s}));
        const QByteArray samples = wav.sliced(44);
        wav.truncate(44); // of plain PCM, which says nothing of the channels' places
        qToLittleEndian(quint16(channels), wav.data() + 22);
        qToLittleEndian(quint32(sampleRate * 2 * channels), wav.data() + 28);
        qToLittleEndian(quint16(2 * channels), wav.data() + 32);
        qToLittleEndian(quint32(samples.size() * channels), wav.data() + 40);
        for (qsizetype place = 0; place < samples.size(); place += 2)
            wav += samples.sliced(place, 2).repeated(channels);
        QCOMPARE(m_media.faultOfFile(m_media.put(u"many.wav"_s, wav)), QString());
    }

    void mixesLikeOtherPrograms()
    {
        const QString path =
            m_media.make(u"mix.wav"_s,
                         {u"-f"_s, u"lavfi"_s, u"-i"_s,
                          u"aevalsrc=0.4*sin(2*PI*300*t)|0.2*sin(2*PI*500*t)|0.3*sin(2*PI*700*t)|"
                          "0.9*sin(2*PI*60*t)|0.1*sin(2*PI*900*t)|0.5*sin(2*PI*1100*t):s=44100:d=3:c=5.1"_s});
        const QByteArray mixed =
            contentOf(m_media.make(u"mix.raw"_s, {u"-i"_s, path, u"-ac"_s, u"1"_s, u"-ar"_s,
                                                  QString::number(sampleRate), u"-f"_s, u"s16le"_s}));
        const std::vector<float> samples = m_media.decoder().decode(path).samples;
        QCOMPARE(qsizetype(samples.size()), mixed.size() / 2);
        float furthest = 0;
        for (size_t index = 0; index < samples.size(); ++index) {
            const auto sample = qFromLittleEndian<qint16>(mixed.constData() + 2 * index);
            furthest = std::max(furthest, std::abs(samples[index] - float(sample) / 32768));
        }
        QVERIFY2(furthest < 0.0005F, qPrintable(QString::number(furthest)));
    }

    void onlyTheFirstTrack()
    {
        const QString path =
            m_media.make(u"two.mkv"_s,
                         picture + stereo() + tone(44100, u"stereo"_s, 2, 5, 3000) +
                             QStringList{u"-map"_s, u"0"_s, u"-map"_s, u"1"_s, u"-map"_s, u"2"_s,
                                         u"-disposition:a:0"_s, u"0"_s, u"-disposition:a:1"_s, u"default"_s});
        QCOMPARE(m_media.faultOfFile(path), QString());
    }

    void notANumber()
    {
        QByteArray wav = contentOf(
            m_media.make(u"nan.wav"_s, tone(16000, u"mono"_s, 1) + QStringList{u"-c:a"_s, u"pcm_f32le"_s}));
        const float loud[] = {NAN, INFINITY, -INFINITY, 1000.0F, -1000.0F};
        std::memcpy(wav.data() + 4000, loud, sizeof loud);
        QCOMPARE(m_media.faultOfFile(m_media.put(u"nan.wav"_s, wav)), QString());
    }

    void changesOnTheWay_data()
    {
        const Rows<QString, QStringList, QStringList> row("suffix", "firstArguments", "secondArguments");
        row("rate and channels", u"aac"_s, stereo(44100, 1), tone(22050, u"mono"_s, 1, 1));
        row("chained Opus", u"opus"_s, stereo(48000, 1), stereo(48000, 1));
        row("MP3 of another rate", u"mp3"_s, stereo(44100, 1), stereo(48000, 1));
    }

    void changesOnTheWay()
    {
        QFETCH(const QString, suffix);
        QFETCH(const QStringList, firstArguments);
        QFETCH(const QStringList, secondArguments);
        const QByteArray both = contentOf(m_media.make(u"1."_s + suffix, firstArguments)) +
                                contentOf(m_media.make(u"2."_s + suffix, secondArguments));
        const std::vector<float> samples =
            m_media.decoder().decode(m_media.put(u"both."_s + suffix, both)).samples;
        const double seconds = double(samples.size()) / sampleRate;
        QVERIFY2(std::abs(seconds - 2) < 0.15, qPrintable(QString::number(seconds)));
        const auto all = std::span(samples);
        QVERIFY(hasTone(all.subspan(sampleRate / 4, sampleRate / 2)));
        QVERIFY(hasTone(all.last(3 * sampleRate / 4).first(sampleRate / 2)));
    }

    void lengthNotReported()
    {
        const QString reported =
            m_media.make(u"reported.mka"_s, stereo(48000, 50) + QStringList{u"-c:a"_s, u"libopus"_s});
        const QString live =
            m_media.make(u"live.mka"_s, {u"-i"_s, reported, u"-c"_s, u"copy"_s, u"-live"_s, u"1"_s});
        QVERIFY(!m_media.decoder().duration(live));
        const std::vector<float> samples = m_media.decoder().decode(live).samples;
        QCOMPARE(faultOf(samples, 50), QString());
        QVERIFY(samples == m_media.decoder().decode(reported).samples);
    }

    void duration_data()
    {
        const Rows<QString, int> row("path", "milliseconds"); // −1: none
        row("m4a", m_media.make(u"length.m4a"_s, stereo(44100, 3)), 3000);
        row("MP3", m_media.make(u"length.mp3"_s, stereo(44100, 3)), 3000);
        row("shorter than the video",
            m_media.make(u"length.mp4"_s,
                         QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=s=64x48:r=10:d=5"_s} +
                             stereo(44100, 3)),
            3000);
        row("no sound", m_media.make(u"length-silent.mp4"_s, picture), -1);
    }

    void duration()
    {
        QFETCH(const QString, path);
        QFETCH(const int, milliseconds);
        const auto found = m_media.decoder().duration(path);
        QCOMPARE(found.has_value(), milliseconds >= 0);
        if (found)
            QVERIFY2(std::abs(found->count() - milliseconds) < 80,
                     qPrintable(QString::number(found->count())));
    }

    void cancels()
    {
        std::stop_source before;
        before.request_stop();
        const QString wav = m_media.make(u"cancelled.wav"_s, stereo());
        QVERIFY_THROWS_EXCEPTION(Cancelled, (void)m_media.decoder().decode(wav, before.get_token()));

        // Three hours of nothing: decoding takes seconds.
        QByteArray header = contentOf(wav).first(78);
        qToLittleEndian(quint32(0x7fff0000), header.data() + 74);
        QFile hole(m_media.put(u"hole.wav"_s, header));
        QVERIFY(hole.resize(0x7fff0000));
        std::stop_source during;
        const std::jthread canceller([&during] {
            std::this_thread::sleep_for(50ms);
            during.request_stop();
        });
        QVERIFY_THROWS_EXCEPTION(Cancelled,
                                 (void)m_media.decoder().decode(hole.fileName(), during.get_token()));
        hole.remove();
    }

    void withoutModule()
    {
        const AudioDecoder decoder(m_media.folder());
        const QString path = m_media.make(u"moduleless.wav"_s, stereo());
        decoder.requireReadable(path);
        QVERIFY(!decoder.duration(path));
        try {
            (void)decoder.decode(path);
            QFAIL("decoded without the module");
        } catch (const AudioDecoderError &error) {
            QVERIFY(error.description().contains(u"модуль декодирования не загрузился; переустановите"_s));
        }
    }
};

QTEST_GUILESS_MAIN(TestAudioDecoder)
#include "tst_audiodecoder.moc"
