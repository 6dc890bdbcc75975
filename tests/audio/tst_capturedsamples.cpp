#include "audio/CapturedSamples.h"
#include "audio/LevelMeter.h"
#include "tests/support/Rows.h"

#include <atomic>
#include <cmath>
#include <numeric>
#include <thread>

using namespace orvane;
using namespace orvane::test;

class TestCapturedSamples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chunksAreTheWhole_data()
    {
        const Rows<double, size_t> row("seconds", "minSize");
        row("a few deliveries", 0.1, size_t(1600));
        row("less than a sample", 1e-9, size_t(1));
        row("longer than all", 30.0, size_t(480'000));
    }

    void chunksAreTheWhole()
    {
        QFETCH(const double, seconds);
        QFETCH(const size_t, minSize);
        std::vector<float> all(20'000);
        std::iota(all.begin(), all.end(), 0.0F);

        CapturedSamples samples;
        std::vector<float> handedOut;
        bool isAnyShort = false;
        samples.setChunks(seconds, [&](const std::vector<float> &chunk) {
            isAnyShort |= chunk.size() < minSize;
            handedOut.insert(handedOut.end(), chunk.begin(), chunk.end());
            (void)samples.takeAll(); // would wait for ever if the lock of the samples were held here
        });
        for (std::span<const float> rest(all); !rest.empty();) {
            const size_t count = std::min(1 + rest.size() % 700, rest.size());
            samples.add(rest.first(count));
            rest = rest.subspan(count);
        }
        QVERIFY(!isAnyShort);
        QCOMPARE(handedOut.empty(), minSize > all.size());
        samples.flushChunk();
        QVERIFY(handedOut == all);
        QVERIFY(samples.takeAll().empty());
    }

    void keepsWhatGoesIntoNoChunks()
    {
        const std::vector<float> some(5000, 0.5F);
        CapturedSamples samples;
        samples.add(some);
        QVERIFY(samples.takeAll() == some);
        samples.add(some);
        samples.clear();
        QVERIFY(samples.takeAll().empty());
    }

    void flushedInOrder()
    {
        std::vector<float> all(2'000'000);
        std::iota(all.begin(), all.end(), 0.0F);
        CapturedSamples samples;
        std::vector<float> handedOut;
        samples.setChunks(0.01, [&](const std::vector<float> &chunk) {
            handedOut.insert(handedOut.end(), chunk.begin(), chunk.end());
        });
        std::atomic<bool> isDone = false;
        std::jthread audio([&] {
            for (std::span<const float> rest(all); !rest.empty(); rest = rest.subspan(50))
                samples.add(rest.first(50));
            isDone = true;
        });
        while (!isDone)
            samples.flushChunk(); // as before each sync of a recording
        audio.join();
        samples.flushChunk();
        QVERIFY(handedOut == all);
    }

    void loudness_data()
    {
        const Rows<std::vector<float>, float> row("samples", "expected");
        std::vector<float> click(LevelMeter::blockSize);
        click[500] = -0.125F;
        const auto all = [](float sample) { return std::vector<float>(LevelMeter::blockSize, sample); };
        row("by its mean", all(0.03125F), std::pow(0.5F, 0.6F));
        row("by its peak, as noise", click, std::pow(0.5F, 0.6F) * 0.25F);
        row("at the limit of noise", all(0.0041F), std::pow(0.0656F, 0.6F));
        row("loud", all(-1), 1.0F);
    }

    void loudness()
    {
        QFETCH(const std::vector<float>, samples);
        QFETCH(const float, expected);
        float level = 0;
        LevelMeter().add(samples, [&level](float measured) { level = measured; });
        QVERIFY(std::abs(level - 0.55F * expected) < 1e-5F);
    }

    void smoothsBlocks()
    {
        // A loud block and two silent ones, in pieces that end anywhere.
        std::vector<float> samples(3 * LevelMeter::blockSize + 10);
        std::fill_n(samples.begin(), LevelMeter::blockSize, 1.0F);
        std::vector<float> levels;
        LevelMeter meter;
        for (std::span<const float> rest(samples); !rest.empty();) {
            const auto piece = rest.first(std::min<size_t>(rest.size(), 321));
            meter.add(piece, [&](float level) { levels.push_back(level); });
            rest = rest.subspan(piece.size());
        }
        QCOMPARE(levels.size(), size_t(3));
        QCOMPARE(levels[0], 0.55F);
        QCOMPARE(levels[1], 0.55F * 0.82F);
        QCOMPARE(levels[2], 0.55F * 0.82F * 0.82F);
    }
};

QTEST_GUILESS_MAIN(TestCapturedSamples)
#include "tst_capturedsamples.moc"
