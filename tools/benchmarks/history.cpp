// Measures a long history: bench-history FOLDER COUNT
// FOLDER is an application data folder. When it holds no history, COUNT records of about 20 KiB are made in
// it first. Prints one line of JSON: milliseconds, and MiB of private memory.

#include "tools/benchmarks/Measurement.h"
#include "tools/benchmarks/ProcessMemory.h"

#include "history/HistoryStore.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr int segmentsPerRecord = 55;
constexpr int wordsPerSegment = 6;
/// Of the Russian alphabet, here from the frequent to the rare.
constexpr int letters = 32;
constexpr int vocabularySize = 40'000;
constexpr int savings = 20;
constexpr int rounds = 7;

/// Words of Cyrillic letters, two bytes each on disk, as often as words and letters are in a language.
class Speech
{
public:
    Speech()
    {
        std::discrete_distribution<int> letter(letters, 0, letters,
                                               [](double rank) { return 1 / std::pow(rank + 0.5, 0.7); });
        std::uniform_int_distribution<int> length(1, 11);
        for (int word = 0; word < vocabularySize; ++word) {
            QString made;
            for (int i = length(m_random); i > 0; --i)
                made += QChar(0x430 + letter(m_random));
            m_vocabulary.append(made);
        }
    }

    /// From the frequent to the rare.
    [[nodiscard]] QString word(qsizetype rank) const { return m_vocabulary[rank]; }
    [[nodiscard]] QString word() { return m_vocabulary[m_word(m_random)]; }

private:
    std::mt19937 m_random{1};
    QStringList m_vocabulary;
    std::discrete_distribution<int> m_word{vocabularySize, 0, vocabularySize,
                                           [](double rank) { return 1 / (rank + 5); }};
};

TranscriptRecord meeting(Speech &speech, int number)
{
    TranscriptRecord record;
    record.kind = TranscriptKind::Meeting;
    record.title = u"Meeting %1"_s.arg(number);
    record.createdAt = record.createdAt.addSecs(-60 * qint64{number});
    record.modelID = u"base"_s;
    record.languageCode = u"ru"_s;
    for (qint64 i = 0; i < segmentsPerRecord; ++i) {
        QString said;
        for (int word = 0; word < wordsPerSegment; ++word)
            said += u' ' + speech.word();
        record.segments.append(
            {.start = i * 4000, .end = (i + 1) * 4000, .text = said, .speaker = i % 3 + 1});
        record.text += said;
    }
    record.durationMs = record.segments.last().end;
    record.events = {RecordEvent{.prompt = std::nullopt, .text = record.text}};
    return record;
}

void makeRecords(const HistoryFolder &history, int count)
{
    Speech speech;
    for (int i = 0; i < count; ++i)
        history.save(meeting(speech, i));
}

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// The slowest letter of these being typed, each at its best.
QCoro::Task<double> typed(HistoryStore *history, QStringList words)
{
    double slowest = 0;
    for (const QString &word : words) {
        for (qsizetype length = 1; length <= word.size(); ++length) {
            double best = std::numeric_limits<double>::max();
            for (int round = 0; round < rounds; ++round) {
                QElapsedTimer timer;
                timer.start();
                co_await history->search(word.first(length));
                best = std::min(best, milliseconds(timer));
            }
            slowest = std::max(slowest, best);
        }
    }
    co_return slowest;
}

QCoro::Task<double> saved(HistoryStore *history)
{
    Speech speech;
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < savings; ++i) {
        QElapsedTimer timer;
        timer.start();
        const QUuid id = history->add(meeting(speech, -i)).id;
        co_await history->whenSaved(id);
        best = std::min(best, milliseconds(timer));
        history->remove(id);
        co_await history->whenSaved(id);
    }
    co_return best;
}

QCoro::Task<> measure(QStringList arguments)
{
    const StandardFolders folders{.applicationSupport = arguments[1],
                                  .resources = {},
                                  .temporary = {},
                                  .caches = arguments[1] + u"/caches"_s};
    const HistoryFolder files(folders);
    if (!QFileInfo::exists(folders.history()))
        makeRecords(files, arguments[2].toInt());
    const bool isIndexed = QFileInfo::exists(folders.historyIndex());

    const double memoryBefore = ProcessMemory::ofThisOne();
    HistoryStore tray(folders);
    tray.watch();
    co_await tray.flush();
    const double watchMemory = ProcessMemory::ofThisOne() - memoryBefore;

    HistoryStore history(folders);
    QElapsedTimer timer;
    timer.start();
    co_await history.whenLoaded();
    const double listed = milliseconds(timer);
    const double listMemory = ProcessMemory::ofThisOne() - memoryBefore - watchMemory;

    const Speech speech;
    const QString rare = QString(2, QChar(0x430 + letters - 1));
    const QStringList words = {speech.word(3), speech.word(300), speech.word(30'000), rare, u"meeting 77"_s};
    const double unprepared = co_await typed(&history, {rare});
    timer.start();
    {
        HistoryArchive archive(folders);
        while (co_await offMainThread([&archive] { return archive.prepareSearch(); })) {
        }
    }
    const double prepared = milliseconds(timer);
    const double letter = co_await typed(&history, words);
    std::printf(
        "{\"records\": %lld, \"wasIndexed\": %s, \"watch_mib\": %.1f, \"list_ms\": %.1f, \"list_mib\": %.1f, "
        "\"unprepared_letter_ms\": %.1f, \"prepare_ms\": %.0f, \"letter_ms\": %.1f, \"save_ms\": %.1f}\n",
        static_cast<long long>(history.records().size()), isIndexed ? "true" : "false", watchMemory, listed,
        listMemory, unprepared, prepared, letter, co_await saved(&history));
}

} // namespace

int main(int argc, char **argv)
{
    return Measurement::execute(argc, argv, "bench-history FOLDER COUNT", measure);
}
