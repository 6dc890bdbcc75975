#pragma once

#include <QDBusVariant>
#include <QObject>

#include <optional>

namespace orvane {

/// Whether the desktop is dark and whether it wants motion, as its settings portal says, else as the
/// toolkit's palette does. Main thread; needs a QGuiApplication.
class DesktopAppearance : public QObject
{
    Q_OBJECT

public:
    explicit DesktopAppearance(QObject *parent = nullptr);

    [[nodiscard]] bool isDark() const;
    [[nodiscard]] bool isAnimated() const { return m_isAnimated; }

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void settingChanged(const QString &area, const QString &key, const QDBusVariant &value);

private:
    void ask(const QString &area, const QString &key);
    void take(const QString &area, const QString &key, const QVariant &value);

    /// None where the desktop has no preference.
    std::optional<bool> m_isDark;
    bool m_isAnimated = true;
};

} // namespace orvane
