#include "tests/recognition/PlainLabelling.h"

#include <algorithm>

namespace orvane::PlainLabelling {

namespace {

float middle(Vector values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

} // namespace

std::optional<Vector> features(const Vector &span, int rate)
{
    const auto minimumLag = static_cast<size_t>(rate / 400);
    const auto maximumLag = static_cast<size_t>(rate / 70);
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
            pitches.push_back(static_cast<float>(rate) / static_cast<float>(bestLag));
    }
    if (pitches.size() < 3 || brightness.empty())
        return std::nullopt;
    float sum = 0;
    for (const float value : brightness)
        sum += value;
    return Vector{middle(pitches), sum / static_cast<float>(brightness.size())};
}

} // namespace orvane::PlainLabelling
