#include "app/commandline/ModelsCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "app/commandline/ProgressLine.h"
#include "base/localization/Localization.h"
#include "base/system/Machine.h"
#include "models/CorrectionModelManager.h"
#include "models/ModelManager.h"

#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

namespace {

constexpr int idColumn = 16;
constexpr int nameColumn = 24;
constexpr int sizeColumn = 11;
constexpr double bytesPerGigabyte = 1 << 30;

QString row(bool isThere, const QString &id, const QString &name, const QString &size, const QString &memory,
            const QStringList &notes = {})
{
    QString line = u"%1 %2 %3 %4 %5 %6"_s.arg(isThere ? u"✓"_s : u" "_s, id.leftJustified(idColumn),
                                              name.leftJustified(nameColumn), size.leftJustified(sizeColumn),
                                              memory.leftJustified(sizeColumn), notes.join(u" · "_s));
    while (line.endsWith(u' '))
        line.chop(1);
    return line + u'\n';
}

QString shownGigabytes(double gigabytes)
{
    return u"≈ %1 "_s.arg(gigabytes, 0, 'f', 1) + text(u"ГБ");
}

ProgressLine::State shownProgress(const DownloadProgress &reached)
{
    if (reached.isWaitingForNetwork)
        return {.stage = text(u"жду подключения к сети")};
    const double megabytes = reached.bytesPerSecond / 1e6;
    return {.stage = u"%1 % · %2 "_s.arg(100 * reached.fraction(), 0, 'f', 1).arg(megabytes, 0, 'f', 1) +
                     text(u"МБ/с"),
            .remainingMs = reached.remainingMs};
}

/// Once, as nothing else would say why nothing happens.
void sayThatItWaits(const ModelCatalogManager &manager, const QString &id, const QObject *context)
{
    const auto say = [&manager, id, said = false]() mutable {
        const DownloadProgress reached = manager.downloadProgress(id);
        if (reached.isWaitingForNetwork && !std::exchange(said, true))
            Output::complain(id + u": "_s + shownProgress(reached).stage);
    };
    QObject::connect(&manager, &ModelCatalogManager::progressChanged, context, say);
}

} // namespace

ModelsCommand::ModelsCommand(ModelManager &recognition, CorrectionModelManager &correction, Options options)
    : m_recognition(recognition),
      m_correction(correction),
      m_options(std::move(options))
{
    m_recognition.refresh();
    m_correction.refresh();
}

QCoro::Task<int> ModelsCommand::run()
{
    for (const QString &id : m_options.ids)
        (void)managerOf(id); // nothing is begun when one of them is unknown
    switch (m_options.action) {
    case Action::List:
        list();
        break;
    case Action::Path:
        showPaths();
        break;
    case Action::Download:
        co_return co_await download();
    case Action::Delete:
        co_return co_await remove();
    }
    co_return ExitStatus::success;
}

void ModelsCommand::list() const
{
    QString lines = text(u"Распознавание речи") + u'\n';
    for (const WhisperModel &model : WhisperModel::catalog()) {
        QStringList notes;
        if (!model.multilingual)
            notes.append(text(u"только английский"));
        lines += row(m_recognition.downloaded().contains(model.id), model.id, model.displayName,
                     text(model.approxSize), text(model.approxRAM), notes);
    }

    const double memoryGB = double(Machine::physicalMemory()) / bytesPerGigabyte;
    const QString recommended = CorrectionModel::recommendedID(memoryGB, CorrectionModel::Processor::Other);
    lines += u'\n' + text(u"Обработка текста") + u'\n';
    for (const CorrectionModel &model : CorrectionModel::catalog()) {
        QStringList notes = {text(model.strength), text(model.languages)};
        if (model.id == recommended)
            notes.prepend(text(u"Рекомендуем"));
        lines += row(m_correction.downloaded().contains(model.id), model.id, model.displayName,
                     shownGigabytes(model.sizeGB), shownGigabytes(model.ramGB), notes);
    }
    Output::write(lines.toUtf8());
}

void ModelsCommand::showPaths() const
{
    QStringList paths;
    for (const QString &id : m_options.ids)
        paths.append(managerOf(id).localPath(id));
    if (paths.isEmpty())
        paths = {m_recognition.directory(), m_correction.directory()};
    Output::write((paths.join(u'\n') + u'\n').toUtf8());
}

QCoro::Task<int> ModelsCommand::download()
{
    bool everyModelDone = true;
    for (const QString &id : m_options.ids) {
        const bool done = co_await download(id);
        everyModelDone = everyModelDone && done;
        if (m_stop.stop_requested())
            break;
    }
    co_return everyModelDone ? ExitStatus::success : ExitStatus::failure;
}

QCoro::Task<bool> ModelsCommand::download(QString id)
{
    ModelCatalogManager &manager = managerOf(id);
    if (manager.downloaded().contains(id)) {
        Output::complain(id + u": "_s + text(u"уже скачана"));
        co_return true;
    }
    const auto state = [id, &manager] { return shownProgress(manager.downloadProgress(id)); };
    try {
        const ProgressLine progress(id, state);
        if (!progress.isShown())
            sayThatItWaits(manager, id, &progress);
        co_await manager.fetch(id, m_stop.get_token());
    } catch (const Cancelled &) {
        co_return false;
    } catch (const Error &error) {
        Output::complain(text(u"Не удалось скачать ") + id + u": "_s + error.description());
        co_return false;
    }
    Output::write((manager.localPath(id) + u'\n').toUtf8());
    co_return true;
}

QCoro::Task<int> ModelsCommand::remove()
{
    for (const QString &id : m_options.ids) {
        const ModelCatalogManager &manager = managerOf(id);
        if (!manager.downloaded().contains(id) && !manager.partlyDownloaded().contains(id))
            throw Error(text(u"Эта модель не скачана: ") + id);
    }
    for (const QString &id : m_options.ids) {
        ModelCatalogManager &manager = managerOf(id);
        co_await manager.deleteFile(id);
        if (QFileInfo::exists(manager.localPath(id)) || manager.partlyDownloaded().contains(id))
            throw Error(text(u"Не удалось удалить модель: ") + id);
    }
    co_return ExitStatus::success;
}

ModelCatalogManager &ModelsCommand::managerOf(const QString &id) const
{
    if (!m_recognition.localPath(id).isEmpty())
        return m_recognition;
    if (!m_correction.localPath(id).isEmpty())
        return m_correction;
    throw Error(text(u"Нет такой модели: ") + id);
}

} // namespace orvane
