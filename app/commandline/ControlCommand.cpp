#include "app/commandline/ControlCommand.h"

#include "app/base/Error.h"
#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "app/control/ControlInterface.h"
#include "app/settings/Localization.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Long enough for an application that has just been started, and for a microphone that is slow to open.
constexpr int answerTimeoutMs = 15'000;

QDBusMessage ask(const QString &interface, const QString &method, const QVariantList &arguments = {})
{
    QDBusMessage request =
        QDBusMessage::createMethodCall(ControlInterface::service, ControlInterface::path, interface, method);
    request.setArguments(arguments);
    request.setAutoStartService(false);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    QDBusMessage answer = bus.call(request, QDBus::Block, answerTimeoutMs);
    if (answer.type() == QDBusMessage::ErrorMessage) {
        // Qt's own thread passes errors on once more, which it complains of when the types are gone. It has
        // done so when it is through with a later answer.
        bus.call(QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                u"org.freedesktop.DBus.Peer"_s, u"Ping"_s),
                 QDBus::Block, answerTimeoutMs);
    }
    QCoreApplication::processEvents();
    return answer;
}

} // namespace

int ControlCommand::run(const Options &options)
{
    const QDBusMessage answer = ask(ControlInterface::interface, options.method);
    if (answer.type() == QDBusMessage::ErrorMessage) {
        throw Error(answer.errorName() == ControlInterface::refusal
                        ? answer.errorMessage()
                        : Localization::text(u"Orvane не отвечает: запустите его командой orvane."_s));
    }
    if (const QString text = answer.arguments().value(0).toString(); !text.isEmpty())
        Output::write(text.toUtf8() + '\n');
    return ExitStatus::success;
}

bool ControlCommand::activate()
{
    const QDBusMessage answer = ask(ControlInterface::application, u"Activate"_s, {QVariantMap()});
    return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace orvane
