#include "ui/presentation/SpeechCatalogue.h"

#include "base/localization/Localization.h"
#include "base/system/Machine.h"
#include "models/ModelManager.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"

#include <QThread>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString purpose(const QString &id)
{
    const QString family = id.section(u'.', 0, 0);
    if (family == u"tiny")
        return Localization::text(u"самая быстрая, черновое качество");
    if (family == u"base")
        return Localization::text(u"быстрая, для коротких диктовок");
    if (family == u"small")
        return id == family ? Localization::text(u"хороший русский, заметки и диктовка")
                            : Localization::text(u"заметки и диктовка");
    if (family == u"medium")
        return Localization::text(u"точная, медленнее Turbo");
    if (family == u"large-v3-turbo")
        return Localization::text(u"лучшая точность при разумной скорости");
    if (family == u"large-v3")
        return Localization::text(u"самая точная и самая медленная");
    return Localization::text(u"прежнее поколение, медленная");
}

/// The catalogue has a decimal point in both languages.
QString amount(const Localization::Text &text)
{
    return Localization::isEnglish() ? text.toString() : text.toString().replace(u'.', u',');
}

QString detail(const WhisperModel &model)
{
    QStringList parts = {amount(model.approxSize), amount(model.approxRAM) + Localization::text(u" ОЗУ"),
                         purpose(model.id)};
    if (!model.multilingual)
        parts.insert(2, Localization::text(u"только английский"));
    return parts.join(u" · "_s);
}

} // namespace

SpeechCatalogue::SpeechCatalogue(const Collaborators &collaborators, QObject *parent)
    : Catalogue(collaborators.models, collaborators.settings, collaborators.chooser, parent),
      m_settings(collaborators.settings),
      m_models(collaborators.models),
      m_engine(collaborators.engine)
{
    connect(&m_settings, &AppSettings::selectedModelIDChanged, this, &SpeechCatalogue::show);
    look();
}

QString SpeechCatalogue::recommendedId()
{
    return WhisperModel::recommendedID(Machine::physicalMemory(), QThread::idealThreadCount());
}

void SpeechCatalogue::use(const QString &id)
{
    m_settings.setSelectedModelID(id);
}

QList<Catalogue::Model> SpeechCatalogue::models() const
{
    const QString recommended = recommendedId();
    QList<Model> models;
    for (const WhisperModel &model : WhisperModel::catalog())
        models.append({.id = model.id,
                       .name = model.displayName,
                       .detail = detail(model),
                       .isRecommended = model.id == recommended});
    return models;
}

QString SpeechCatalogue::usedId() const
{
    const std::optional<WhisperModel> model = m_models.resolved(m_settings.selectedModelID());
    return model ? model->id : QString();
}

bool SpeechCatalogue::findEngine() const
{
    return !m_engine.findBinary().isEmpty();
}

QString SpeechCatalogue::textOfEngine(bool isFound) const
{
    return isFound ? Localization::text(u"Движок whisper.cpp найден. Модели хранятся на этом компьютере.")
                   : Localization::text(u"Движок whisper.cpp не установлен — модели не смогут запуститься. "
                                        u"Положите whisper-server в одну из папок, перечисленных в PATH.");
}

} // namespace orvane
