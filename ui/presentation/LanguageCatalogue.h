#pragma once

#include "ui/presentation/Catalogue.h"

#include <QStringList>

namespace orvane {

class CorrectionModelManager;
class TextCorrectionService;

/// The language models, and which engine asks one.
class LanguageCatalogue : public Catalogue
{
    Q_OBJECT
    Q_PROPERTY(QStringList engines READ engines NOTIFY engineChanged)
    Q_PROPERTY(int engineIndex READ engineIndex WRITE setEngineIndex NOTIFY engineChanged)
    Q_PROPERTY(QString engineNote READ engineNote NOTIFY engineChanged)

public:
    struct Collaborators
    {
        AppSettings &settings;
        CorrectionModelManager &models;
        TextCorrectionService &corrector;
        FileChooser &chooser;
    };

    /// They outlive this.
    explicit LanguageCatalogue(const Collaborators &collaborators, QObject *parent = nullptr);

    [[nodiscard]] QStringList engines() const;
    [[nodiscard]] int engineIndex() const;
    void setEngineIndex(int index);
    /// What the chosen engine is, and whether it works here.
    [[nodiscard]] QString engineNote() const;

    void use(const QString &id) override;

private:
    [[nodiscard]] QList<Model> models() const override;
    [[nodiscard]] QString usedId() const override;
    [[nodiscard]] bool findEngine() const override;
    [[nodiscard]] QString textOfEngine(bool isFound) const override;

    AppSettings &m_settings;
    TextCorrectionService &m_corrector;
    /// Of this machine.
    const QString m_recommended;
};

} // namespace orvane
