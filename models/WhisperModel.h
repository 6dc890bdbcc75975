#pragma once

#include "base/localization/Localization.h"

#include <QList>
#include <QString>

namespace orvane {

/// A recognition model of the catalogue, in whisper.cpp's ggml form. ModelFile is what an engine gets.
struct WhisperModel
{
    QString id;
    QString displayName;
    QString fileName;
    /// Size of the download and memory needed, as shown: "≈ 142 МБ".
    Localization::Text approxSize;
    Localization::Text approxRAM;
    /// False for models that know English only.
    bool multilingual = true;

    /// The models the user may download, in the order of every list and of the fallback choice.
    [[nodiscard]] static const QList<WhisperModel> &catalog();
    /// What every file begins with: the ggml form's magic number, little-endian.
    [[nodiscard]] static QByteArray magic() { return "lmgg"; }

    /// Id of the model whose file begins with these bytes, 36 at least, the magic included; empty for one
    /// that is not in the catalogue. Of models of one shape the newest.
    [[nodiscard]] static QString recognised(const QByteArray &beginning);
    /// Id of the model that suits such a machine, in any language: heard without much waiting.
    [[nodiscard]] static QString recommendedID(qint64 memory, int processors);

    /// Path of the file in the model repository.
    [[nodiscard]] QString repositoryPath() const;

    bool operator==(const WhisperModel &) const = default;
};

} // namespace orvane
