#include "audio/AudioRecorder.h"
#include "audio/CaptureError.h"
#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "engine/PortReservation.h"
#include "tests/support/Rows.h"
#include "tests/support/SoundServer.h"
#include "tests/support/TaskResult.h"
#include "tests/support/Tone.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numbers>

#include <sys/ioctl.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using orvane::test::SoundServer;

namespace {

constexpr int rate = sampleRate;
constexpr double loud = 0.5;
constexpr int patience = 20'000; // ms, on a busy machine

bool isSound(float sample)
{
    return std::abs(sample) > 0.1F;
}

// Whether 0.4 s of the samples from there on are a tone of that frequency.
bool isTone(std::vector<float>::const_iterator from, double frequency)
{
    return amplitudeAt(frequency, {from, from + rate * 4 / 10}) > 0.9 * loud;
}

} // namespace

class TestAudioRecorder : public QObject
{
    Q_OBJECT

    const QString m_modules = QStringLiteral(ORVANE_RESOURCES);
    const QTemporaryDir m_folder;
    std::unique_ptr<SoundServer> m_server;

    static void start(AudioRecorder &recorder)
    {
        const auto started = finished(recorder.start());
        QCOMPARE(started.error(), QString());
        QVERIFY(recorder.isRunning());
    }

    static void stop(AudioRecorder &recorder, std::vector<float> &samples)
    {
        const TaskResult stopped(recorder.stop());
        QVERIFY(!recorder.isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(stopped.succeeded(), patience);
        samples = stopped.value();
    }

    // A microphone that gives exactly what is written into the pipe.
    [[nodiscard]] QString plugPipeIn() const
    {
        const QString pipe = m_folder.filePath(u"pipe"_s);
        QFile::remove(pipe); // a former server's
        m_server->control({u"load-module"_s, u"module-pipe-source"_s, u"source_name=pipe"_s,
                           u"file="_s + pipe, u"format=s16le"_s, u"rate=16000"_s, u"channels=1"_s});
        m_server->setDefault(u"pipe"_s);
        return pipe;
    }

    // A sine of half the full level.
    [[nodiscard]] QString tone(int frequency, double seconds) const
    {
        std::vector<float> samples(size_t(seconds * rate));
        for (size_t place = 0; place < samples.size(); ++place)
            samples[place] = float(loud * std::sin(2 * std::numbers::pi * frequency * double(place) / rate));
        const QString path = m_folder.filePath(u"%1 Hz %2 s.wav"_s.arg(frequency).arg(seconds));
        WavFileWriter writer(path, rate);
        writer.append(samples);
        writer.finalize();
        return path;
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (!SoundServer::isInstalled())
            QSKIP("pulseaudio is not installed");
    }

    void init()
    {
        m_server = std::make_unique<SoundServer>();
        m_server->enter();
    }

    void cleanup() { m_server.reset(); }

    void records_data()
    {
        const Rows<int, int, QString> row("sourceRate", "channels", "sample");
        row("usual", 48000, 2, u"s16le"_s);
        row("telephone", 8000, 1, u"ulaw"_s);
        row("studio", 96000, 6, u"s24le"_s);
    }

    void records()
    {
        QFETCH(const int, sourceRate);
        QFETCH(const int, channels);
        QFETCH(const QString, sample);
        m_server->plugIn(u"microphone"_s, {.rate = sourceRate, .channels = channels, .sample = sample});
        AudioRecorder recorder(m_modules);
        QCOMPARE(recorder.waveform(), QList<float>(48, 0));
        const QSignalSpy levelChanged(&recorder, &AudioRecorder::levelChanged);
        start(recorder);
        QElapsedTimer timer;
        timer.start();
        m_server->speak(u"microphone"_s, tone(440, 2));
        const qsizetype changes = levelChanged.count();
        QTRY_VERIFY_WITH_TIMEOUT(levelChanged.count() > changes, patience);
        // Nobody looked for two seconds: everything that was missed is in what was reported once.
        QCOMPARE(changes, 0);
        const QList<float> waveform = recorder.waveform();
        QCOMPARE(waveform.size(), 48);
        QCOMPARE(waveform.constLast(), recorder.level());
        QVERIFY(std::ranges::count_if(waveform, [](float level) { return level > 0.9F; }) > 15);
        const double seconds = double(timer.elapsed()) / 1000;
        std::vector<float> samples;
        stop(recorder, samples);
        QCOMPARE(recorder.level(), 0);
        QCOMPARE(recorder.waveform(), QList<float>(48, 0));

        const double difference = double(samples.size()) / rate - seconds;
        QVERIFY2(std::abs(difference) < 0.15, qPrintable(QString::number(difference)));
        QVERIFY(std::ranges::all_of(samples, [](float value) { return std::abs(value) < 0.6F; }));
        const auto begin = std::ranges::find_if(samples, isSound);
        QVERIFY(samples.end() - begin > 19 * rate / 10);
        const std::span middle(begin + rate / 10, begin + 18 * rate / 10);
        // A missing piece would shift the wave, and everything else would be heard beside it.
        const double heard = amplitudeAt(440, middle);
        QVERIFY2(std::abs(heard - loud) < 0.02 * loud, qPrintable(QString::number(heard)));
        QVERIFY(std::abs(wholeAmplitude(middle) - heard) < 0.02 * loud);
    }

    void keepsEverySample()
    {
        QFile device(plugPipeIn());
        QVERIFY(device.open(QFile::WriteOnly | QFile::Unbuffered));
        const auto write = [&](qsizetype count, qint16 sample) {
            const QList<qint16> samples(count, sample);
            device.write(reinterpret_cast<const char *>(samples.constData()), count * 2);
        };

        AudioRecorder recorder(m_modules);
        int whole = 0;
        for (int round = 0; round < 3; ++round) {
            start(recorder);
            constexpr qsizetype spoken = rate;
            write(spoken, 10'000);
            int unread = spoken;
            while (unread > 0)
                QCOMPARE(ioctl(device.handle(), FIONREAD, &unread), 0);
            // The server has it all and may not have delivered it all.
            const TaskResult stopped(recorder.stop());
            QTimer later;
            connect(&later, &QTimer::timeout, this, [&] { write(rate / 50, 0); });
            later.start(20);
            QTRY_VERIFY_WITH_TIMEOUT(stopped.isDone(), patience);
            const auto heard = std::ranges::count_if(
                stopped.value(), [](float sample) { return std::abs(sample - 0.305F) < 0.01F; });
            whole += heard == spoken;
        }
        // A server that is interrupted between reading and passing on has not recorded yet.
        QVERIFY2(whole >= 2, qPrintable(QString::number(whole)));
    }

    void outlivesItsDevice_data()
    {
        const Rows<bool> row("serverCrashes");
        row("unplugged", false);
        row("server crashed", true);
    }

    void outlivesItsDevice()
    {
        QFETCH(const bool, serverCrashes);
        m_server->plugIn(u"microphone"_s);
        AudioRecorder recorder(m_modules);
        start(recorder);
        m_server->speak(u"microphone"_s, tone(440, 0.5));
        QVERIFY(!recorder.deviceIsSilent());

        if (serverCrashes)
            m_server->crash();
        else
            m_server->unplug(u"microphone"_s);
        QTRY_VERIFY_WITH_TIMEOUT(recorder.deviceIsSilent(), patience);
        QVERIFY(recorder.isRunning());
        if (serverCrashes)
            m_server->start();
        m_server->plugIn(u"microphone"_s);

        // Speak until it is heard: nobody tells when the new device runs.
        for (int round = 0; recorder.deviceIsSilent() && round < 40; ++round) {
            m_server->speak(u"microphone"_s, tone(880, 0.5));
            QCoreApplication::processEvents();
        }
        m_server->speak(u"microphone"_s, tone(880, 0.5));
        std::vector<float> samples;
        stop(recorder, samples);
        QVERIFY(isTone(std::ranges::find_if(samples, isSound), 440));
        const auto end = std::find_if(samples.rbegin(), samples.rend(), isSound).base() - rate / 20;
        QVERIFY(isTone(end - rate * 4 / 10, 880));
    }

    void followsTheDefault()
    {
        m_server->plugIn(u"first"_s);
        m_server->plugIn(u"second"_s, {.rate = 44100, .channels = 1});
        const auto low = m_server->startSpeaking(u"first"_s, tone(440, 60));
        const auto high = m_server->startSpeaking(u"second"_s, tone(880, 60));
        std::atomic<bool> isLow = false;
        std::atomic<bool> isHigh = false;
        AudioRecorder recorder(m_modules);
        recorder.setChunks(0.1, [&](const std::vector<float> &chunk) {
            isLow = amplitudeAt(440, chunk) > 0.9 * loud;
            isHigh = amplitudeAt(880, chunk) > 0.9 * loud;
        });
        start(recorder);
        QTRY_VERIFY_WITH_TIMEOUT(isLow, patience);
        m_server->setDefault(u"second"_s);
        QTRY_VERIFY_WITH_TIMEOUT(isHigh, patience);
        m_server->unplug(u"second"_s);
        QTRY_VERIFY_WITH_TIMEOUT(isLow, patience);
        std::vector<float> samples;
        stop(recorder, samples);
        QVERIFY(samples.empty());
    }

    void reportsSilence()
    {
        m_server->plugIn(u"microphone"_s);
        AudioRecorder recorder(m_modules);
        start(recorder);
        QElapsedTimer timer;
        timer.start();
        QTRY_VERIFY_WITH_TIMEOUT(recorder.deviceIsSilent(), patience);
        QVERIFY(timer.elapsed() > 1900);
        std::vector<float> samples;
        stop(recorder, samples);
        QVERIFY(!recorder.deviceIsSilent());
    }

    void cannotStart_data()
    {
        const Rows<QString, CaptureError::Kind, QString> row("reason", "kind", "description");
        row("monitor only", u"monitor"_s, CaptureError::Kind::noInputDevice, u"Микрофон не найден. "_s);
        row("no server", u"server"_s, CaptureError::Kind::deviceFailed, u"Звуковая служба не отвечает. "_s);
        row("no module", u"module"_s, CaptureError::Kind::deviceFailed,
            u"Модуль записи звука не загрузился. Переустановите программу."_s);
        row("refused", u"refusal"_s, CaptureError::Kind::accessRefused, u"Нет доступа к микрофону. "_s);
    }

    void cannotStart()
    {
        QFETCH(const QString, reason);
        QFETCH(const CaptureError::Kind, kind);
        QFETCH(const QString, description);
        if (reason == u"server")
            m_server->crash();
        if (reason == u"monitor")
            m_server->control({u"load-module"_s, u"module-null-sink"_s});
        if (reason == u"refusal")
            m_server->refuseThisProcess(orvaneReserveFreePort(0));
        AudioRecorder recorder(reason == u"module" ? m_folder.path() : m_modules);
        const auto started = finished(recorder.start());
        const auto error = started.failedAs<CaptureError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), kind);
        QVERIFY2(error->description().startsWith(description), error->what());
        QVERIFY(!recorder.isRunning());

        if (reason == u"monitor") {
            m_server->plugIn(u"microphone"_s);
            start(recorder);
        }
    }

