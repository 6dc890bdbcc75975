#include "desktop/wayland/SwayConnection.h"

#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QPointer>

#include <chrono>
#include <cstring>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto patience = 2s;
constexpr auto moment = 100ms;
constexpr QByteArrayView magic("i3-ipc");
constexpr qsizetype headerSize = magic.size() + 2 * qsizetype(sizeof(quint32));
constexpr quint32 eventBit = 0x80000000;
constexpr quint32 longest = 1 << 24; // bytes: more is nothing of sway's

QByteArray header(quint32 length, quint32 type)
{
    QByteArray bytes = magic.toByteArray();
    for (const quint32 number : {length, type}) // in this machine's order
        bytes.append(reinterpret_cast<const char *>(&number), sizeof(number));
    return bytes;
}

quint32 numberAt(const QByteArray &bytes, qsizetype place)
{
    quint32 number = 0;
    std::memcpy(&number, bytes.constData() + place, sizeof(number));
    return number;
}

QString eventName(quint32 type)
{
    switch (type & ~eventBit) {
    case 0:
        return u"workspace"_s;
    case 2:
        return u"mode"_s;
    case 5:
        return u"binding"_s;
    default:
        return {};
    }
}

} // namespace

SwayConnection::SwayConnection()
{
    connect(&m_socket, &QLocalSocket::readyRead, this, &SwayConnection::read);
    connect(&m_socket, &QLocalSocket::disconnected, this, [this] {
        close();
        Q_EMIT closed();
    });
}

SwayConnection::~SwayConnection()
{
    m_socket.disconnect(this);
    close();
}

QCoro::Task<bool> SwayConnection::open(QString path)
{
    close();
    const QPointer self(this);
    const std::shared_ptr<OneTimeEvent> settled = OneTimeEvent::create();
    const auto settle = [settled] { settled->happen(); };
    const auto connected = connect(&m_socket, &QLocalSocket::connected, this, settle);
    const auto failed = connect(&m_socket, &QLocalSocket::errorOccurred, this, settle);
    m_socket.connectToServer(path);
    co_await settled->waitFor(patience);
    if (!self)
        co_return false;
    disconnect(connected);
    disconnect(failed);
    co_return m_socket.state() == QLocalSocket::ConnectedState;
}

void SwayConnection::close()
{
    m_buffer.clear();
    for (const auto &answer : std::exchange(m_asked, {}))
        answer->arrived->happen();
    m_socket.abort();
}

QCoro::Task<QJsonValue> SwayConnection::ask(Request request, QByteArray argument)
{
    const std::shared_ptr<Answer> answer = send(request, argument);
    co_await answer->arrived->waitFor(patience);
    co_return QJsonValue(answer->value);
}

void SwayConnection::drain()
{
    const QDeadlineTimer end(moment);
    while (!m_asked.empty() && m_socket.waitForReadyRead(int(end.remainingTime())))
        read();
}

std::shared_ptr<SwayConnection::Answer> SwayConnection::send(Request request, const QByteArray &argument)
{
    auto answer = std::make_shared<Answer>();
    if (m_socket.state() != QLocalSocket::ConnectedState) {
        answer->arrived->happen();
        return answer;
    }
    m_socket.write(header(quint32(argument.size()), qToUnderlying(request)) + argument);
    m_asked.push_back(answer);
    return answer;
}

void SwayConnection::read()
{
    const QPointer self(this); // who hears of what happened may end this
    m_buffer += m_socket.readAll();
    while (self && m_buffer.size() >= headerSize) {
        const quint32 length = numberAt(m_buffer, magic.size());
        if (!m_buffer.startsWith(magic) || length > longest) {
            m_socket.abort();
            return;
        }
        if (m_buffer.size() < headerSize + qsizetype(length))
            return;
        const quint32 type = numberAt(m_buffer, magic.size() + qsizetype(sizeof(quint32)));
        const QByteArray content = m_buffer.mid(headerSize, length);
        m_buffer.remove(0, headerSize + qsizetype(length));
        handle(type, content);
    }
}

void SwayConnection::handle(quint32 type, const QByteArray &content)
{
    const QJsonDocument document = QJsonDocument::fromJson(content);
    if ((type & eventBit) != 0) {
        Q_EMIT happened(eventName(type), document.object());
        return;
    }
    if (m_asked.empty())
        return;
    const std::shared_ptr<Answer> answer = std::move(m_asked.front());
    m_asked.pop_front();
    answer->value = document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    answer->arrived->happen();
}

} // namespace orvane
