#include "ui/presentation/Catalogue.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "models/ModelCatalogManager.h"
#include "settings/AppSettings.h"
#include "ui/presentation/Spans.h"

using namespace Qt::StringLiterals;

namespace orvane {

Catalogue::Catalogue(ModelCatalogManager &manager, const AppSettings &settings, FileChooser &chooser,
                     QObject *parent)
    : RowModel({"modelId", "name", "detail", "badge", "state", "progress", "progressText"}, parent),
      m_manager(manager),
      m_chooser(chooser)
{
    connect(&manager, &ModelCatalogManager::downloadedChanged, this, &Catalogue::show);
    connect(&manager, &ModelCatalogManager::partlyDownloadedChanged, this, &Catalogue::show);
    connect(&manager, &ModelCatalogManager::progressChanged, this, &Catalogue::show);
    connect(&manager, &ModelCatalogManager::repositoryChanged, this, &Catalogue::canDownloadChanged);
    connect(&manager, &ModelCatalogManager::lastErrorChanged, this, &Catalogue::errorChanged);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, &Catalogue::show);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, &Catalogue::engineChanged);
}

Catalogue::~Catalogue()
{
    m_scope.end();
}

QString Catalogue::engineText() const
{
    return textOfEngine(m_hasEngine);
}

bool Catalogue::canDownload() const
{
    return !m_manager.repository().isEmpty();
}

QString Catalogue::error() const
{
    return m_manager.lastError();
}

void Catalogue::look()
{
    m_manager.refresh();
    m_hasEngine = findEngine();
    Q_EMIT engineChanged();
    show();
}

void Catalogue::download(const QString &id)
{
    m_manager.download(id);
}

void Catalogue::cancel(const QString &id)
{
    m_manager.cancelDownload(id);
}

void Catalogue::remove(const QString &id)
{
    m_manager.remove(id);
}

void Catalogue::importFile()
{
    spawn(chooseAndImport());
}

QCoro::Task<> Catalogue::chooseAndImport()
{
    const QString file = co_await m_scope(m_chooser.model());
    if (!file.isEmpty())
        m_manager.importFile(file);
}

void Catalogue::importFiles(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            m_manager.importFile(url.toLocalFile());
    }
}

void Catalogue::show()
{
    QList<QVariantMap> rows;
    const QString used = usedId();
    for (const Model &model : models())
        rows.append(row(model, used));
    setRows(rows);
}

QVariantMap Catalogue::row(const Model &model, const QString &used) const
{
    const bool isLoading = m_manager.progress().contains(model.id);
    const bool isHere = m_manager.downloaded().contains(model.id);
    const bool isPartial = m_manager.partlyDownloaded().contains(model.id);
    const QString state = isLoading          ? u"loading"_s
                          : model.id == used ? u"used"_s
                          : isHere           ? u"here"_s
                          : isPartial        ? u"partial"_s
                                             : u"absent"_s;
    const QString badge = state == u"used"      ? Localization::text(u"Используется")
                          : model.isRecommended ? Localization::text(u"Рекомендуем")
                                                : QString();
    return {{u"modelId"_s, model.id},
            {u"name"_s, model.name},
            {u"detail"_s, model.detail},
            {u"badge"_s, badge},
            {u"state"_s, state},
            {u"progress"_s, m_manager.downloadProgress(model.id).fraction()},
            {u"progressText"_s, progressText(model.id, state)}};
}

QString Catalogue::progressText(const QString &id, const QString &state) const
{
    if (state == u"partial")
        return Localization::text(u"Скачана не полностью: загрузку можно продолжить.");
    if (state != u"loading")
        return {};
    return Spans::download(m_manager.downloadProgress(id));
}

} // namespace orvane
