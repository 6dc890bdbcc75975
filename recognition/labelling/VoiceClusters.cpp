#include "recognition/labelling/VoiceClusters.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <span>

namespace orvane::SpeakerDiarizer {

namespace {

/// What counts as the same distance in pitch (Hz) and in brightness.
constexpr Features scale = {40.0F, 0.02F};
/// In that measure.
constexpr float closeDistance = 1.4F;
constexpr int maxIterations = 15;

/// The mean in each dimension; none of no vectors.
std::optional<Features> centroid(std::span<const Features> vectors)
{
    if (vectors.empty())
        return std::nullopt;
    Features sum = {0, 0};
    for (const Features &vector : vectors)
        sum = {sum[0] + vector[0], sum[1] + vector[1]};
    const auto count = static_cast<float>(vectors.size());
    return Features{sum[0] / count, sum[1] / count};
}

float distance(const Features &left, const Features &right)
{
    const float pitch = left[0] - right[0];
    const float brightness = left[1] - right[1];
    return std::sqrt(pitch * pitch + brightness * brightness);
}

/// The place of the nearest centre, the first of equally near ones.
size_t nearest(const Features &vector, std::span<const Features> centers)
{
    const auto distanceTo = [&vector](const Features &center) { return distance(vector, center); };
    return static_cast<size_t>(std::ranges::min_element(centers, {}, distanceTo) - centers.begin());
}

/// Far apart from each other, beginning with the lowest voice.
std::vector<Features> initialCenters(std::span<const Features> vectors, size_t k)
{
    const auto pitch = [](const Features &vector) { return vector[0]; };
    std::vector<Features> centers = {*std::ranges::min_element(vectors, {}, pitch)};
    const auto isolation = [&centers](const Features &vector) {
        return distance(vector, centers[nearest(vector, centers)]);
    };
    while (centers.size() < k)
        centers.push_back(*std::ranges::max_element(vectors, {}, isolation));
    return centers;
}

/// A centre without members stays where it is.
void recenter(std::vector<Features> &centers, std::span<const Features> vectors, std::span<const int> labels)
{
    for (size_t i = 0; i < centers.size(); ++i) {
        std::vector<Features> members;
        for (size_t j = 0; j < vectors.size(); ++j) {
            if (labels[j] == static_cast<int>(i))
                members.push_back(vectors[j]);
        }
        centers[i] = centroid(members).value_or(centers[i]);
    }
}

/// The labels after uniting the clusters whose centres (scaled for comparison) are close. What is close
/// to a third that is close to the first belongs to it too.
std::vector<int> mergeClose(std::vector<int> labels, std::span<const Features> centers)
{
    std::vector<int> parent(centers.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto representative = [&parent](int label) {
        while (parent[static_cast<size_t>(label)] != label)
            label = parent[static_cast<size_t>(label)];
        return label;
    };
    for (size_t i = 0; i < centers.size(); ++i) {
        for (size_t j = i + 1; j < centers.size(); ++j) {
            if (distance(centers[i], centers[j]) < closeDistance)
                parent[static_cast<size_t>(representative(static_cast<int>(j)))] =
                    representative(static_cast<int>(i));
        }
    }
    std::ranges::transform(labels, labels.begin(), representative);
    return labels;
}

} // namespace

std::vector<int> cluster(std::vector<Features> vectors, int k)
{
    std::vector<int> labels(vectors.size(), 0);
    if (vectors.size() < 2 || k < 2)
        return labels;
    for (Features &vector : vectors)
        vector = {vector[0] / scale[0], vector[1] / scale[1]};

    std::vector<Features> centers = initialCenters(vectors, static_cast<size_t>(k));
    std::ranges::fill(labels, -1);
    for (int iteration = 0; iteration < maxIterations; ++iteration) {
        std::vector<int> assigned(vectors.size());
        std::ranges::transform(vectors, assigned.begin(), [&centers](const Features &vector) {
            return static_cast<int>(nearest(vector, centers));
        });
        if (assigned == labels)
            break;
        labels = std::move(assigned);
        recenter(centers, vectors, labels);
    }
    return mergeClose(std::move(labels), centers);
}

} // namespace orvane::SpeakerDiarizer
