#pragma once

#include "base/Scope.h"
#include "models/RepositoryCheck.h"

#include <QObject>

namespace orvane {

class AppSettings;
class ModelManager;

/// Where models are downloaded from, as far as the user has to say it. Main thread.
class Repository : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isAsked READ isAsked NOTIFY changed)
    Q_PROPERTY(QString address READ address NOTIFY addressChanged)
    Q_PROPERTY(bool isChecking READ isChecking NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString error READ error NOTIFY changed)

public:
    /// They outlive this.
    Repository(AppSettings &settings, const ModelManager &models, QObject *parent = nullptr);
    ~Repository() override;

    /// False for a build that knows.
    [[nodiscard]] bool isAsked() const;
    /// What is stored; empty while nothing is.
    [[nodiscard]] QString address() const;
    [[nodiscard]] bool isChecking() const { return m_isChecking; }
    /// What there is to do, or what became of the last check.
    [[nodiscard]] QString text() const;
    /// Why the last address was not taken; empty when it was.
    [[nodiscard]] QString error() const { return m_error; }

    /// Stores the address if models are there; an empty one at once.
    Q_INVOKABLE void check(const QString &typed);

Q_SIGNALS:
    void changed();
    /// Only then: a field that shows it must keep what is being typed.
    void addressChanged();

private:
    QCoro::Task<> checkAndStore(QString address);

    AppSettings &m_settings;
    const ModelManager &m_models;
    bool m_isChecking = false;
    QString m_error;
    RepositoryCheck m_check;
    Scope m_scope;
};

} // namespace orvane
