#include "app/SingleInstance.h"

#include "app/commandline/Output.h"
#include "app/control/ControlInterface.h"
#include "base/files/PrivateFile.h"
#include "base/localization/Localization.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QThread>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// An application that ends may complete a recording on a slow disk.
constexpr auto patience = 20s;
constexpr auto lookInterval = 50ms;

enum class Name { Ours, AnothersOwn, NotToBeHad };

Name takeName()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Name::NotToBeHad;
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        bus.interface()->registerService(ControlInterface::service);
    if (!reply.isValid())
        return Name::NotToBeHad;
    return reply == QDBusConnectionInterface::ServiceNotRegistered ? Name::AnothersOwn : Name::Ours;
}

} // namespace

SingleInstance::~SingleInstance()
{
    giveUpName();
}

SingleInstance::Claim SingleInstance::claim(const QString &dataFolder)
{
    const Name name = takeName();
    if (name == Name::AnothersOwn)
        return Claim::AnotherRuns;
    m_hasName = name == Name::Ours;
    makePrivateFolder(dataFolder);
    const QString lockFile = dataFolder + u"/application.lock"_s;
    m_data = FileLock::tryLock(lockFile);
    // Who has no name may be ending; without a bus nobody has one.
    if (m_data || (m_hasName && waitForData(lockFile)))
        return Claim::First;
    giveUpName();
    return Claim::AnotherRuns;
}

bool SingleInstance::waitForData(const QString &lockFile)
{
    Output::complain(Localization::text(u"Прежний запуск Orvane ещё не завершился, подождите…"));
    for (const QDeadlineTimer end(patience); !m_data && !end.hasExpired();) {
        QThread::msleep(lookInterval.count());
        m_data = FileLock::tryLock(lockFile);
    }
    return m_data.has_value();
}

void SingleInstance::giveUpName()
{
    if (std::exchange(m_hasName, false))
        QDBusConnection::sessionBus().unregisterService(ControlInterface::service);
}

} // namespace orvane
