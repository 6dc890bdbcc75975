#include "ui/MenuBarController.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "desktop/PasteAccess.h"
#include "desktop/ShortcutTexts.h"
#include "dictation/DictationController.h"
#include "dictation/DictationModeTexts.h"
#include "meeting/MeetingTranscriber.h"
#include "models/ModelManager.h"
#include "settings/AppSettings.h"
#include "settings/BuildInfo.h"
#include "settings/TriggerName.h"
#include "ui/MenuEntries.h"
#include "ui/TrayIcon.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QCursor>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace orvane {

using namespace MenuEntries;

namespace {

using State = DictationState;

/// A status line must not make the menu as wide as the screen.
constexpr qsizetype longestStatus = 80;

TrayIcon::Look lookOf(State state, const MeetingTranscriber &meeting)
{
    if (meeting.isRunning())
        return TrayIcon::Look::Recording;
    switch (state) {
    case State::Idle:
    case State::Starting:
        return meeting.isTranscribing() ? TrayIcon::Look::Busy : TrayIcon::Look::Ready;
    case State::Recording:
        return TrayIcon::Look::Recording;
    case State::Transcribing:
    case State::Correcting:
        return TrayIcon::Look::Busy;
    }
    Q_UNREACHABLE();
}

QIcon standardIcon(QStyle::StandardPixmap picture)
{
    return QApplication::style()->standardIcon(picture);
}

} // namespace

MenuBarController::MenuBarController(Services services, QObject *parent)
    : QObject(parent),
      m_services(services),
      m_meeting(services.meeting),
      m_meetingNotices(services.meeting)
{
    connect(&m_meeting, &MeetingMenu::refused, this, &MenuBarController::notify);
    connect(&m_meetingNotices, &MeetingNotices::notice, this, &MenuBarController::notify);
    connect(&m_menu, &QMenu::aboutToShow, this, &MenuBarController::rebuild);
    connect(&m_services.meeting, &MeetingTranscriber::outcomeChanged, this, [this] {
        m_meetingEndedLast = m_services.meeting.outcome() != MeetingTranscriber::Outcome::None;
    });
    connect(&m_services.dictation, &DictationController::lastErrorChanged, this,
            [this] { m_meetingEndedLast = false; });
    connect(&m_services.dictation, &DictationController::stateChanged, this, &MenuBarController::showState);
    connect(&m_services.dictation, &DictationController::lastErrorChanged, this,
            &MenuBarController::showState);
    connect(&m_services.meeting, &MeetingTranscriber::stateChanged, this, &MenuBarController::showState);
    connect(&m_services.meeting, &MeetingTranscriber::statusTextChanged, this, &MenuBarController::showState);
    connect(&m_services.meeting, &MeetingTranscriber::errorTextChanged, this, &MenuBarController::showState);
    connect(&m_services.meeting, &MeetingTranscriber::outcomeChanged, this, &MenuBarController::showState);
    connect(&m_services.settings, &AppSettings::storageErrorChanged, this, &MenuBarController::showState);
    connect(&m_services.settings, &AppSettings::interfaceLanguageChanged, this,
            &MenuBarController::showState);
    connect(&m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_menu.popup(QCursor::pos());
    });
    m_menu.setToolTipsVisible(true); // of the status line
    rebuild();
    showState();
    m_icon.setContextMenu(&m_menu);
    m_icon.show();
}

void MenuBarController::notify(const QString &text)
{
    m_icon.showMessage(BuildInfo::editionName, text, m_icon.icon());
}

void MenuBarController::showState()
{
    m_icon.setIcon(TrayIcon::icon(lookOf(m_services.dictation.state(), m_services.meeting)));
    m_icon.setToolTip(QString(BuildInfo::editionName) + u" — "_s + statusLine());
}

