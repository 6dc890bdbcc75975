#pragma once

#include "base/localization/Localization.h"
#include "settings/StoredChoices.h"

#include <QList>
#include <QString>

namespace orvane {

/// A language model in GGUF form that the local correction engine can run.
struct CorrectionModel
{
    QString id;
    QString displayName;
    QString fileName;
    /// Name of the model's own repository.
    QString repository;
    /// Size of the download and memory needed, in gigabytes.
    double sizeGB = 0;
    double ramGB = 0;
    /// Family of the model's chat template.
    QString chatFormat;
    /// How strong the model is, and how well it knows which language.
    Localization::Text strength;
    Localization::Text languages;

    /// The models the user may download, in the order of every list.
    [[nodiscard]] static const QList<CorrectionModel> &catalog();
    /// What every file begins with.
    [[nodiscard]] static QByteArray magic() { return "GGUF"; }

    /// Path of the file in the model repository.
    [[nodiscard]] QString repositoryPath() const;

    enum class Processor { AppleSilicon, Other };
    /// Id of the largest model that such a machine runs well; the smallest model when none does.
    [[nodiscard]] static QString recommendedID(double ramGB, Processor processor);

    bool operator==(const CorrectionModel &) const = default;
};

/// The engine's name as shown, in the interface language.
[[nodiscard]] QString title(CorrectionEngine engine);

} // namespace orvane
