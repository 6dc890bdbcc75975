#include "app/commandline/ControlCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "app/control/ControlInterface.h"
#include "base/Error.h"
#include "base/localization/Localization.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QUrl>
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
    // Qt's own thread for the bus looks types up until the program ends. What is there before it outlives it.
    qRegisterMetaType<QDBusMessage>();
    return QDBusConnection::sessionBus().call(request, QDBus::Block, answerTimeoutMs);
}

} // namespace

int ControlCommand::run(const Options &options)
{
    const QDBusMessage answer = ask(ControlInterface::interface, options.method);
    if (answer.type() == QDBusMessage::ErrorMessage) {
        throw Error(answer.errorName() == ControlInterface::refusal
                        ? answer.errorMessage()
                        : Localization::text(u"Orvane не отвечает: запустите его командой orvane."));
    }
    if (const QString text = answer.arguments().value(0).toString(); !text.isEmpty())
        Output::write(text.toUtf8() + '\n');
    return ExitStatus::success;
}

bool ControlCommand::activate(const QStringList &files)
{
    QVariantMap platform;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        platform.insert(u"activation-token"_s, token);
    QStringList addresses;
    for (const QString &file : files)
        addresses.append(
            QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()).toString(QUrl::FullyEncoded));
    const QDBusMessage answer = files.isEmpty()
                                    ? ask(ControlInterface::application, u"Activate"_s, {platform})
                                    : ask(ControlInterface::application, u"Open"_s, {addresses, platform});
    return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace orvane
