#include "models/WhisperModel.h"

#include <QtEndian>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orvane {

const QList<WhisperModel> &WhisperModel::catalog()
{
    static const QList<WhisperModel> models = {
        {u"tiny"_s, u"Tiny"_s, u"ggml-tiny.bin"_s, u"≈ 75 МБ", u"≈ 0.4 ГБ", true},
        {u"tiny.en"_s, u"Tiny (English)"_s, u"ggml-tiny.en.bin"_s, u"≈ 75 МБ", u"≈ 0.4 ГБ", false},
        {u"base"_s, u"Base"_s, u"ggml-base.bin"_s, u"≈ 142 МБ", u"≈ 0.5 ГБ", true},
        {u"base.en"_s, u"Base (English)"_s, u"ggml-base.en.bin"_s, u"≈ 142 МБ", u"≈ 0.5 ГБ", false},
        {u"small"_s, u"Small"_s, u"ggml-small.bin"_s, u"≈ 466 МБ", u"≈ 1.0 ГБ", true},
        {u"small.en"_s, u"Small (English)"_s, u"ggml-small.en.bin"_s, u"≈ 466 МБ", u"≈ 1.0 ГБ", false},
        {u"medium"_s, u"Medium"_s, u"ggml-medium.bin"_s, u"≈ 1.5 ГБ", u"≈ 2.6 ГБ", true},
        {u"medium.en"_s, u"Medium (English)"_s, u"ggml-medium.en.bin"_s, u"≈ 1.5 ГБ", u"≈ 2.6 ГБ", false},
        {u"large-v1"_s, u"Large v1"_s, u"ggml-large-v1.bin"_s, u"≈ 2.9 ГБ", u"≈ 4.7 ГБ", true},
        {u"large-v2"_s, u"Large v2"_s, u"ggml-large-v2.bin"_s, u"≈ 2.9 ГБ", u"≈ 4.7 ГБ", true},
        {u"large-v3"_s, u"Large v3"_s, u"ggml-large-v3.bin"_s, u"≈ 2.9 ГБ", u"≈ 4.7 ГБ", true},
        {u"large-v3-turbo"_s, u"Large v3 Turbo"_s, u"ggml-large-v3-turbo.bin"_s, u"≈ 1.5 ГБ", u"≈ 2.6 ГБ",
         true},
    };
    return models;
}

QString WhisperModel::recognised(const QByteArray &beginning)
{
    struct Shape
    {
        QLatin1StringView id;
        int vocabulary;
        int width;
        int textLayers;

        bool operator==(const Shape &) const = default;
    };
    static constexpr std::array shapes = {
        Shape{"tiny"_L1, 51865, 384, 4},
        Shape{"tiny.en"_L1, 51864, 384, 4},
        Shape{"base"_L1, 51865, 512, 6},
        Shape{"base.en"_L1, 51864, 512, 6},
        Shape{"small"_L1, 51865, 768, 12},
        Shape{"small.en"_L1, 51864, 768, 12},
        Shape{"medium"_L1, 51865, 1024, 24},
        Shape{"medium.en"_L1, 51864, 1024, 24},
        Shape{"large-v2"_L1, 51865, 1280, 32},
        Shape{"large-v3"_L1, 51866, 1280, 32},
        Shape{"large-v3-turbo"_L1, 51866, 1280, 4},
    };
    // The magic, then: words, length, width, heads and layers that hear; length, width, heads and layers that
    // write.
    constexpr qsizetype numbers = 9;
    if (beginning.size() < qsizetype(sizeof(qint32)) * (1 + numbers))
        return {};
    const auto number = [&beginning](int index) {
        return qFromLittleEndian<qint32>(beginning.constData() + qsizetype(sizeof(qint32)) * (1 + index));
    };
    const auto fits = [&number](const Shape &shape) {
        return shape == Shape{shape.id, number(0), number(2), number(8)};
    };
    const auto *const found = std::ranges::find_if(shapes, fits);
    return found == shapes.end() ? QString() : QString(found->id);
}

QString WhisperModel::recommendedID(qint64 memory, int processors)
{
    constexpr qint64 giga = 1'000'000'000;
    if (memory >= 12 * giga && processors >= 12)
        return u"large-v3-turbo"_s;
    if (memory >= 6 * giga && processors >= 4)
        return u"small"_s;
    return memory >= giga * 3 / 2 ? u"base"_s : u"tiny"_s;
}

QString WhisperModel::repositoryPath() const
{
    return u"/vantrel/whisper.cpp/resolve/main/"_s + fileName;
}

} // namespace orvane
