#include "ui/presentation/Recognition.h"

#include "models/ModelManager.h"
#include "settings/AppSettings.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

int indexOf(const RowModel &rows, const QString &id)
{
    for (int i = 0; i < rows.count(); ++i) {
        if (rows.rows().at(i).value(u"id"_s) == id)
            return i;
    }
    return -1;
}

QString idAt(const RowModel &rows, int index)
{
    return index >= 0 && index < rows.count() ? rows.rows().at(index).value(u"id"_s).toString() : QString();
}

} // namespace

Recognition::Recognition(AppSettings &settings, ModelManager &models, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_manager(models),
      m_models({"id", "name"}),
      m_languages({"id", "name"})
{
    connect(&models, &ModelManager::downloadedChanged, this, &Recognition::showModels);
    connect(&settings, &AppSettings::selectedModelIDChanged, this, &Recognition::modelsChanged);
    connect(&settings, &AppSettings::languageCodeChanged, this, &Recognition::languageChanged);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, &Recognition::showLanguages);
    connect(&settings, &AppSettings::detectSpeakersChanged, this, &Recognition::speakersChanged);
    showModels();
    showLanguages();
}

void Recognition::showModels()
{
    QList<QVariantMap> rows;
    for (const WhisperModel &model : m_manager.downloadedModels())
        rows.append({{u"id"_s, model.id}, {u"name"_s, model.displayName}});
    m_models.setRows(rows);
    Q_EMIT modelsChanged();
}

void Recognition::showLanguages()
{
    QList<QVariantMap> rows;
    for (const TranscriptionLanguage &language : TranscriptionLanguage::all())
        rows.append({{u"id"_s, language.code}, {u"name"_s, language.displayName()}});
    m_languages.setRows(rows);
    Q_EMIT languageChanged();
}

int Recognition::modelIndex() const
{
    const std::optional<WhisperModel> model = m_manager.resolved(m_settings.selectedModelID());
    return model ? indexOf(m_models, model->id) : -1;
}

void Recognition::setModelIndex(int index)
{
    if (const QString id = idAt(m_models, index); !id.isEmpty())
        m_settings.setSelectedModelID(id);
}

int Recognition::languageIndex() const
{
    return indexOf(m_languages, m_settings.language().code);
}

void Recognition::setLanguageIndex(int index)
{
    if (const QString code = idAt(m_languages, index); !code.isEmpty())
        m_settings.setLanguageCode(code);
}

bool Recognition::detectSpeakers() const
{
    return m_settings.detectSpeakers();
}

void Recognition::setDetectSpeakers(bool on)
{
    m_settings.setDetectSpeakers(on);
}

std::optional<TranscriptionService::Request> Recognition::request(const QString &audioPath) const
{
    const std::optional<WhisperModel> model = m_manager.resolved(m_settings.selectedModelID());
    if (!model)
        return std::nullopt;
    using Speakers = TranscriptionService::SpeakerDetection;
    return TranscriptionService::Request{.audioPath = audioPath,
                                         .model = {.id = model->id, .path = m_manager.localPath(model->id)},
                                         .language = m_settings.language().code,
                                         .speakers =
                                             m_settings.detectSpeakers() ? Speakers::On : Speakers::Off};
}

} // namespace orvane
