// Decodes a file and prints one line of JSON: milliseconds, samples, and the peak memory of the process in
// KiB.
//
// usage: bench-decode FILE MODULE-FOLDER

#include "audio/AudioDecoder.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

#include <sys/resource.h>

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench-decode FILE MODULE-FOLDER\n", stderr);
        return 2;
    }
    try {
        QElapsedTimer timer;
        timer.start();
        const orvane::AudioDecoder decoder(QFile::decodeName(argv[2]));
        const std::vector<float> samples = decoder.decode(QFile::decodeName(argv[1]));
        const qint64 milliseconds = timer.elapsed();

        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        std::printf("{\"milliseconds\": %lld, \"samples\": %zu, \"peakKiB\": %ld}\n",
                    static_cast<long long>(milliseconds), samples.size(), usage.ru_maxrss);
    } catch (const orvane::Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
