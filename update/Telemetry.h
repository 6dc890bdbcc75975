#pragma once

#include "base/Scope.h"
#include "update/DeviceSources.h"

#include <QMap>
#include <QThreadPool>
#include <QTimer>
#include <QUrl>

#include <QCoroTask>

#include <chrono>

namespace orvane {

class AppSettings;
class UserDefaults;

/// Sends the vendor's server a short anonymous description of the machine and the program, at most once a
/// day and only while the user allows it. Nothing is ever shown about it. Main thread.
class Telemetry
{
public:
    struct Options
    {
        /// Empty for a build without a server: nothing is then read or sent.
        QUrl endpoint = Telemetry::endpoint();
        std::chrono::milliseconds timeout = std::chrono::seconds(15);
    };

    /// The references outlive this.
    Telemetry(const AppSettings &settings, UserDefaults &defaults, DeviceSources sources,
              const Options &options);
    ~Telemetry();
    Telemetry(const Telemetry &) = delete;
    Telemetry &operator=(const Telemetry &) = delete;

    /// Sends a report once a day, as long as the program runs.
    void start();

    /// Sends a report if the user allows it, none was received within 24 hours and none is on its way.
    /// Returns at once. May be called as often as one likes.
    void pingIfEnabled();

    /// The whole report, ten texts. Stores an identifier of its own for a machine that has none.
    [[nodiscard]] QMap<QString, QString> deviceInfo();

    /// Empty when the build has no server.
    [[nodiscard]] static QUrl endpoint();

private:
    [[nodiscard]] bool isDue() const;
    [[nodiscard]] QString machineHash();
    [[nodiscard]] QString fallbackID();
    [[nodiscard]] QCoro::Task<> send(QByteArray report);

    const AppSettings &m_settings;
    UserDefaults &m_defaults;
    const DeviceSources m_sources;
    const Options m_options;
    bool m_sending = false;
    Scope m_scope;
    QTimer m_timer;
    QThreadPool m_threads;
};

} // namespace orvane
