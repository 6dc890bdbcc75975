#include "ui/presentation/FirstStart.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "desktop/PasteAccess.h"
#include "models/ModelManager.h"
#include "settings/AppSettings.h"
#include "ui/presentation/KeyText.h"
#include "ui/presentation/SpeechCatalogue.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// The one that suits this machine, the next quicker and the next better one.
QStringList suggestedIds()
{
    const QStringList ladder = {u"tiny"_s, u"base"_s, u"small"_s, u"large-v3-turbo"_s};
    const qsizetype recommended = ladder.indexOf(SpeechCatalogue::recommendedId());
    const qsizetype first = std::max<qsizetype>(0, recommended - 1);
    return ladder.sliced(first, std::min(ladder.size(), recommended + 2) - first);
}

QRegularExpression anyOf(QStringList ids)
{
    for (QString &id : ids)
        id = QRegularExpression::escape(id);
    return QRegularExpression(u"^(%1)$"_s.arg(ids.join(u'|')));
}

} // namespace

FirstStart::FirstStart(const Collaborators &collaborators, QObject *parent)
    : QObject(parent),
      m_settings(collaborators.settings),
      m_keys(collaborators.keys),
      m_isDue(!collaborators.settings.firstStartDone() && collaborators.models.downloaded().isEmpty()),
      m_microphone(collaborators.moduleFolder)
{
    m_suggestedModels.setSourceModel(&collaborators.catalogue);
    m_suggestedModels.setFilterRole(collaborators.catalogue.roleNames().key("modelId"));
    m_suggestedModels.setFilterRegularExpression(anyOf(suggestedIds()));
    connect(&m_keys, &KeyTap::activeChanged, this, &FirstStart::textsChanged);
    connect(&m_keys, &KeyTap::keysChanged, this, &FirstStart::textsChanged);
    connect(&m_keys, &KeyTap::grabIsMissingChanged, this, &FirstStart::textsChanged);
    connect(&m_settings, &AppSettings::dictationTriggerNameChanged, this, &FirstStart::textsChanged);
    connect(&m_settings, &AppSettings::interfaceLanguageChanged, &m_microphone,
            &ListeningMicrophone::changed);
}

QString FirstStart::modelText() const
{
    const auto &models = WhisperModel::catalog();
    const auto model = std::ranges::find(models, SpeechCatalogue::recommendedId(), &WhisperModel::id);
    return Localization::text(u"Этому компьютеру подойдёт %1. Модель можно сменить в любой момент.")
        .arg(model->displayName);
}

QString FirstStart::keyText() const
{
    return orvane::keyText(m_settings, m_keys);
}

QString FirstStart::pasteText() const
{
    if (PasteAccess::state() != PasteAccess::State::ToBeAsked)
        return {};
    if (!m_pasteProblem.isEmpty())
        return m_pasteProblem;
    return Localization::text(
        u"Рабочий стол спросит об удалённом управлении: разрешите его и оставьте «Запомнить». Orvane только "
        u"нажимает вставку.");
}

void FirstStart::askForPaste()
{
    spawn(ask());
}

QCoro::Task<> FirstStart::ask()
{
    try {
        co_await m_scope(PasteAccess::ask());
        m_pasteProblem.clear();
    } catch (const Gone &) {
        throw;
    } catch (const Error &error) {
        m_pasteProblem = error.description();
    }
    Q_EMIT textsChanged();
}

void FirstStart::begin()
{
    if (!m_settings.storedLanguageCode())
        m_settings.setLanguageCode(u"auto"_s);
    m_microphone.listen();
}

void FirstStart::end()
{
    m_microphone.end();
}

void FirstStart::finish()
{
    m_settings.setFirstStartDone();
    m_isDue = false;
    Q_EMIT finished();
}

} // namespace orvane
