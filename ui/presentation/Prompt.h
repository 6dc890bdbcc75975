#pragma once

#include <QObject>
#include <QString>

namespace orvane {

class AppSettings;

/// The instruction to the model that corrects, for an editor. Main thread.
class Prompt : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(bool isDefault READ isDefault NOTIFY changed)
    Q_PROPERTY(QString safeguard READ safeguard CONSTANT)

public:
    /// The settings outlive this.
    explicit Prompt(AppSettings &settings, QObject *parent = nullptr);

    /// What the model is told: the default one where the stored one is blank.
    [[nodiscard]] QString text() const;
    [[nodiscard]] bool isDefault() const;
    /// What the model is told after that, whatever the user writes.
    [[nodiscard]] QString safeguard() const;

    Q_INVOKABLE void store(const QString &text);
    Q_INVOKABLE void reset();

Q_SIGNALS:
    void changed();

private:
    AppSettings &m_settings;
};

} // namespace orvane
