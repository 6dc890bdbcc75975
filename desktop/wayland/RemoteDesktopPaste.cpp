#include "desktop/wayland/RemoteDesktopPaste.h"

#include "base/Async.h"
#include "base/StandardFolders.h"
#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "base/localization/Localization.h"
#include "desktop/BusCall.h"
#include "desktop/wayland/PortalRequest.h"

#include <QDBusObjectPath>
#include <QFile>
#include <QUuid>

#include <array>
#include <chrono>
#include <utility>

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
/// A portal that takes longer to open what was allowed before is asking the user again.
constexpr auto patienceWithPortal = 700ms;

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

    /// Lets it press keys; what reopens it later without asking the user, else nothing.
    [[nodiscard]] QCoro::Task<QString> open(QByteArray token, std::chrono::milliseconds patience)
    {
        co_await PortalRequest::introduce(m_bus);
        if (co_await PortalRequest::versionOf(interface, m_bus) < sincePersistence)
            co_return QString();
        const QVariantMap made = co_await ask(u"CreateSession"_s, {},
                                              {{u"session_handle_token"_s, u"orvane"_s}}, patienceWithPortal);
        m_path = QDBusObjectPath(made[u"session_handle"_s].toString());
        if (!exists())
            co_return QString();
        QVariantMap wishes{{u"types"_s, keyboard}, {u"persist_mode"_s, untilRevoked}};
        if (!token.isEmpty())
            wishes[u"restore_token"_s] = QString::fromUtf8(token);
        co_await ask(u"SelectDevices"_s, {QVariant::fromValue(m_path)}, wishes, patienceWithPortal);
        const QVariantMap begun =
            co_await ask(u"Start"_s, {QVariant::fromValue(m_path), QString()}, {}, patience);
        co_return begun[u"restore_token"_s].toString();
    }

    [[nodiscard]] QCoro::Task<bool> setKey(int key, bool isDown)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(PortalRequest::service, PortalRequest::path,
                                                           interface, u"NotifyKeyboardKeycode"_s);
        call.setArguments({QVariant::fromValue(m_path), QVariantMap(), key, uint(isDown)});
        co_return (co_await BusCall::answerTo(call, m_bus)).type() == QDBusMessage::ReplyMessage;
    }

private:
    /// What was granted.
    [[nodiscard]] QCoro::Task<QVariantMap> ask(QString method, QVariantList arguments, QVariantMap options,
                                               std::chrono::milliseconds limit)
    {
        const auto response =
            co_await PortalRequest::ask(interface, method, arguments, options, m_bus, limit);
        co_return response && response->code == 0 ? response->results : QVariantMap();
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
    const QString token = co_await session.open({}, patienceWithUser);
    if (!session.exists()) {
        throw Error(Localization::text(
            u"Рабочий стол не даёт программам нажимать клавиши: вставляйте текст сочетанием Ctrl+V."));
    }
    if (token.isEmpty()) {
        throw Error(Localization::text(
            u"Вставка не разрешена: текст ждёт в буфере обмена, вставьте его сочетанием Ctrl+V."));
    }
    co_await offMainThread([utf8 = token.toUtf8()] { storeToken(utf8); });
}

QCoro::Task<bool> press(std::function<void()> aboutToPress)
{
    const QByteArray before = co_await offMainThread(readToken);
    if (before.isEmpty())
        co_return false;
    Session session;
    const QString token = co_await session.open(before, patienceWithPortal);
    if (session.exists())
        co_await offMainThread([utf8 = token.toUtf8()] { replaceToken(utf8); });
    if (token.isEmpty())
        co_return false;
    constexpr std::array<std::pair<int, bool>, 4> keys{
        {{KEY_LEFTSHIFT, true}, {KEY_INSERT, true}, {KEY_INSERT, false}, {KEY_LEFTSHIFT, false}}};
    aboutToPress();
    bool isPressed = true;
    for (const auto &[key, isDown] : keys)
        isPressed = co_await session.setKey(key, isDown) && isPressed;
    co_return isPressed;
}

} // namespace orvane::RemoteDesktopPaste
