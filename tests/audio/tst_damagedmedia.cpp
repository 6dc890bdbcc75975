#include "FailingReads.h"

#include "base/localization/Localization.h"
#include "tests/audio/MediaMaker.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Kind = AudioDecoderError::Kind;

class TestDamagedMedia : public QObject
{
    Q_OBJECT

    const MediaMaker m_media;

private Q_SLOTS:
    void initTestCase();
    void cleanup() { Localization::setLanguage(u"ru"_s); }
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
};

void TestDamagedMedia::initTestCase()
{
    QVERIFY2(!QStandardPaths::findExecutable(u"ffmpeg"_s).isEmpty(),
             "The ffmpeg program makes the files for this test and is not installed.");
}

void TestDamagedMedia::refuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, const QString &path, const QString &text) {
        QTest::newRow(name) << path << text;
    };
    const QString notMedia = u"Не удалось открыть файл: это не аудио и не видео, или файл повреждён"_s;
    row("missing", m_media.at(u"missing.mp3"_s), u"Не удалось открыть файл: файл не найден"_s);
    row("below a file", m_media.put(u"plain"_s, "x") + u"/a.mp3"_s,
        u"Не удалось открыть файл: файл не найден"_s);
    row("folder", m_media.folder(), u"Не удалось открыть файл: это папка"_s);
    row("empty", m_media.put(u"empty.mp3"_s, {}), u"Не удалось открыть файл: файл пуст"_s);
    row("text", m_media.put(u"text.mp3"_s, QByteArray("Not a sound. ").repeated(900)), notMedia);
    row("short text", m_media.put(u"short.m4a"_s, "hello"), notMedia);
    row("zeros", m_media.put(u"zeros.wav"_s, QByteArray(100'000, '\0')), notMedia);

    ::mkfifo(QFile::encodeName(m_media.at(u"pipe.wav"_s)).constData(), 0600);
    row("pipe", m_media.at(u"pipe.wav"_s), u"Не удалось открыть файл: это не обычный файл"_s);
    if (::geteuid() != 0) {
        QFile::setPermissions(m_media.put(u"secret.wav"_s, "x"), QFile::Permissions());
        row("no access", m_media.at(u"secret.wav"_s), u"Не удалось открыть файл: нет доступа"_s);
    } else {
        qInfo("Without the row \"no access\": to root every file is open.");
    }

    QByteArray m4a = m_media.contentOf(m_media.make(u"whole.m4a"_s, stereo()));
    row("m4a cut before its index", m_media.put(u"cut.m4a"_s, m4a.first(m4a.size() - 500)), notMedia);
    const qsizetype data = m4a.indexOf("mdat") + 4;
    const qsizetype index = m4a.indexOf("moov") - 4;
    m4a.replace(data, index - data, QByteArray(index - data, char(0xff)));
    row("nothing decodes", m_media.put(u"noise.m4a"_s, m4a),
        u"Ошибка декодирования аудио: данные повреждены"_s);

    QByteArray mkv =
        m_media.contentOf(m_media.make(u"codec.mka"_s, stereo(48000) + QStringList{u"-c:a"_s, u"libopus"_s}));
    row("unknown codec", m_media.put(u"codec.mka"_s, mkv.replace("A_OPUS", "A_ODD1")),
        u"Ошибка декодирования аудио: формат звука не поддерживается: none"_s);
    row("no sound", m_media.make(u"silent.mp4"_s, picture), u"В файле нет аудиодорожки."_s);
    row("picture", m_media.make(u"picture.png"_s, picture + QStringList{u"-frames:v"_s, u"1"_s}),
        u"В файле нет аудиодорожки."_s);
    row("no samples",
        m_media.put(u"header.wav"_s, m_media.contentOf(m_media.make(u"header.wav"_s, stereo())).first(78)),
        u"В файле не найдено аудиоданных."_s);
}

void TestDamagedMedia::refuses()
{
    QFETCH(const QString, path);
    QTEST(m_media.failure(path), "text");
}

void TestDamagedMedia::refusesInEnglish()
{
    Localization::setLanguage(u"en"_s);
    QCOMPARE(m_media.failure(m_media.at(u"missing.mp3"_s)), u"Could not open the file: file not found"_s);
    try {
        m_media.decoder().requireReadable(m_media.folder());
        QFAIL("a folder passed");
    } catch (const AudioDecoderError &error) {
        QCOMPARE(error.kind(), Kind::couldNotOpen);
        QCOMPARE(error.description(), u"Could not open the file: it is a folder"_s);
    }
}

void TestDamagedMedia::namesAreNotAddresses_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"-", "concat:a.wav|b.wav", "http:", "%d.jpg"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestDamagedMedia::namesAreNotAddresses()
{
    QFETCH(const QString, name);
    const QString former = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_media.folder()));
    QFile::remove(name);
    const QString missing = m_media.failure(name);
    QFile::copy(m_media.make(u"plain.wav"_s, stereo()), name);
    const std::vector<float> samples = m_media.decoder().decode(name).samples;
    QDir::setCurrent(former);
    QCOMPARE(missing, u"Не удалось открыть файл: файл не найден"_s);
    QCOMPARE(faultOf(samples), QString());
}

