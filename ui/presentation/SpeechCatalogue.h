#pragma once

#include "ui/presentation/Catalogue.h"

namespace orvane {

class ModelManager;
class WhisperServerEngine;

/// The recognition models.
class SpeechCatalogue : public Catalogue
{
    Q_OBJECT

public:
    struct Collaborators
    {
        AppSettings &settings;
        ModelManager &models;
        const WhisperServerEngine &engine;
        FileChooser &chooser;
    };

    /// They outlive this.
    explicit SpeechCatalogue(const Collaborators &collaborators, QObject *parent = nullptr);

    void use(const QString &id) override;
    /// Of this machine.
    [[nodiscard]] static QString recommendedId();

private:
    [[nodiscard]] QList<Model> models() const override;
    [[nodiscard]] QString usedId() const override;
    [[nodiscard]] bool findEngine() const override;
    [[nodiscard]] QString textOfEngine(bool isFound) const override;

    AppSettings &m_settings;
    const ModelManager &m_models;
    const WhisperServerEngine &m_engine;
};

} // namespace orvane
