#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

namespace orvane {

/// The one sentence at the bottom of the main window about what has just been done; it goes by itself.
class Notices : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString action READ action NOTIFY changed)

public:
    explicit Notices(QObject *parent = nullptr);

    /// Empty when there is none.
    [[nodiscard]] QString text() const { return m_text; }
    /// What its button says; empty without one.
    [[nodiscard]] QString action() const { return m_action; }

    void show(const QString &text);
    /// With a way back: `act` is called at most once, `over` when the notice goes without that.
    void offer(const QString &text, const QString &action, std::function<void()> act,
               std::function<void()> over);
    Q_INVOKABLE void act();
    /// Takes the notice away.
    void end();

Q_SIGNALS:
    void changed();

private:
    QString m_text;
    QString m_action;
    std::function<void()> m_act;
    std::function<void()> m_over;
    QTimer m_timer;
};

} // namespace orvane