void TestDamagedMedia::opensNothingElse_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("content");
    QTest::newRow("address") << u"a.m3u8"_s
                             << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n%1\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("key")
        << u"c.m3u8"_s
        << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXT-X-KEY:METHOD=AES-128,URI=\"%1\"\n#EXTINF:9,\n%2\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("neighbour")
        << u"d.m3u8"_s << u"#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nplain.ts\n#EXT-X-ENDLIST\n"_s;
    QTest::newRow("list of addresses") << u"f.ffconcat"_s << u"ffconcat version 1.0\nfile '%1'\n"_s;
    QTest::newRow("manifest")
        << u"h.mpd"_s
        << u"<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" mediaPresentationDuration=\"PT9S\"><Period><AdaptationSet mimeType=\"audio/mp4\"><Representation id=\"0\" bandwidth=\"9\"><BaseURL>%1</BaseURL></Representation></AdaptationSet></Period></MPD>"_s;
}

void TestDamagedMedia::opensNothingElse()
{
    QFETCH(const QString, name);
    QFETCH(QString, content);
    m_media.make(u"plain.ts"_s, stereo());
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QString address = u"http://127.0.0.1:%1/a.ts"_s.arg(server.serverPort());
    content.replace(u"%1"_s, address).replace(u"%2"_s, u"file://"_s + m_media.at(u"plain.ts"_s));
    const QString text = m_media.failure(m_media.put(name, content.toUtf8()));
    QVERIFY2(text.startsWith(u"Не удалось открыть файл: "_s), qUtf8Printable(text));
    QVERIFY(!server.waitForNewConnection(0));
}

void TestDamagedMedia::readErrors_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<qint64>("from");
    const QString wav = m_media.make(u"errors.wav"_s, stereo());
    const QString m4a = m_media.make(u"errors.m4a"_s, stereo(44100, 20));
    QTest::newRow("in the middle") << wav << qint64(100'000);
    QTest::newRow("container") << m4a << qint64(100'000);
    QTest::newRow("Ogg") << m_media.make(u"errors.ogg"_s, stereo(44100, 60)) << qint64(70'000);
}

void TestDamagedMedia::readErrors()
{
    QFETCH(const QString, path);
    QFETCH(const qint64, from);
    QVERIFY(QFileInfo(path).size() > from);
    const FailingReads failing(from);
    QCOMPARE(m_media.failure(path), u"Ошибка декодирования аудио: ошибка чтения"_s);
}

void TestDamagedMedia::endsEarly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("MP3") << u"early.mp3"_s << stereo(44100, 20);
    QTest::newRow("FLAC") << u"early.flac"_s << stereo(44100, 20);
    QTest::newRow("m4a, index first")
        << u"early.m4a"_s << stereo(44100, 20) + QStringList{u"-movflags"_s, u"faststart"_s};
    QTest::newRow("Matroska") << u"early.mka"_s << stereo(44100, 20);
}

void TestDamagedMedia::endsEarly()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    const QByteArray whole = m_media.contentOf(m_media.make(name, arguments));
    const AudioDecoder::Sound sound =
        m_media.decoder().decode(m_media.put(name, whole.first(whole.size() / 2)));
    const double seconds = double(sound.samples.size()) / sampleRate;
    QVERIFY2(seconds > 5 && seconds < 15, qPrintable(QString::number(seconds)));
    QCOMPARE(faultOf(sound.samples, seconds), QString());
    QVERIFY(sound.damagedFrom);
    QVERIFY(std::abs(double(sound.damagedFrom->count()) / 1000 - seconds) < 0.1);
}

void TestDamagedMedia::skipsDamage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("MP3") << u"damaged.mp3"_s << stereo(44100, 4);
    QTest::newRow("m4a") << u"damaged.m4a"_s << stereo(44100, 4);
}

void TestDamagedMedia::skipsDamage()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    QByteArray bytes = m_media.contentOf(m_media.make(name, arguments));
    QRandomGenerator random(7);
    for (qsizetype place = bytes.size() / 2; place < bytes.size() / 2 + 600; ++place)
        bytes[place] = char(random.generate());
    const std::vector<float> samples = m_media.decoder().decode(m_media.put(name, bytes)).samples;
    const double seconds = double(samples.size()) / sampleRate;
    QVERIFY2(seconds > 2.5 && seconds < 4.5, qPrintable(QString::number(seconds)));
    QVERIFY(std::abs(amplitudeAt(pitch, std::span(samples).first(sampleRate)) - level) < 0.04);
    QVERIFY(std::abs(amplitudeAt(pitch, std::span(samples).last(sampleRate).first(sampleRate / 2)) - level) <
            0.04);
}

void TestDamagedMedia::survivesAnyDamage_data()
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
    row(u"any.mkv"_s, picture + stereo(44100, 0.3));
}

void TestDamagedMedia::survivesAnyDamage()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, arguments);
    const QByteArray whole = m_media.contentOf(m_media.make(name, arguments));
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
            QVERIFY(std::ranges::all_of(samples, [](float sample) { return sample >= -1 && sample <= 1; }));
        } catch (const AudioDecoderError &error) {
            QVERIFY(!error.description().isEmpty());
        }
        (void)m_media.decoder().duration(path);
    }
}

QTEST_GUILESS_MAIN(TestDamagedMedia)
#include "tst_damagedmedia.moc"
