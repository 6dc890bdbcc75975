#include "desktop/wayland/RemoteDesktopPaste.h"

#include "base/Async.h"
#include "base/StandardFolders.h"
#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "base/localization/Localization.h"
#include "desktop/BusCall.h"
#include "desktop/wayland/PortalRequest.h"

#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QFile>
#include <QUuid>

#include <chrono>
#include <optional>

#include <linux/input-event-codes.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane::RemoteDesktopPaste {

namespace {

const QString interface = u"org.freedesktop.portal.RemoteDesktop"_s;
constexpr uint keyboard = 1;
constexpr uint untilRevoked = 2;
constexpr uint sincePersistence = 2; // the interface's version
/// For the user, who has a dialog to read.
constexpr auto patienceWithUser = 5min;
/// From when a text is to be pasted to when its keys are pressed: later they would reach another place. A
/// portal that takes longer may be asking the user again.
constexpr auto patienceWithPaste = 1500ms;
constexpr auto patienceWithKey = 700ms;

std::chrono::milliseconds left(const QDeadlineTimer &end)
{
    return std::chrono::milliseconds(end.remainingTime());
}

QString tokenFile()
{
    return StandardFolders::ofUser().orvane() + u"/paste-permission"_s;
}

/// What reopens the session without asking; good for once. Empty without permission.
QByteArray readToken()
{
    QFile file(tokenFile());
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

void storeToken(const QByteArray &token)
{
    replaceFile(tokenFile(), token, FileAccess::Private);
}

/// After the old one was used up.
void replaceToken(const QByteArray &token)
{
    try {
        if (!token.isEmpty())
            storeToken(token);
        else
            QFile::remove(tokenFile()); // it is no longer allowed
    } catch (const FileError &) {
        QFile::remove(tokenFile());
    }
}

struct Opened
{
    QByteArray token; ///< reopens it later without asking the user; empty when they do not allow that
};

/// A session of the portal's, on a connection of its own that ends with this object.
class Session
{
public:
    Session() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name)) {}
    ~Session()
    {
        QDBusConnection::disconnectFromBus(m_name); // the portal ends it then, with its dialog
    }
    Q_DISABLE_COPY_MOVE(Session)

    /// Whether the portal made it, also when it may do nothing yet.
    [[nodiscard]] bool exists() const { return !m_path.path().isEmpty(); }

    /// Lets it press keys; none when the portal has not said in that time whether it may.
    [[nodiscard]] QCoro::Task<std::optional<Opened>> open(QByteArray token, QDeadlineTimer endForPortal,
                                                          QDeadlineTimer endForUser)
    {
        co_await PortalRequest::introduce(m_bus, left(endForPortal));
        if (co_await PortalRequest::versionOf(interface, m_bus, left(endForPortal)) < sincePersistence)
            co_return std::nullopt;
        const auto made = co_await ask(u"CreateSession"_s, {}, {{u"session_handle_token"_s, u"orvane"_s}},
                                       left(endForPortal));
        if (made && made->code == 0)
            m_path = QDBusObjectPath(made->results[u"session_handle"_s].toString());
        if (!exists())
            co_return std::nullopt;
        QVariantMap wishes{{u"types"_s, keyboard}, {u"persist_mode"_s, untilRevoked}};
        if (!token.isEmpty())
            wishes[u"restore_token"_s] = QString::fromUtf8(token);
        co_await ask(u"SelectDevices"_s, {QVariant::fromValue(m_path)}, wishes, left(endForPortal));
        const auto begun =
            co_await ask(u"Start"_s, {QVariant::fromValue(m_path), QString()}, {}, left(endForUser));
        if (!begun)
            co_return std::nullopt;
        const bool isAllowed = begun->code == 0;
        co_return Opened{.token =
                             isAllowed ? begun->results[u"restore_token"_s].toByteArray() : QByteArray()};
    }

    [[nodiscard]] QCoro::Task<bool> setKey(int key, bool isDown)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(PortalRequest::service, PortalRequest::path,
                                                           interface, u"NotifyKeyboardKeycode"_s);
        call.setArguments({QVariant::fromValue(m_path), QVariantMap(), key, uint(isDown)});
        co_return (co_await BusCall::answerTo(call, m_bus, patienceWithKey)).type() ==
            QDBusMessage::ReplyMessage;
    }

private:
    [[nodiscard]] QCoro::Task<std::optional<PortalRequest::Response>>
    ask(QString method, QVariantList arguments, QVariantMap options, std::chrono::milliseconds limit)
    {
        return PortalRequest::ask(interface, method, arguments, options, m_bus, limit);
    }

    const QString m_name = u"orvane-paste-"_s + QUuid::createUuid().toString(QUuid::Id128);
    QDBusConnection m_bus;
    QDBusObjectPath m_path;
};

} // namespace

bool isAllowed()
{
    return !readToken().isEmpty();
}

QCoro::Task<> askConsent()
{
    Session session;
    const auto opened = co_await session.open({}, QDeadlineTimer(PortalRequest::startLimit),
                                              QDeadlineTimer(patienceWithUser));
    if (!session.exists()) {
        throw Error(Localization::text(
            u"Рабочий стол не даёт программам нажимать клавиши: вставляйте текст сочетанием Ctrl+V."));
    }
    if (!opened || opened->token.isEmpty()) {
        throw Error(Localization::text(
            u"Вставка не разрешена: текст ждёт в буфере обмена, вставьте его сочетанием Ctrl+V."));
    }
    co_await offMainThread([token = opened->token] { storeToken(token); });
}

QCoro::Task<bool> press(std::function<void()> aboutToPress)
{
    const QByteArray before = co_await offMainThread(readToken);
    if (before.isEmpty())
        co_return false;
    const QDeadlineTimer end(patienceWithPaste);
    Session session;
    const auto opened = co_await session.open(before, end, end);
    if (!opened)
        co_return false; // it may be slow, and allow it the next time
    co_await offMainThread([token = opened->token] { replaceToken(token); });
    if (opened->token.isEmpty() || end.hasExpired())
        co_return false;
    aboutToPress();
    bool isPressed = co_await session.setKey(KEY_LEFTSHIFT, true);
    if (isPressed) {
        isPressed = co_await session.setKey(KEY_INSERT, true);
        isPressed = co_await session.setKey(KEY_INSERT, false) && isPressed;
    }
    co_return co_await session.setKey(KEY_LEFTSHIFT, false) && isPressed;
}

} // namespace orvane::RemoteDesktopPaste
