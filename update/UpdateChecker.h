#pragma once

#include "base/Scope.h"
#include "settings/BuildInfo.h"
#include "update/UpdatePresenter.h"
#include "update/UpdateRelease.h"
#include "update/VersionManifest.h"

#include <QDateTime>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <QVariant>

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>

namespace orvane {

class UserDefaults;

/// Finds out from the vendor's server whether a newer version exists, tells the user once per version, and
/// downloads and opens it on request. Main thread.
class UpdateChecker : public QObject
{
    Q_OBJECT
    /// A Release, or undefined when none newer is known.
    Q_PROPERTY(QVariant available READ availableVariant NOTIFY availableChanged)
    Q_PROPERTY(bool checking READ checking NOTIFY checkingChanged)
    Q_PROPERTY(bool downloading READ downloading NOTIFY downloadingChanged)
    Q_PROPERTY(double downloadProgress READ downloadProgress NOTIFY downloadProgressChanged)

public:
    using Release = UpdateRelease;
    using Manifest = VersionManifest;

    /// Scheduled: silent but for a version that the user was not told about yet. Interactive: every
    /// outcome is shown.
    enum class Mode { Scheduled, Interactive };

    /// Opens a file with the desktop's handler; false when there is none.
    using Opener = std::function<bool(const QString &file)>;

    struct Options
    {
        QString installedVersion = currentVersion();
        BuildInfo::Edition edition = BuildInfo::edition;
        /// Empty for a build without a server: scheduled checks then do nothing at all.
        QUrl endpoint = UpdateChecker::endpoint();
        std::chrono::milliseconds firstCheck = std::chrono::seconds(15);
        std::chrono::milliseconds repeat = std::chrono::hours(24);
        std::chrono::milliseconds checkTimeout = std::chrono::seconds(15);
        std::chrono::milliseconds downloadIdleTimeout = std::chrono::seconds(60);
    };

    /// Downloads go to `folder`, which exists. The references outlive this.
    UpdateChecker(UserDefaults &defaults, UpdatePresenter &presenter, Opener open, const QString &folder,
                  const Options &options, QObject *parent = nullptr);
    ~UpdateChecker() override;

    /// Schedules the first check and the repeated ones. For a program that stays; one that runs a command
    /// and ends never checks.
    void start();

    /// Ends when the outcome is known, not when a dialog about it is closed. While a check runs, another
    /// starts none, and an interactive one has the outcome of the running one shown.
    QCoro::Task<> check(Mode mode);
    /// Asks whether to download; an offer that is still open gives way to this one.
    QCoro::Task<> offerDownload(Release release);
    /// Does nothing while a download runs.
    QCoro::Task<> downloadAndOpen(Release release);

    [[nodiscard]] const std::optional<Release> &available() const { return m_available; }
    [[nodiscard]] bool checking() const { return m_checking; }
    [[nodiscard]] bool downloading() const { return m_downloading; }
    /// 0…1; stays 0 while the server does not give the size.
    [[nodiscard]] double downloadProgress() const { return m_downloadProgress; }

    /// Compares dotted versions number by number; a missing one is 0. Of a piece that is no plain number
    /// the leading digits count, else 0: "1.4.2-beta" is 1.4.2. Numbers may have any length.
    [[nodiscard]] static bool isNewer(const QString &version, const QString &than);
    [[nodiscard]] static QString currentVersion();
    /// Empty when the build has no server.
    [[nodiscard]] static QUrl endpoint();

Q_SIGNALS:
    void availableChanged();
    void checkingChanged();
    void downloadingChanged();
    void downloadProgressChanged();

private:
    [[nodiscard]] QVariant availableVariant() const;
    void checkWhenDue();
    void conclude(const std::optional<Release> &published, const QString &problem);
    void tellAbout(const Release &release);
    void noticeFailedCheck(const QString &text);
    void open(const QString &file);
    void setAvailable(const std::optional<Release> &release);
    void setChecking(bool checking);
    void setDownloading(bool downloading);
    void setDownloadProgress(double progress);

    UserDefaults &m_defaults;
    UpdatePresenter &m_presenter;
    const Opener m_open;
    const QString m_folder;
    const Options m_options;

    std::optional<Release> m_available;
    bool m_checking = false;
    bool m_downloading = false;
    double m_downloadProgress = 0;

    Mode m_mode = Mode::Scheduled; ///< of the running check
    /// By the clock on the wall, as timers stand still while the machine sleeps.
    QDateTime m_nextCheck;
    QTimer m_timer;
    std::stop_source m_offer;
    Scope m_scope;
    QThreadPool m_threads; ///< its own, as a download keeps a thread for long
};

} // namespace orvane
