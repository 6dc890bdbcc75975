#include "ui/presentation/LanguageCatalogue.h"

#include "base/localization/Localization.h"
#include "base/system/Machine.h"
#include "correction/TextCorrectionService.h"
#include "models/CorrectionModelManager.h"
#include "settings/AppSettings.h"
#include "ui/presentation/Spans.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr std::array engineChoices = {CorrectionEngine::BuiltIn, CorrectionEngine::Local};
constexpr double bytesPerGigabyte = 1 << 30;

QString recommendedHere()
{
    return CorrectionModel::recommendedID(double(Machine::physicalMemory()) / bytesPerGigabyte,
                                          CorrectionModel::Processor::Other);
}

bool hasIntelProcessor()
{
    return Machine::processorName().contains(u"Intel"_s);
}

QString detail(const CorrectionModel &model)
{
    return QStringList{u"≈ %1 "_s.arg(Spans::decimal(model.sizeGB, 1)) + Localization::text(u"ГБ"),
                       u"≈ %1 "_s.arg(Spans::decimal(model.ramGB, 0)) + Localization::text(u"ГБ ОЗУ"),
                       model.strength.toString()}
               .join(u" · "_s) +
           u'\n' + model.languages.toString();
}

} // namespace

LanguageCatalogue::LanguageCatalogue(const Collaborators &collaborators, QObject *parent)
    : Catalogue(collaborators.models, collaborators.settings, collaborators.chooser, parent),
      m_settings(collaborators.settings),
      m_corrector(collaborators.corrector),
      m_recommended(recommendedHere())
{
    connect(&m_settings, &AppSettings::correctionModelIDChanged, this, &LanguageCatalogue::show);
    connect(&m_settings, &AppSettings::correctionEngineChanged, this, &LanguageCatalogue::engineChanged);
    connect(&collaborators.models, &CorrectionModelManager::downloadedChanged, this,
            &LanguageCatalogue::engineChanged);
    look();
}

QStringList LanguageCatalogue::engines() const
{
    QStringList titles;
    for (const CorrectionEngine engine : engineChoices)
        titles.append(title(engine));
    return titles;
}

int LanguageCatalogue::engineIndex() const
{
    return int(std::ranges::find(engineChoices, m_settings.correctionEngine()) - engineChoices.begin());
}

void LanguageCatalogue::setEngineIndex(int index)
{
    if (index >= 0 && index < std::ssize(engineChoices))
        m_settings.setCorrectionEngine(engineChoices[size_t(index)]);
}

QString LanguageCatalogue::engineNote() const
{
    if (m_settings.correctionEngine() == CorrectionEngine::Local) {
        const QString note = Localization::text(u"Модель из списка ниже работает на этом компьютере.");
        static const bool isIntel = hasIntelProcessor();
        return !isIntel
                   ? note
                   : note + u' ' +
                         Localization::text(u"На Intel крупные модели работают медленно — берите лёгкие.");
    }
    const ModelAvailability builtIn = m_corrector.builtInAvailability();
    QStringList sentences = {
        Localization::text(u"Полностью локально и приватно, без скачивания моделей. Требуется Mac с Apple "
                           u"Silicon и включённым Apple Intelligence."),
        builtIn.isReady ? Localization::text(u"Встроенная модель Apple готова к работе.") : builtIn.message};
    if (m_corrector.effectiveEngine() == CorrectionEngine::Local)
        sentences.append(Localization::text(u"Пока работает модель из списка ниже."));
    sentences.removeAll(QString());
    return sentences.join(u' ');
}

void LanguageCatalogue::use(const QString &id)
{
    m_settings.setCorrectionModelID(id);
}

QList<Catalogue::Model> LanguageCatalogue::models() const
{
    QList<Model> models;
    for (const CorrectionModel &model : CorrectionModel::catalog())
        models.append({.id = model.id,
                       .name = model.displayName,
                       .detail = detail(model),
                       .isRecommended = model.id == m_recommended});
    return models;
}

QString LanguageCatalogue::usedId() const
{
    const std::optional<CorrectionModel> model = m_corrector.resolvedLocalModel();
    return model ? model->id : QString();
}

bool LanguageCatalogue::findEngine() const
{
    return !m_corrector.local().findBinary().isEmpty();
}

QString LanguageCatalogue::textOfEngine(bool isFound) const
{
    return isFound ? Localization::text(u"Движок llama.cpp найден")
                   : Localization::text(u"Движок llama.cpp не установлен — модели не смогут запуститься.") +
                         u' ' +
                         Localization::text(u"Положите llama-server в одну из папок, перечисленных в PATH.");
}

} // namespace orvane
