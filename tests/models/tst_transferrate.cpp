#include "models/TransferRate.h"

#include <QTest>

using namespace orvane;
using namespace std::chrono_literals;

class TestTransferRate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheLastSeconds()
    {
        TransferRate::Clock::time_point now;
        qint64 bytes = 50'000'000; // of an earlier attempt: no speed
        TransferRate rate(bytes, now);
        rate.update(bytes + 1'000'000, now + 10ms);
        QCOMPARE(rate.bytesPerSecond(), 0.0);
        QCOMPARE(rate.remainingMs(1000), -1);

        const auto run = [&](qint64 bytesEach) {
            for (int i = 0; i < 40; ++i)
                rate.update(bytes += bytesEach, now += 250ms);
        };
        run(1'000'000);
        QVERIFY(std::abs(rate.bytesPerSecond() - 4e6) < 1);
        QVERIFY(std::abs(rate.remainingMs(8'000'000) - 2000) <= 1);
        run(250'000);
        QVERIFY2(std::abs(rate.bytesPerSecond() - 1e6) < 0.15e6,
                 qPrintable(QString::number(rate.bytesPerSecond())));
        rate.update(bytes, now += 2s);
        QVERIFY(rate.bytesPerSecond() > 0);
        rate.update(bytes, now += 2s);
        QCOMPARE(rate.bytesPerSecond(), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestTransferRate)
#include "tst_transferrate.moc"
