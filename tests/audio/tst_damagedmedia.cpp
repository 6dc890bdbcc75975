#include "tests/audio/MediaMaker.h"
#include "tests/support/Rows.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTcpServer>

#include <atomic>
#include <cerrno>
#include <limits>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr auto never = std::numeric_limits<qint64>::max();
std::atomic<qint64> s_failsFrom = never; // as on a damaged disk

} // namespace

// Takes the place of the C library's function in this program.
extern "C" ssize_t pread(int fd, void *buf, size_t nbytes, off_t offset)
{
    const qint64 left = s_failsFrom - offset;
    if (left <= 0) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, fd, buf, std::min(nbytes, size_t(left)), offset);
}

class TestDamagedMedia : public QObject
{
    Q_OBJECT

    const MediaMaker m_media;

private Q_SLOTS:
    void refuses_data()
    {
        const Rows<QString, QString> row("path", "text");

        const QString notMedia = u"Не удалось открыть файл: это не аудио и не видео, или файл повреждён"_s;
        row("missing", m_media.at(u"missing.mp3"_s), u"Не удалось открыть файл: файл не найден"_s);
        row("folder", m_media.folder(), u"Не удалось открыть файл: это папка"_s);
        row("empty", m_media.put(u"empty.mp3"_s, {}), u"Не удалось открыть файл: файл пуст"_s);
        row("text", m_media.put(u"text.mp3"_s, QByteArray("Not a sound. ").repeated(900)), notMedia);
        ::mkfifo(QFile::encodeName(m_media.at(u"pipe.wav"_s)).constData(), 0600);
        row("pipe", m_media.at(u"pipe.wav"_s), u"Не удалось открыть файл: это не обычный файл"_s);
        QByteArray m4a = contentOf(m_media.make(u"whole.m4a"_s, stereo()));
        row("m4a cut before its index", m_media.put(u"cut.m4a"_s, m4a.first(m4a.size() - 500)), notMedia);
        const qsizetype data = m4a.indexOf("mdat") + 4;
        const qsizetype index = m4a.indexOf("moov") - 4;
        m4a.replace(data, index - data, QByteArray(index - data, char(0xff)));
        row("nothing decodes", m_media.put(u"noise.m4a"_s, m4a),
            u"Ошибка декодирования аудио: данные повреждены"_s);

        QByteArray mkv =
            contentOf(m_media.make(u"codec.mka"_s, stereo(48000) + QStringList{u"-c:a"_s, u"libopus"_s}));
        row("unknown codec", m_media.put(u"codec.mka"_s, mkv.replace("A_OPUS", "A_ODD1")),
            u"Ошибка декодирования аудио: формат звука не поддерживается: none"_s);
        row("no sound", m_media.make(u"silent.mp4"_s, picture), u"В файле нет аудиодорожки."_s);
        row("no samples",
            m_media.put(u"header.wav"_s, contentOf(m_media.make(u"header.wav"_s, stereo())).first(78)),
            u"В файле не найдено аудиоданных."_s);
    }

    void refuses()
    {
        QFETCH(const QString, path);
        QTEST(m_media.failure(path), "text");
    }

