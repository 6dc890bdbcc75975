#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

namespace orvane {

/// One line on the terminal's standard error that is rewritten in place: what is being done, for how
/// long, and how long it will still take. Writes nothing when standard error is not a terminal.
class ProgressLine : public QObject
{
    Q_OBJECT

public:
    struct State
    {
        QString stage;
        /// Milliseconds, negative while unknown.
        qint64 remainingMs = -1;
    };

    /// Asks for the state at every repaint. `title` stands before it, such as the file's name.
    ProgressLine(const QString &title, std::function<State()> state, QObject *parent = nullptr);
    /// Clears the line.
    ~ProgressLine() override;

    /// False when standard error is not a terminal.
    [[nodiscard]] bool isShown() const { return m_isShown; }

private:
    void paint();

    const QString m_title;
    const std::function<State()> m_state;
    const bool m_isShown;
    QElapsedTimer m_elapsed;
    QTimer m_timer;
};

} // namespace orvane
