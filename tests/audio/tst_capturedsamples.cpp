#include "audio/CapturedSamples.h"
#include "audio/LevelMeter.h"

#include <QTest>

#include <atomic>
#include <numeric>
#include <thread>

using namespace orvane;

class TestCapturedSamples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chunksAreTheWhole_data();
    void chunksAreTheWhole();
    void withoutHandler();
    void flushedInOrder();
    void loudness_data();
    void loudness();
    void smooths();
    void measuresBlocks();
};

void TestCapturedSamples::chunksAreTheWhole_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<int>("minSize");
    QTest::newRow("a few deliveries") << 0.1 << 1600;
    QTest::newRow("less than a delivery") << 0.01 << 160;
    QTest::newRow("less than a sample") << 1e-9 << 1;
    QTest::newRow("longer than all") << 30.0 << 480'000;
}

void TestCapturedSamples::chunksAreTheWhole()
{
    QFETCH(const double, seconds);
    QFETCH(const int, minSize);
    std::vector<float> all(20'000);
    std::iota(all.begin(), all.end(), 0.0F);

    CapturedSamples samples;
    std::vector<float> handedOut;
    bool isAnyShort = false;
    samples.setChunks(seconds, [&](std::vector<float> chunk) {
        isAnyShort |= chunk.size() < size_t(minSize);
        handedOut.insert(handedOut.end(), chunk.begin(), chunk.end());
        samples.setChunks(seconds, nullptr); // would wait for ever if a lock were held here
        samples.setChunks(seconds, [&](const std::vector<float> &next) {
            isAnyShort |= next.size() < size_t(minSize);
            handedOut.insert(handedOut.end(), next.begin(), next.end());
        });
    });
    for (size_t place = 0; place < all.size();) {
        const size_t count = std::min(1 + place % 700, all.size() - place);
        samples.add(std::span(all).subspan(place, count));
        place += count;
    }
    QVERIFY(!isAnyShort);
    QCOMPARE(handedOut.empty(), size_t(minSize) > all.size());
    const std::vector<float> rest = samples.takePendingChunk();
    QVERIFY(rest.size() < size_t(minSize));
    handedOut.insert(handedOut.end(), rest.begin(), rest.end());
    QVERIFY(handedOut == all);
    QVERIFY(samples.takePendingChunk().empty());
    QVERIFY(samples.takeAll().empty());
}

void TestCapturedSamples::withoutHandler()
{
    const std::vector<float> some(5000, 0.5F);
    CapturedSamples samples;
    samples.setChunks(0.1, nullptr);
    samples.add(some);
    QVERIFY(samples.takeAll().empty());
    samples.setChunks(0, nullptr);
    samples.add(some);
    QCOMPARE(samples.takePendingChunk().size(), some.size());
    QCOMPARE(samples.takeAll().size(), some.size());

    samples.add(some);
    samples.clear();
    QVERIFY(samples.takeAll().empty());
}

void TestCapturedSamples::flushedInOrder()
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

void TestCapturedSamples::loudness_data()
{
    QTest::addColumn<std::vector<float>>("samples");
    QTest::addColumn<float>("expected");
    std::vector<float> click(1000);
    click[500] = -0.125F;
    QTest::newRow("none") << std::vector<float>() << 0.0F;
    QTest::newRow("zeros") << std::vector<float>(1000) << 0.0F;
    QTest::newRow("by its mean") << std::vector<float>(1000, 0.03125F) << std::pow(0.5F, 0.6F);
    QTest::newRow("by its peak, as noise") << click << std::pow(0.5F, 0.6F) * 0.25F;
    QTest::newRow("at the limit of noise") << std::vector<float>(1000, 0.0041F) << std::pow(0.0656F, 0.6F);
    QTest::newRow("noise") << std::vector<float>(1000, 0.0039F) << std::pow(0.0624F, 0.6F) * 0.25F;
    QTest::newRow("loud") << std::vector<float>(1000, -1.0F) << 1.0F;
}

void TestCapturedSamples::loudness()
{
    QFETCH(const std::vector<float>, samples);
    QFETCH(const float, expected);
    QVERIFY(std::abs(LevelMeter::loudness(samples) - expected) < 1e-5F);
}

void TestCapturedSamples::smooths()
{
    QCOMPARE(LevelMeter::smoothed(0.2F, 0.6F), 0.2F + 0.4F * 0.55F);
    QCOMPARE(LevelMeter::smoothed(0.6F, 0.2F), 0.6F - 0.4F * 0.18F);
    QCOMPARE(LevelMeter::smoothed(0.5F, 0.5F), 0.5F);
}

void TestCapturedSamples::measuresBlocks()
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

QTEST_GUILESS_MAIN(TestCapturedSamples)
#include "tst_capturedsamples.moc"
