#pragma once

#include "ui/presentation/RowModel.h"

#include <QTimer>

#include <functional>

namespace orvane {

class AppSettings;
class CorrectionModelManager;
class MeetingTranscriber;
class ModelCatalogManager;
class ModelManager;
class RecordProcessor;
class TranscriptionService;

/// What the program is doing now, whoever began it, and recordings that wait to be transcribed. Main thread.
class Activity : public RowModel
{
    Q_OBJECT

public:
    /// They outlive this.
    struct Collaborators
    {
        const AppSettings &settings;
        ModelManager &models;
        CorrectionModelManager &correctionModels;
        TranscriptionService &transcriber;
        MeetingTranscriber &meeting;
        RecordProcessor &processor;
    };

    /// Rows have a title, a detail, a progress (0…1, negative while unknown), canCancel, cancelText, which
    /// says what cancelling does, and canTranscribe.
    explicit Activity(const Collaborators &services, QObject *parent = nullptr);

    Q_INVOKABLE void cancel(int index);
    Q_INVOKABLE void transcribe(int index);

Q_SIGNALS:
    /// What was asked for cannot be done now, one sentence.
    void refused(const QString &reason);

private:
    struct Entry
    {
        QString key;
        QString title;
        QString detail;
        double progress = -1;
        QString cancelText = {};
        std::function<void()> cancel = nullptr;
        std::function<void()> transcribe = nullptr;
    };

    void show();
    void addDownloads(ModelCatalogManager &models);
    void addTranscription();
    void addMeeting();
    void addProcessing();
    void addLeftovers();
    void transcribeLeftover(const QString &name);

    const Collaborators m_services;
    QList<Entry> m_entries;
    QTimer m_soon; // what changes together is shown once
};

} // namespace orvane