QString MenuBarController::statusLine() const
{
    const DictationController &dictation = m_services.dictation;
    switch (dictation.state()) {
    case State::Idle:
        return statusAtRest();
    case State::Starting:
        return Localization::text(u"Готов");
    case State::Recording:
        return Localization::text(u"Слушаю…");
    case State::Transcribing:
        return Localization::text(u"Распознаю…");
    case State::Correcting:
        return DictationModeTexts::processingStatus(
            dictation.processingMode().value_or(DictationMode::Correct));
    }
    Q_UNREACHABLE();
}

/// Of what no dictation hides: a meeting, or how the last thing ended.
QString MenuBarController::statusAtRest() const
{
    const MeetingTranscriber &meeting = m_services.meeting;
    const QStringList ofMeeting = {meeting.errorText(), meeting.statusText()};
    const QStringList problems = {m_services.dictation.lastError(), m_services.settings.storageError()};
    const bool meetingIsFirst = m_meetingEndedLast || meeting.isRunning() || meeting.isTranscribing();
    QStringList parts = meetingIsFirst ? ofMeeting + problems : problems + ofMeeting;
    parts.removeAll(QString());
    return parts.isEmpty() ? Localization::text(u"Готов") : parts.join(u" · "_s);
}

void MenuBarController::rebuild()
{
    m_menu.clear(); // of entries only: the submenus stay its children
    for (QMenu *submenu : m_menu.findChildren<QMenu *>(Qt::FindDirectChildrenOnly))
        submenu->deleteLater();
    QString status = statusLine();
    if (status.size() > longestStatus)
        status = status.left(longestStatus - 1) + u'…';
    addLine(m_menu, status)->setToolTip(statusLine());
    addWindows();
    m_menu.addSeparator();
    addDictation();
    m_meeting.addTo(m_menu);
    m_menu.addSeparator();
    addModels();
    addTriggers();
    addLanguages();
    addModes();
    addKeyCapture();
    if (PasteAccess::state() == PasteAccess::State::ToBeAsked)
        m_menu.addAction(Localization::text(u"Разрешить вставку текста…"), this,
                         &MenuBarController::pasteConsentRequested);
    m_menu.addSeparator();
    addUpdates();
    QAction *quit =
        m_menu.addAction(Localization::text(u"Завершить Orvane"), this, &MenuBarController::quitRequested);
    quit->setShortcut(QKeySequence(u"Ctrl+Q"_s));
}

void MenuBarController::addWindows()
{
    m_menu.addAction(Localization::text(u"Открыть Orvane"), this, &MenuBarController::mainWindowRequested);
    m_menu.addAction(Localization::text(u"Настройки моделей…"), this,
                     &MenuBarController::modelSettingsRequested);
    m_menu.addAction(Localization::text(u"Настройки…"), this, &MenuBarController::settingsRequested)
        ->setShortcut(QKeySequence(u"Ctrl+,"_s));
}

void MenuBarController::addDictation()
{
    DictationController &dictation = m_services.dictation;
    switch (dictation.state()) {
    case State::Idle:
        m_menu.addAction(Localization::text(u"Начать диктовку"), &dictation, &DictationController::start);
        break;
    case State::Starting:
        addLine(m_menu, Localization::text(u"Начать диктовку"));
        break;
    case State::Recording:
        m_menu.addAction(Localization::text(u"Завершить диктовку"), &dictation, &DictationController::stop);
        [[fallthrough]];
    case State::Transcribing:
    case State::Correcting:
        m_menu.addAction(Localization::text(u"Отменить диктовку"), &dictation, &DictationController::cancel);
        break;
    }
}

