#include "update/Telemetry.h"

#include "base/Async.h"
#include "settings/AppSettings.h"
#include "settings/BuildInfo.h"
#include "settings/UserDefaults.h"
#include "update/UpdateError.h"
#include "update/VendorExchange.h"
#include "update/VendorServer.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qint64 secondsBetweenReports = 86'400;
/// The day is counted by the clock on the wall, as timers stand still while the machine sleeps.
constexpr std::chrono::milliseconds lookInterval = std::chrono::minutes(30);

namespace Key {

const QString lastSent = u"telemetryLastSent"_s;
const QString fallbackID = u"orvane.fallbackMachineID"_s;

} // namespace Key

QByteArray jsonOf(const QMap<QString, QString> &report)
{
    QJsonObject object;
    for (auto member = report.begin(); member != report.end(); ++member)
        object.insert(member.key(), member.value());
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

Telemetry::Telemetry(const AppSettings &settings, UserDefaults &defaults, DeviceSources sources,
                     const Options &options)
    : m_settings(settings),
      m_defaults(defaults),
      m_sources(std::move(sources)),
      m_options(options)
{
    m_threads.setMaxThreadCount(1);
    m_timer.callOnTimeout([this] { pingIfEnabled(); });
}

Telemetry::~Telemetry()
{
    m_scope.end(); // the pool waits for its thread, which this sends home
}

void Telemetry::start()
{
    pingIfEnabled();
    m_timer.start(lookInterval);
}

void Telemetry::pingIfEnabled()
{
    if (!m_settings.shareAnonymousStats() || m_sending || m_options.endpoint.isEmpty() || !isDue())
        return;
    m_sending = true;
    spawn(send(jsonOf(deviceInfo())));
}

bool Telemetry::isDue() const
{
    const auto lastSent = m_defaults.date(Key::lastSent);
    return !lastSent || lastSent->secsTo(QDateTime::currentDateTimeUtc()) >= secondsBetweenReports;
}

QMap<QString, QString> Telemetry::deviceInfo()
{
    constexpr double gibibyte = 1 << 30;
    return {{u"machineHash"_s, machineHash()},
            {u"os"_s, m_sources.os()},
            {u"model"_s, m_sources.model()},
            {u"cpu"_s, m_sources.cpu()},
            {u"arch"_s, QSysInfo::buildCpuArchitecture()},
            {u"ramGB"_s, QString::number(m_sources.memory() / gibibyte, 'f', 0)},
            {u"app"_s, BuildInfo::version},
            {u"build"_s, BuildInfo::buildNumber},
            {u"edition"_s, BuildInfo::editionName},
            {u"locale"_s, m_sources.locale()}};
}

QString Telemetry::machineHash()
{
    const QString platformUUID = m_sources.platformUUID();
    const QString identifier = platformUUID.isEmpty() ? fallbackID() : platformUUID;
    // The prefix keeps the hash apart from those that others make of the same identifier.
    const QByteArray text = u"orvane-telemetry-v1:"_s.append(identifier).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex());
}

QString Telemetry::fallbackID()
{
    if (const auto stored = m_defaults.string(Key::fallbackID))
        return *stored;
    const QString made = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    m_defaults.set(Key::fallbackID, made);
    return made;
}

QCoro::Task<> Telemetry::send(QByteArray report)
{
    const VendorExchange::Request request{
        .url = m_options.endpoint, .json = report, .wholeTimeout = m_options.timeout};
    bool received = false;
    try {
        co_await m_scope(offMainThread(&m_threads, [request, stop = m_scope.stop()] {
            VendorExchange::stream(request, [](const QByteArray &, std::optional<qint64>) {}, stop);
        }));
        received = true;
    } catch (const UpdateError &) {
        // The next call tries again.
    }
    m_sending = false;
    if (received)
        m_defaults.set(Key::lastSent, QDateTime::currentDateTimeUtc());
}

QUrl Telemetry::endpoint()
{
    return vendorAddress(BuildInfo::vendorServer, u"/api/telemetry"_s);
}

} // namespace orvane
