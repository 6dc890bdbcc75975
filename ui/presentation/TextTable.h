#pragma once

#include <QObject>
#include <QString>

namespace orvane {

class AppSettings;

/// The table of texts for the scenes of the windows.
class TextTable : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString language READ language NOTIFY languageChanged)

public:
    explicit TextTable(const AppSettings &settings, QObject *parent = nullptr);

    /// "ru" or "en".
    [[nodiscard]] QString language() const;
    /// Of a Russian text of the table what the interface shows.
    [[nodiscard]] Q_INVOKABLE QString text(const QString &russian) const;
    /// "1,25" or "1.25".
    [[nodiscard]] Q_INVOKABLE QString decimal(double number) const;

Q_SIGNALS:
    void languageChanged();

private:
    const AppSettings &m_settings;
};

} // namespace orvane
