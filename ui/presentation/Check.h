#pragma once

#include "base/Scope.h"
#include "diagnostics/CheckResult.h"
#include "ui/presentation/RowModel.h"

#include <optional>

namespace orvane {

class SystemCheck;

/// What the check of this machine has found, one row for each. Main thread.
class Check : public RowModel
{
    Q_OBJECT
    Q_PROPERTY(QString summary READ summary NOTIFY changed)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY changed)
    Q_PROPERTY(bool isListening READ isListening NOTIFY levelChanged)
    Q_PROPERTY(QList<float> waveform READ waveform NOTIFY levelChanged)

public:
    /// It outlives this.
    explicit Check(SystemCheck &check, QObject *parent = nullptr);
    ~Check() override;

    /// One line about all of it.
    [[nodiscard]] QString summary() const;
    [[nodiscard]] bool isRunning() const;
    /// The microphone is being listened to.
    [[nodiscard]] bool isListening() const;
    [[nodiscard]] QList<float> waveform() const;

    /// Begins anew, unless it runs.
    Q_INVOKABLE void run();
    /// The interface language is another: what was found is said in the old one, so it is found anew when the
    /// check runs.
    void relabel();

Q_SIGNALS:
    void changed();
    void levelChanged();

private:
    QCoro::Task<> check();
    void show();
    [[nodiscard]] std::optional<CheckResult> result(qsizetype index) const;

    SystemCheck &m_check;
    bool m_isOutdated = false;
    Scope m_scope;
};

} // namespace orvane
