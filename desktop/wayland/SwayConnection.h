#pragma once

#include "base/OneTimeEvent.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QLocalSocket>

#include <QCoroTask>

#include <deque>
#include <memory>

namespace orvane {

/// The socket over which sway takes commands and tells what happens. Main thread.
class SwayConnection : public QObject
{
    Q_OBJECT

public:
    enum class Request : quint32 { RunCommand = 0, Subscribe = 2, GetConfig = 9, GetBindingState = 12 };

    SwayConnection();
    ~SwayConnection() override;
    Q_DISABLE_COPY_MOVE(SwayConnection)

    /// Whether somebody listens on that socket.
    [[nodiscard]] QCoro::Task<bool> open(QString path);
    /// Whatever is still asked gets no answer.
    void close();
    /// Waits until what was sent is answered, a moment at most: what sway has not read by the time the
    /// connection ends, it never does.
    void drain();

    /// The answer; undefined when there is none within 2 s.
    [[nodiscard]] QCoro::Task<QJsonValue> ask(Request request, QByteArray argument = {});
    /// Sends a command whose answer does not matter.
    void run(const QByteArray &command) { send(Request::RunCommand, command); }

Q_SIGNALS:
    /// What was subscribed to, such as "binding".
    void happened(const QString &event, const QJsonObject &what);
    void closed();

private:
    struct Answer
    {
        QJsonValue value{QJsonValue::Undefined};
        std::shared_ptr<OneTimeEvent> arrived = OneTimeEvent::create();
    };

    std::shared_ptr<Answer> send(Request request, const QByteArray &argument);
    void read();
    void handle(quint32 type, const QByteArray &content);

    QLocalSocket m_socket;
    QByteArray m_buffer;
    std::deque<std::shared_ptr<Answer>> m_asked; // sway answers in order
};

} // namespace orvane
