// Times the loading of a history: bench-history FOLDER [COUNT]
// FOLDER is an application data folder. When it holds no history, COUNT records of about 20 KiB are made
// in it first. Prints one line: records, milliseconds, resident memory at its peak in MiB.

#include "history/HistoryFolder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr int segmentsPerRecord = 55;
constexpr int wordsPerSegment = 6;

// Cyrillic letters, two bytes each on disk.
QString speech(std::mt19937 &random)
{
    std::uniform_int_distribution<int> letter(0x430, 0x44f);
    std::uniform_int_distribution<int> length(1, 11);
    QString said;
    for (int word = 0; word < wordsPerSegment; ++word) {
        said += u' ';
        for (int i = length(random); i > 0; --i)
            said += QChar(letter(random));
    }
    return said;
}

TranscriptRecord meeting(std::mt19937 &random, int number)
{
    TranscriptRecord record;
    record.kind = TranscriptKind::Meeting;
    record.title = u"Meeting %1"_s.arg(number);
    record.createdAt = record.createdAt.addSecs(-60 * qint64{number});
    record.modelID = u"base"_s;
    record.languageCode = u"ru"_s;
    for (qint64 i = 0; i < segmentsPerRecord; ++i) {
        record.segments.append(
            {.start = i * 4000, .end = (i + 1) * 4000, .text = speech(random), .speaker = i % 3 + 1});
        record.text += record.segments.last().text;
    }
    record.durationMs = record.segments.last().end;
    record.events = {RecordEvent{.prompt = std::nullopt, .text = record.text}};
    return record;
}

void makeRecords(HistoryFolder &history, int count)
{
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i)
        history.save(meeting(random, i));
}

double peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("Usage: bench-history FOLDER [COUNT]\n", stderr);
        return 2;
    }
    const StandardFolders folders{
        .applicationSupport = QFile::decodeName(argv[1]), .resources = {}, .temporary = {}};
    HistoryFolder history(folders);
    if (!QFileInfo::exists(folders.history()))
        makeRecords(history, argc > 2 ? std::atoi(argv[2]) : 10'000);

    QElapsedTimer timer;
    timer.start();
    history.prepare();
    const qsizetype loaded = history.load().size();
    std::printf("%lld records, %.1f ms, peak %.0f MiB\n", static_cast<long long>(loaded),
                static_cast<double>(timer.nsecsElapsed()) / 1e6, peakMemory());
    return 0;
}
