#include "tests/recognition/PlainLabelling.h"

#include <QMap>

#include <algorithm>
#include <cmath>

namespace orvane::PlainLabelling {

namespace {

using Labels = std::vector<size_t>;

float middle(Vector values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

float distance(const Vector &a, const Vector &b)
{
    float sum = 0;
    for (size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum);
}

Labels mergeClose(Labels labels, const std::vector<Vector> &centers)
{
    Labels group(centers.size());
    for (size_t i = 0; i < group.size(); ++i)
        group[i] = i;
    for (size_t i = 0; i < centers.size(); ++i) {
        for (size_t j = i + 1; j < centers.size(); ++j) {
            if (distance(centers[i], centers[j]) < 1.4F) {
                const size_t joined = group[j];
                const size_t into = group[i];
                std::replace(group.begin(), group.end(), joined, into);
            }
        }
    }
    for (size_t &label : labels)
        label = group[label];
    return labels;
}

Labels cluster(std::vector<Vector> vectors, size_t k)
{
    for (Vector &vector : vectors) {
        vector[0] /= 40.0F;
        vector[1] /= 0.02F;
    }
    size_t lowest = 0;
    for (size_t i = 1; i < vectors.size(); ++i) {
        if (vectors[i][0] < vectors[lowest][0])
            lowest = i;
    }
    std::vector<Vector> centers = {vectors[lowest]};
    while (centers.size() < k) {
        size_t farthest = 0;
        float most = -1;
        for (size_t i = 0; i < vectors.size(); ++i) {
            float nearest = distance(vectors[i], centers[0]);
            for (const Vector &center : centers)
                nearest = std::min(nearest, distance(vectors[i], center));
            if (nearest > most) {
                most = nearest;
                farthest = i;
            }
        }
        centers.push_back(vectors[farthest]);
    }
    Labels labels(vectors.size(), k);
    for (int iteration = 0; iteration < 15; ++iteration) {
        bool changed = false;
        for (size_t i = 0; i < vectors.size(); ++i) {
            size_t best = 0;
            for (size_t c = 1; c < k; ++c) {
                if (distance(vectors[i], centers[c]) < distance(vectors[i], centers[best]))
                    best = c;
            }
            changed = changed || labels[i] != best;
            labels[i] = best;
        }
        for (size_t c = 0; c < k; ++c) {
            Vector sum(2, 0);
            float count = 0;
            for (size_t i = 0; i < vectors.size(); ++i) {
                if (labels[i] != c)
                    continue;
                sum[0] += vectors[i][0];
                sum[1] += vectors[i][1];
                ++count;
            }
            if (count > 0)
                centers[c] = {sum[0] / count, sum[1] / count};
        }
        if (!changed)
            break;
    }
    return mergeClose(labels, centers);
}

} // namespace

std::optional<Vector> features(const Vector &span, int sampleRate)
{
    const auto minimumLag = static_cast<size_t>(sampleRate / 400);
    const auto maximumLag = static_cast<size_t>(sampleRate / 70);
    Vector pitches;
    Vector brightness;
    for (size_t frame = 0; frame < 120 && frame * 256 + 512 <= span.size(); ++frame) {
        const float *x = span.data() + frame * 256;
        const size_t n = 512;
        float energy = 0;
        for (size_t i = 0; i < n; ++i)
            energy += x[i] * x[i];
        if (energy <= 0.000001F)
            continue;
        float differences = 0;
        for (size_t i = 1; i < n; ++i)
            differences += (x[i] - x[i - 1]) * (x[i] - x[i - 1]);
        brightness.push_back(differences / energy);

        size_t bestLag = 0;
        float best = 0;
        for (size_t lag = minimumLag; lag <= maximumLag && lag < n; ++lag) {
            float sum = 0;
            for (size_t i = 0; i < n - lag; ++i)
                sum += x[i] * x[i + lag];
            if (sum / energy > best) {
                best = sum / energy;
                bestLag = lag;
            }
        }
        if (bestLag >= 1 && best > 0.3F)
            pitches.push_back(static_cast<float>(sampleRate) / static_cast<float>(bestLag));
    }
    if (pitches.size() < 3 || brightness.empty())
        return std::nullopt;
    float sum = 0;
    for (const float value : brightness)
        sum += value;
    return Vector{middle(pitches), sum / static_cast<float>(brightness.size())};
}

QList<DisplaySegment> assign(QList<DisplaySegment> segments, const Vector &samples, int sampleRate,
                             int maxSpeakers)
{
    std::vector<Vector> known;
    QList<bool> isKnown;
    for (const DisplaySegment &segment : segments) {
        const qint64 first = std::max<qint64>(0, segment.start * sampleRate / 1000);
        qint64 last = std::max(first, segment.end * sampleRate / 1000);
        last = std::min(last, static_cast<qint64>(samples.size()));
        std::optional<Vector> vector;
        if (last - first >= 4000)
            vector = features(Vector(samples.begin() + first, samples.begin() + last), sampleRate);
        isKnown.append(vector.has_value());
        if (vector)
            known.push_back(*vector);
    }
    const bool isSingle = segments.size() < 2 || maxSpeakers < 2 || samples.empty() || known.size() < 2;
    const Labels labels =
        isSingle ? Labels() : cluster(known, std::min(known.size(), static_cast<size_t>(maxSpeakers)));
    QMap<size_t, qint64> numbers;
    qint64 current = 1;
    size_t next = 0;
    for (qsizetype i = 0; i < segments.size(); ++i) {
        if (!isSingle && isKnown[i]) {
            const size_t label = labels[next++];
            if (!numbers.contains(label)) {
                const qint64 number = numbers.size() + 1;
                numbers.insert(label, number);
            }
            current = numbers[label];
        }
        segments[i].speaker = current;
    }
    return segments;
}

} // namespace orvane::PlainLabelling
