#pragma once

#include "recognition/TranscriptionService.h"
#include "ui/presentation/RowModel.h"

#include <optional>

namespace orvane {

class AppSettings;
class ModelManager;

/// With which model, in which language and whether with speakers the next file is recognised: the stored
/// choices, for pickers. Main thread.
class Recognition : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool hasModel READ hasModel NOTIFY modelsChanged)
    Q_PROPERTY(QAbstractItemModel *models READ models CONSTANT)
    Q_PROPERTY(int modelIndex READ modelIndex WRITE setModelIndex NOTIFY modelsChanged)
    Q_PROPERTY(QAbstractItemModel *languages READ languages CONSTANT)
    Q_PROPERTY(int languageIndex READ languageIndex WRITE setLanguageIndex NOTIFY languageChanged)
    Q_PROPERTY(bool detectSpeakers READ detectSpeakers WRITE setDetectSpeakers NOTIFY speakersChanged)

public:
    /// They outlive this.
    Recognition(AppSettings &settings, ModelManager &models, QObject *parent = nullptr);

    [[nodiscard]] bool hasModel() const { return m_models.count() > 0; }
    [[nodiscard]] RowModel *models() { return &m_models; }
    [[nodiscard]] int modelIndex() const;
    void setModelIndex(int index);
    [[nodiscard]] RowModel *languages() { return &m_languages; }
    [[nodiscard]] int languageIndex() const;
    void setLanguageIndex(int index);
    [[nodiscard]] bool detectSpeakers() const;
    void setDetectSpeakers(bool on);

    /// For a file; none without a model.
    [[nodiscard]] std::optional<TranscriptionService::Request> request(const QString &audioPath) const;

Q_SIGNALS:
    void modelsChanged();
    void languageChanged();
    void speakersChanged();

private:
    void showModels();
    void showLanguages();

    AppSettings &m_settings;
    ModelManager &m_manager;
    RowModel m_models;
    RowModel m_languages;
};

} // namespace orvane
