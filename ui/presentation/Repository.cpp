#include "ui/presentation/Repository.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "models/ModelManager.h"
#include "settings/AppSettings.h"

namespace orvane {

Repository::Repository(AppSettings &settings, const ModelManager &models, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_models(models)
{
    connect(&models, &ModelManager::repositoryChanged, this, &Repository::changed);
    connect(&settings, &AppSettings::modelRepositoryChanged, this, &Repository::changed);
    connect(&settings, &AppSettings::modelRepositoryChanged, this, &Repository::addressChanged);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, &Repository::changed);
}

Repository::~Repository()
{
    m_scope.end();
}

bool Repository::isAsked() const
{
    return m_models.repository() == m_settings.modelRepository();
}

QString Repository::address() const
{
    return m_settings.modelRepository();
}

QString Repository::text() const
{
    if (m_isChecking)
        return Localization::text(u"Проверяю…");
    if (!address().isEmpty())
        return Localization::text(u"Модели скачиваются отсюда.");
    return Localization::text(
        u"В этой сборке не указано, откуда скачивать модели. Укажите адрес или добавьте модель из файла.");
}

void Repository::check(const QString &typed)
{
    if (!m_isChecking)
        spawn(checkAndStore(ModelRepository::addressFrom(typed)));
}

QCoro::Task<> Repository::checkAndStore(QString address)
{
    m_isChecking = true;
    m_error.clear();
    Q_EMIT changed();
    try {
        if (!address.isEmpty())
            co_await m_scope(m_check.run(address));
        m_settings.setModelRepository(address);
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        m_error = descriptionOf(error);
    }
    m_isChecking = false;
    Q_EMIT changed();
}

} // namespace orvane
