#pragma once

#include "base/Scope.h"

#include <QHash>
#include <QObject>
#include <QUuid>

#include <QCoroTask>

#include <functional>

namespace orvane {

class Recognition;
class RecordProcessor;
class TextCorrectionService;

/// What a language model, or another recognition, makes of one record: whether it can, how far it is, why it
/// failed. Main thread.
class RecordWork : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool canProcess READ canProcess NOTIFY processingChanged)
    Q_PROPERTY(QString processingRefusal READ processingRefusal NOTIFY processingChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY busyChanged)
    Q_PROPERTY(QString busyText READ busyText NOTIFY progressChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY busyChanged)

public:
    /// They outlive this.
    struct Collaborators
    {
        RecordProcessor &processor;
        TextCorrectionService &corrector;
        const Recognition &recognition;
    };

    RecordWork(Collaborators collaborators, QObject *parent);
    ~RecordWork() override;

    [[nodiscard]] bool canProcess() const { return processingRefusal().isEmpty(); }
    /// Why a language model cannot be used now; empty when it can.
    [[nodiscard]] QString processingRefusal() const;
    [[nodiscard]] bool isBusy() const;
    /// What is being made and the time left.
    [[nodiscard]] QString busyText() const;
    [[nodiscard]] double progress() const;
    /// Why the last attempt failed, one sentence.
    [[nodiscard]] QString error() const { return m_errors.value(m_record); }

    Q_INVOKABLE void correct();
    Q_INVOKABLE void summarize();
    Q_INVOKABLE void ask(const QString &question);
    /// With what the pickers of Recognition say.
    Q_INVOKABLE void transcribeAgain();
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void clearError();
    Q_INVOKABLE void showSettings() { Q_EMIT settingsRequested(); }

Q_SIGNALS:
    void processingChanged();
    void busyChanged();
    void progressChanged();
    /// The user wants to see why there is no language model.
    void settingsRequested();

protected:
    [[nodiscard]] QUuid record() const { return m_record; }
    void setRecord(const QUuid &id);

private:
    /// Nothing while something is made of a record.
    void begin(const QString &what, const std::function<QCoro::Task<QString>(RecordProcessor &)> &work);
    QCoro::Task<> follow(QCoro::Task<QString> work);

    const Collaborators m_services;
    QUuid m_record;
    QString m_what;
    /// By record, until the user has seen it.
    QHash<QUuid, QString> m_errors;
    Scope m_scope;
};

} // namespace orvane
