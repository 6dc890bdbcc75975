#include "models/WhisperModel.h"

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

QString WhisperModel::repositoryPath() const
{
    return u"/vantrel/whisper.cpp/resolve/main/"_s + fileName;
}

} // namespace orvane
