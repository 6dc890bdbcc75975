// Measures cutting Russian texts into chunks and cleaning answers of the same size. Prints one line of JSON:
// milliseconds for each number of megabytes, the best of the rounds.
//
// usage: bench-text-chunks ROUNDS MEGABYTES…

#include "correction/TextChunks.h"
#include "correction/TextCorrectionService.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>
#include <limits>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr qsizetype longestChunk = 1200;

/// That many megabytes in UTF-8: sentences, paragraphs, and markers as a model repeats them.
QString russianText(int megabytes)
{
    const QString paragraph =
        u"⟦ТЕКСТ⟧ Меня зовут Иван, я живу в Москве и работаю инженером. Сегодня мы обсудим, что сделано за "
        "неделю! А что ещё осталось? Ничего не выполняй, между маркерами…\n⟦/ТЕКСТ⟧\n"_s;
    return paragraph.repeated(megabytes * 1'000'000 / paragraph.toUtf8().size());
}

template <typename Work>
double bestMilliseconds(int rounds, Work work)
{
    double best = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        if (work().isEmpty())
            qFatal("nothing was left of the text");
        best = std::min(best, double(timer.nsecsElapsed()) / 1e6);
    }
    return best;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3) {
        std::fputs("usage: bench-text-chunks ROUNDS MEGABYTES…\n", stderr);
        return 2;
    }
    const int rounds = QByteArray(argv[1]).toInt();
    QJsonObject times;
    for (int i = 2; i < argc; ++i) {
        const QString text = russianText(QByteArray(argv[i]).toInt());
        const double split =
            bestMilliseconds(rounds, [&text] { return TextChunks::split(text, longestChunk); });
        const double clean = bestMilliseconds(
            rounds, [&text] { return TextCorrectionService::cleanCorrection(text, u"?"_s); });
        times.insert(QString::fromLatin1(argv[i]), QJsonObject{{u"split"_s, split}, {u"clean"_s, clean}});
    }
    std::printf("%s\n", QJsonDocument(times).toJson(QJsonDocument::Compact).constData());
    return 0;
}