void MenuBarController::addKeyCapture()
{
    const auto add = [this](QStyle::StandardPixmap picture, const QString &text) {
        addLine(m_menu, text)->setIcon(standardIcon(picture));
    };
    const TriggerKey trigger = m_services.settings.dictationTrigger();
    const std::optional<Shortcuts> shortcuts = m_services.keys.shortcuts();
    if (!m_services.dictation.hotkeyActive()) {
        add(QStyle::SP_MessageBoxWarning, Localization::text(u"Перехват клавиш: нет доступа"));
        if (m_services.keys.canBeSetUp())
            m_menu.addAction(Localization::text(u"Назначить клавиши диктовки…"), this,
                             &MenuBarController::keySetUpRequested);
        else
            m_menu.addAction(Localization::text(u"Выдать «Универсальный доступ»…"), this,
                             &MenuBarController::keyCaptureHelpRequested);
    } else if (shortcuts) {
        if (!ShortcutTexts::keys(*shortcuts).isEmpty())
            add(QStyle::SP_DialogApplyButton,
                Localization::text(u"Перехват клавиш: %1").arg(ShortcutTexts::keysAndGiver(*shortcuts)));
        if (!shortcuts->taken.isEmpty())
            add(QStyle::SP_MessageBoxWarning,
                Localization::text(u"Перехват клавиш: уже занято %1").arg(shortcuts->taken.join(u", "_s)));
    } else if (!m_services.keys.has(trigger)) {
        add(QStyle::SP_MessageBoxWarning,
            Localization::text(u"Перехват клавиш: в раскладке нет клавиши «%1» — выберите другую")
                .arg(triggerName(trigger).toString()));
    } else if (m_services.keys.grabIsMissing()) {
        add(QStyle::SP_MessageBoxWarning,
            Localization::text(u"Перехват клавиш: F5 или Esc заняты другой программой"));
    } else {
        add(QStyle::SP_DialogApplyButton, Localization::text(u"Перехват клавиш: активен"));
    }
}

void MenuBarController::addModels()
{
    ChoiceMenu choice(m_menu, Localization::text(u"Модель распознавания"));
    AppSettings &settings = m_services.settings;
    const auto resolved = m_services.models.resolved(settings.selectedModelID());
    if (!resolved) {
        addLine(choice.menu(), Localization::text(u"Нет скачанных моделей"));
        return;
    }
    for (const WhisperModel &model : m_services.models.downloadedModels()) {
        choice.add(model.displayName, model.id == resolved->id,
                   [&settings, id = model.id] { settings.setSelectedModelID(id); });
    }
}

void MenuBarController::addTriggers()
{
    ChoiceMenu choice(m_menu, Localization::text(u"Клавиша диктовки"));
    AppSettings &settings = m_services.settings;
    for (const TriggerKey key : triggerKeys) {
        choice.add(triggerName(key).toString(), key == settings.dictationTrigger(),
                   [&settings, key] { settings.setDictationTrigger(key); });
    }
}

void MenuBarController::addLanguages()
{
    ChoiceMenu choice(m_menu, Localization::text(u"Язык распознавания"));
    AppSettings &settings = m_services.settings;
    const QString chosen = settings.language().code;
    for (const TranscriptionLanguage &language : TranscriptionLanguage::all()) {
        choice.add(language.displayName(), language.code == chosen,
                   [&settings, code = language.code] { settings.setLanguageCode(code); });
    }
}

void MenuBarController::addModes()
{
    ChoiceMenu choice(m_menu, Localization::text(u"Режим диктовки"));
    AppSettings &settings = m_services.settings;
    for (const DictationMode mode : dictationModes) {
        choice.add(DictationModeTexts::title(mode), mode == settings.dictationMode(),
                   [&settings, mode] { settings.setDictationMode(mode); });
    }
}

void MenuBarController::addUpdates()
{
    UpdateChecker &updates = m_services.updates;
    if (const auto release = updates.available()) {
        m_menu.addAction(Localization::text(u"Доступна версия ") + asShown(release->version) + u"…"_s, this,
                         [&updates, release = *release] { spawn(updates.offerDownload(release)); });
        return;
    }
    QAction *check = m_menu.addAction(Localization::text(u"Проверить обновления…"), this,
                                      [&updates] { spawn(updates.check(UpdateChecker::Mode::Interactive)); });
    check->setEnabled(!updates.checking() && !updates.downloading());
}

} // namespace orvane