    void startsAndStopsInAnyOrder()
    {
        m_server->plugIn(u"microphone"_s);
        AudioRecorder recorder(m_modules);
        const TaskResult idle(recorder.stop());
        QVERIFY(idle.isDone());

        for (int round = 0; round < 20; ++round) {
            const TaskResult first(recorder.start());
            const TaskResult second(recorder.start());
            if (round % 2)
                QTest::qWait(3 * round);
            const bool hadStarted = first.isDone();
            const TaskResult stopped(recorder.stop());
            const TaskResult next(recorder.start());
            QTRY_VERIFY_WITH_TIMEOUT(next.isDone() && first.isDone() && second.isDone(), patience);
            QCOMPARE(next.error(), QString());
            QVERIFY(first.isCancelled() || hadStarted);
            QVERIFY(second.isCancelled() || hadStarted);
            QVERIFY(stopped.succeeded());
            QVERIFY(recorder.isRunning());
            const TaskResult last(recorder.stop());
            const TaskResult nothing(recorder.stop());
            QTRY_VERIFY_WITH_TIMEOUT(last.isDone() && nothing.isDone(), patience);
            QVERIFY(nothing.value().empty());
        }
    }

    void endsWithItsRecorder()
    {
        m_server->plugIn(u"microphone"_s);
        for (int round = 0; round < 20; ++round) {
            auto recorder = std::make_unique<AudioRecorder>(m_modules);
            const TaskResult started(recorder->start());
            if (round >= 5)
                QTest::qWait(4 * (round - 5));
            std::optional<TaskResult<std::vector<float>>> stopped;
            if (round >= 15)
                stopped.emplace(recorder->stop());
            QElapsedTimer timer;
            timer.start();
            recorder.reset();
            QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
            QTRY_VERIFY_WITH_TIMEOUT(started.isDone(), patience);
            if (stopped)
                QTRY_VERIFY_WITH_TIMEOUT(stopped->isCancelled(), patience);
        }
    }

    void discards()
    {
        // A device that gives nothing keeps whoever wants its rest waiting for 250 ms.
        (void)plugPipeIn();
        AudioRecorder recorder(m_modules);
        qint64 fastest = patience;
        for (int round = 0; round < 5; ++round) {
            start(recorder);
            QElapsedTimer timer;
            timer.start();
            recorder.discard();
            start(recorder);
            fastest = std::min(fastest, timer.elapsed());
            recorder.discard();
        }
        QVERIFY2(fastest < 200, qPrintable(QString::number(fastest)));
    }
};

QTEST_GUILESS_MAIN(TestAudioRecorder)
#include "tst_audiorecorder.moc"
