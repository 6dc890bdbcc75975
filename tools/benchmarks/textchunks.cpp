// Measures cutting texts into chunks, and cleaning them as if they were answers. Prints a JSON list:
// milliseconds for each file, the best of the rounds.
//
// usage: bench-text-chunks ROUNDS FILE…

#include "correction/TextChunks.h"
#include "correction/TextCorrectionService.h"

#include <QElapsedTimer>
#include <QFile>
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

QString textOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s", qPrintable(file.errorString()));
    return QString::fromUtf8(file.readAll());
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
        std::fputs("usage: bench-text-chunks ROUNDS FILE…\n", stderr);
        return 2;
    }
    const int rounds = QByteArray(argv[1]).toInt();
    QJsonArray times;
    for (int i = 2; i < argc; ++i) {
        const QString text = textOf(QFile::decodeName(argv[i]));
        const double split =
            bestMilliseconds(rounds, [&text] { return TextChunks::split(text, longestChunk); });
        const double clean = bestMilliseconds(
            rounds, [&text] { return TextCorrectionService::cleanCorrection(text, u"?"_s); });
        times.append(QJsonObject{{u"split"_s, split}, {u"clean"_s, clean}});
    }
    std::printf("%s\n", QJsonDocument(times).toJson(QJsonDocument::Compact).constData());
    return 0;
}
