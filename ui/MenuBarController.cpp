#include "ui/MenuBarController.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "dictation/DictationController.h"
#include "dictation/DictationModeTexts.h"
#include "meeting/MeetingTranscriber.h"
#include "models/ModelManager.h"
#include "settings/AppSettings.h"
#include "settings/BuildInfo.h"
#include "settings/TriggerName.h"
#include "ui/TrayIcon.h"
#include "update/UpdateChecker.h"

#include <QActionGroup>
#include <QCursor>

using namespace Qt::StringLiterals;

namespace orvane {

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

/// A text of the user's or a library's, where "&" would underline the next letter.
QString asShown(QString text)
{
    return text.replace(u'&', u"&&"_s);
}

QAction *addLine(QMenu &menu, const QString &text)
{
    QAction *line = menu.addAction(asShown(text));
    line->setEnabled(false);
    return line;
}

/// A submenu of which one entry is chosen.
class ChoiceMenu
{
public:
    ChoiceMenu(QMenu &menu, const QString &title)
        : m_menu(menu.addMenu(title)),
          m_group(new QActionGroup(m_menu))
    {}

    template <typename Choose>
    void add(const QString &text, bool isChosen, Choose choose)
    {
        QAction *entry = m_menu->addAction(asShown(text));
        entry->setCheckable(true);
        entry->setChecked(isChosen);
        m_group->addAction(entry);
        QObject::connect(entry, &QAction::triggered, entry, choose);
    }

    [[nodiscard]] QMenu &menu() { return *m_menu; }

private:
    QMenu *m_menu;
    QActionGroup *m_group;
};

} // namespace

MenuBarController::MenuBarController(Services services, QObject *parent)
    : QObject(parent),
      m_services(services)
{
    connect(&m_menu, &QMenu::aboutToShow, this, &MenuBarController::rebuild);
    connect(&m_services.dictation, &DictationController::stateChanged, this, &MenuBarController::showState);
    connect(&m_services.dictation, &DictationController::lastErrorChanged, this,
            &MenuBarController::showState);
    connect(&m_services.meeting, &MeetingTranscriber::stateChanged, this, &MenuBarController::showState);
    connect(&m_services.meeting, &MeetingTranscriber::statusTextChanged, this, &MenuBarController::showState);
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

void MenuBarController::setKeyIsTaken(bool taken)
{
    m_keyIsTaken = taken;
}

void MenuBarController::announce()
{
    m_icon.showMessage(BuildInfo::editionName,
                       Localization::text(u"Orvane уже работает: его значок — в области уведомлений."),
                       m_icon.icon());
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
        if (m_services.meeting.isRunning() || m_services.meeting.isTranscribing())
            return m_services.meeting.statusText();
        if (!dictation.lastError().isEmpty())
            return dictation.lastError();
        [[fallthrough]];
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

void MenuBarController::rebuild()
{
    m_menu.clear(); // of entries only: the submenus stay its children
    for (QMenu *submenu : m_menu.findChildren<QMenu *>(Qt::FindDirectChildrenOnly))
        submenu->deleteLater();
    QString status = statusLine();
    if (status.size() > longestStatus)
        status = status.left(longestStatus - 1) + u'…';
    addLine(m_menu, status)->setToolTip(statusLine());
    addDictation();
    addMeeting();
    m_menu.addSeparator();
    addModels();
    addTriggers();
    addLanguages();
    addModes();
    addKeyCapture();
    m_menu.addSeparator();
    addUpdates();
    QAction *quit =
        m_menu.addAction(Localization::text(u"Завершить Orvane"), this, &MenuBarController::quitRequested);
    quit->setShortcut(QKeySequence(u"Ctrl+Q"_s));
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

void MenuBarController::addMeeting()
{
    MeetingTranscriber &meeting = m_services.meeting;
    if (meeting.isRunning()) {
        m_menu.addAction(Localization::text(u"Завершить запись совещания"), &meeting,
                         &MeetingTranscriber::stop);
    } else if (meeting.isTranscribing()) {
        m_menu.addAction(
            Localization::text(u"Прервать расшифровку — аудиозапись совещания останется на диске"), &meeting,
            &MeetingTranscriber::cancelTranscription);
    } else {
        QAction *start = m_menu.addAction(Localization::text(u"Начать запись совещания"), &meeting,
                                          [&meeting] { spawn(meeting.start()); });
        start->setEnabled(meeting.canStart());
    }
}

void MenuBarController::addKeyCapture()
{
    if (!m_services.dictation.hotkeyActive()) {
        addLine(m_menu, Localization::text(u"Перехват клавиш: ⚠️ нет доступа"));
        m_menu.addAction(Localization::text(u"Выдать «Универсальный доступ»…"), this,
                         &MenuBarController::keyCaptureHelpRequested);
    } else if (m_keyIsTaken) {
        addLine(m_menu, Localization::text(u"Перехват клавиш: ⚠️ F5 или Esc заняты другой программой"));
    } else {
        addLine(m_menu, Localization::text(u"Перехват клавиш: ✅ активен"));
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
