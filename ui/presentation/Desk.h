#pragma once

#include "diagnostics/SystemCheck.h"
#include "ui/presentation/Activity.h"
#include "ui/presentation/Check.h"
#include "ui/presentation/FileQueue.h"
#include "ui/presentation/FirstStart.h"
#include "ui/presentation/General.h"
#include "ui/presentation/HistoryList.h"
#include "ui/presentation/LanguageCatalogue.h"
#include "ui/presentation/MeetingDesk.h"
#include "ui/presentation/Notices.h"
#include "ui/presentation/OpenRecord.h"
#include "ui/presentation/Prompt.h"
#include "ui/presentation/Recognition.h"
#include "ui/presentation/RecordSaver.h"
#include "ui/presentation/Repository.h"
#include "ui/presentation/SpeechCatalogue.h"

namespace orvane {

class AppServices;

/// All that the windows show and do: made with the first window and kept, so that what a closed window had
/// begun goes on. Main thread.
class Desk : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString page READ page WRITE setPage NOTIFY pageChanged)
    Q_PROPERTY(QString settingsPage READ settingsPage WRITE setSettingsPage NOTIFY settingsPageChanged)
    Q_PROPERTY(QObject *settings READ settings CONSTANT)
    Q_PROPERTY(QObject *notices READ notices CONSTANT)
    Q_PROPERTY(QObject *recognition READ recognition CONSTANT)
    Q_PROPERTY(QObject *history READ history CONSTANT)
    Q_PROPERTY(QObject *record READ record CONSTANT)
    Q_PROPERTY(QObject *queue READ queue CONSTANT)
    Q_PROPERTY(QObject *meeting READ meeting CONSTANT)
    Q_PROPERTY(QObject *activity READ activity CONSTANT)
    Q_PROPERTY(QObject *general READ general CONSTANT)
    Q_PROPERTY(QObject *repository READ repository CONSTANT)
    Q_PROPERTY(QObject *speechModels READ speechModels CONSTANT)
    Q_PROPERTY(QObject *languageModels READ languageModels CONSTANT)
    Q_PROPERTY(QObject *prompt READ prompt CONSTANT)
    Q_PROPERTY(QObject *check READ check CONSTANT)
    Q_PROPERTY(QObject *firstStart READ firstStart CONSTANT)

public:
    /// They outlive this; the services have a desktop.
    Desk(AppServices &services, const KeyTap &keys, FileChooser &files, QObject *parent = nullptr);

    /// "file", "meeting", "record" or "first".
    [[nodiscard]] QString page() const { return m_page; }
    void setPage(const QString &page);
    /// "general", "models", "correction", "prompt" or "check".
    [[nodiscard]] QString settingsPage() const { return m_settingsPage; }
    void setSettingsPage(const QString &page);

    [[nodiscard]] QObject *settings() const;
    [[nodiscard]] Notices *notices() { return &m_notices; }
    [[nodiscard]] Recognition *recognition() { return &m_recognition; }
    [[nodiscard]] HistoryList *history() { return &m_history; }
    [[nodiscard]] OpenRecord *record() { return &m_record; }
    [[nodiscard]] FileQueue *queue() { return &m_queue; }
    [[nodiscard]] MeetingDesk *meeting() { return &m_meeting; }
    [[nodiscard]] Activity *activity() { return &m_activity; }
    [[nodiscard]] General *general() { return &m_general; }
    [[nodiscard]] Repository *repository() { return &m_repository; }
    [[nodiscard]] SpeechCatalogue *speechModels() { return &m_speechModels; }
    [[nodiscard]] LanguageCatalogue *languageModels() { return &m_languageModels; }
    [[nodiscard]] Prompt *prompt() { return &m_prompt; }
    [[nodiscard]] Check *check() { return &m_check; }
    [[nodiscard]] FirstStart *firstStart() { return &m_firstStart; }

    Q_INVOKABLE void openRecord(const QString &id);
    /// The page that was open last without a name.
    Q_INVOKABLE void showSettings(const QString &page = {});
    Q_INVOKABLE void quit() { Q_EMIT quitRequested(); }
    /// Files to transcribe, from another program.
    void open(const QList<QUrl> &files);

Q_SIGNALS:
    void pageChanged();
    void settingsPageChanged();
    void settingsRequested();
    void quitRequested();

private:
    void followRecord();
    void followQueue(TranscriptionService &transcriber);
    [[nodiscard]] FileQueue::Transcriber transcriberOf(TranscriptionService &transcriber,
                                                       const EngineTurns &turns, FileChooser &files) const;
    void closeRecord();

    AppSettings &m_settings;
    QString m_page;
    QString m_settingsPage;
    Notices m_notices;
    RecordSaver m_saver;
    Recognition m_recognition;
    HistoryList m_history;
    OpenRecord m_record;
    FileQueue m_queue;
    MeetingDesk m_meeting;
    Activity m_activity;
    General m_general;
    Repository m_repository;
    SpeechCatalogue m_speechModels;
    LanguageCatalogue m_languageModels;
    Prompt m_prompt;
    SystemCheck m_systemCheck;
    Check m_check;
    FirstStart m_firstStart;
};

} // namespace orvane