    void opensNothingElse_data()
    {
        const Rows<QString, QString> row("name", "content");
        row("address", u"a.m3u8"_s, u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n%1\n#EXT-X-ENDLIST\n"_s);
        row("neighbour", u"b.m3u8"_s,
            u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nplain.ts\n#EXT-X-ENDLIST\n"_s);
        row("list of addresses", u"c.ffconcat"_s, u"ffconcat version 1.0\nfile '%1'\n"_s);
        row("manifest", u"d.mpd"_s,
            u"<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" mediaPresentationDuration=\"PT9S\"><Period><AdaptationSet mimeType=\"audio/mp4\"><Representation id=\"0\" bandwidth=\"9\"><BaseURL>%1</BaseURL></Representation></AdaptationSet></Period></MPD>"_s);
    }

    void opensNothingElse()
    {
        QFETCH(const QString, name);
        QFETCH(QString, content);
        m_media.make(u"plain.ts"_s, stereo());
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        content.replace(u"%1"_s, u"http://127.0.0.1:%1/a.ts"_s.arg(server.serverPort()));
        const QString text = m_media.failure(m_media.put(name, content.toUtf8()));
        QVERIFY2(text.startsWith(u"Не удалось открыть файл: "_s), qUtf8Printable(text));
        QVERIFY(!server.waitForNewConnection(0));
    }

    void readErrors_data()
    {
        const Rows<QString, int> row("name", "seconds");
        row("in the middle", u"errors.wav"_s, 2);
        row("container", u"errors.m4a"_s, 20);
        row("Ogg", u"errors.ogg"_s, 60);
    }

    void readErrors()
    {
        QFETCH(const QString, name);
        QFETCH(const int, seconds);
        const QString path = m_media.make(name, stereo(44100, seconds));
        const auto whole = qScopeGuard([] { s_failsFrom = never; });
        s_failsFrom = 80'000;
        QVERIFY(QFileInfo(path).size() > s_failsFrom);
        QCOMPARE(m_media.failure(path), u"Ошибка декодирования аудио: ошибка чтения"_s);
    }

    void endsEarly_data()
    {
        const Rows<QString, QStringList> row("name", "arguments");
        row("MP3", u"early.mp3"_s, stereo(44100, 20));
        row("m4a, index first", u"early.m4a"_s,
            stereo(44100, 20) + QStringList{u"-movflags"_s, u"faststart"_s});
        row("Matroska", u"early.mka"_s, stereo(44100, 20));
        row("WAV", u"early.wav"_s, stereo(44100, 20));
    }

    void endsEarly()
    {
        QFETCH(const QString, name);
        QFETCH(const QStringList, arguments);
        const QByteArray whole = contentOf(m_media.make(name, arguments));
        const AudioDecoder::Sound sound =
            m_media.decoder().decode(m_media.put(name, whole.first(whole.size() / 2)));
        const double seconds = double(sound.samples.size()) / sampleRate;
        QVERIFY2(seconds > 5 && seconds < 15, qPrintable(QString::number(seconds)));
        QCOMPARE(faultOf(sound.samples, seconds), QString());
        QVERIFY(sound.damagedFrom);
        QVERIFY(std::abs(double(sound.damagedFrom->count()) / 1000 - seconds) < 0.1);
    }

    void skipsDamage_data()
    {
        const Rows<QString> row("name");
        row("MP3", u"damaged.mp3"_s);
        row("m4a", u"damaged.m4a"_s);
    }

    void skipsDamage()
    {
        QFETCH(const QString, name);
        QByteArray bytes = contentOf(m_media.make(name, stereo(44100, 4)));
        QRandomGenerator random(7);
        for (qsizetype place = bytes.size() / 2; place < bytes.size() / 2 + 600; ++place)
            bytes[place] = char(random.generate());
        const std::vector<float> samples = m_media.decoder().decode(m_media.put(name, bytes)).samples;
        const double seconds = double(samples.size()) / sampleRate;
        QVERIFY2(seconds > 2.5 && seconds < 4.5, qPrintable(QString::number(seconds)));
        QVERIFY(hasTone(std::span(samples).first(sampleRate)));
        QVERIFY(hasTone(std::span(samples).last(sampleRate).first(sampleRate / 2)));
    }

    void survivesAnyDamage_data()
    {
        const Rows<QString> row("suffix");
        for (const char *suffix : {"wav", "mp3", "m4a", "ogg", "mkv"})
            row(suffix, QString::fromLatin1(suffix));
    }

    void survivesAnyDamage()
    {
        QFETCH(const QString, suffix);
        const QString name = u"any."_s + suffix;
        const QStringList sound = stereo(44100, 0.3);
        const QByteArray whole = contentOf(m_media.make(name, suffix == u"mkv" ? picture + sound : sound));
        QRandomGenerator random(42);
        for (int round = 0; round < 8; ++round) {
            QByteArray bytes = whole;
            // Headers are where damage has most to break.
            const qsizetype reach = round % 2 ? bytes.size() : std::min<qsizetype>(bytes.size(), 400);
            for (int count = 1 + random.bounded(20); count > 0; --count)
                bytes[qsizetype(random.bounded(quint32(reach)))] = char(random.generate());
            if (round % 4 == 3)
                bytes.truncate(qsizetype(random.bounded(quint32(bytes.size()))) + 1);
            const QString path = m_media.put(name, bytes);
            try {
                const std::vector<float> samples = m_media.decoder().decode(path).samples;
                QVERIFY(!samples.empty());
                QVERIFY(
                    std::ranges::all_of(samples, [](float sample) { return sample >= -1 && sample <= 1; }));
            } catch (const AudioDecoderError &error) {
                QVERIFY(!error.description().isEmpty());
            }
            (void)m_media.decoder().duration(path);
        }
    }
};

QTEST_GUILESS_MAIN(TestDamagedMedia)
#include "tst_damagedmedia.moc"
