#include "update/UpdateChecker.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "settings/UserDefaults.h"
#include "update/UpdateDownload.h"
#include "update/UpdateError.h"
#include "update/VendorExchange.h"
#include "update/VendorServer.h"

#include <algorithm>
#include <atomic>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

using Localization::text;

namespace {

constexpr auto lookInterval = 5min;
const QString notifiedVersionKey = u"orvane.update.notifiedVersion"_s;

/// The digits a version's piece starts with, without leading zeros; empty for 0.
QStringView numberIn(QStringView piece)
{
    piece = piece.trimmed();
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    piece = piece.first(std::ranges::find_if_not(piece, isDigit) - piece.begin());
    return piece.sliced(std::ranges::find_if_not(piece, [](QChar c) { return c == u'0'; }) - piece.begin());
}

int compareNumbers(QStringView left, QStringView right)
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    return left.compare(right);
}

} // namespace

UpdateChecker::UpdateChecker(UserDefaults &defaults, UpdatePresenter &presenter, Opener open,
                             const QString &folder, const Options &options, QObject *parent)
    : QObject(parent),
      m_defaults(defaults),
      m_presenter(presenter),
      m_open(std::move(open)),
      m_folder(folder),
      m_options(options)
{
    m_threads.setMaxThreadCount(2); // a check and a download
    connect(&m_timer, &QTimer::timeout, this, &UpdateChecker::checkWhenDue);
}

UpdateChecker::~UpdateChecker()
{
    // The pool's destructor waits for its threads, which this sends home.
    m_scope.end();
    m_offer.request_stop();
}

void UpdateChecker::start()
{
    QTimer::singleShot(m_options.firstCheck, this, [this] { spawn(check(Mode::Scheduled)); });
    m_nextCheck = QDateTime::currentDateTimeUtc().addMSecs(m_options.repeat.count());
    m_timer.start(std::min<std::chrono::milliseconds>(m_options.repeat, lookInterval));
}

void UpdateChecker::checkWhenDue()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QDateTime next = now.addMSecs(m_options.repeat.count());
    const bool isDue = m_nextCheck <= now;
    m_nextCheck = isDue ? next : std::min(m_nextCheck, next); // a clock that was set back delays nothing
    if (isDue)
        spawn(check(Mode::Scheduled));
}

QCoro::Task<> UpdateChecker::check(Mode mode)
{
    if (m_checking) {
        if (mode == Mode::Interactive)
            m_mode = mode;
        co_return;
    }
    if (m_options.endpoint.isEmpty()) {
        if (mode == Mode::Interactive)
            noticeFailedCheck(text(u"В этой сборке не задан адрес сервера обновлений."));
        co_return;
    }

    m_mode = mode;
    setChecking(true);
    std::optional<Release> published;
    // One sentence covers every reason but one, of which only the vendor is the cause.
    QString problem = text(u"Проверьте подключение к интернету и повторите.");
    try {
        const VendorExchange::Request request{.url = m_options.endpoint,
                                              .wholeTimeout = m_options.checkTimeout};
        const auto fetch = [request, stop = m_scope.stop()] { return VendorExchange::fetch(request, stop); };
        const QByteArray manifest = co_await m_scope(offMainThread(&m_threads, fetch));
        if (const auto decoded = Manifest::fromJson(manifest))
            published = decoded->releaseFor(m_options.edition, m_options.endpoint);
    } catch (const UpdateError &error) {
        if (error.kind() == UpdateError::Kind::InsecurePackage)
            problem = error.description();
    }
    setChecking(false);
    conclude(published, problem);
}

void UpdateChecker::conclude(const std::optional<Release> &published, const QString &problem)
{
    const bool interactive = m_mode == Mode::Interactive;
    if (!published) {
        if (interactive)
            noticeFailedCheck(problem);
        return;
    }
    if (isNewer(published->version, m_options.installedVersion)) {
        setAvailable(published);
        tellAbout(*published);
        return;
    }
    setAvailable(std::nullopt); // what was offered before has been withdrawn
    if (interactive)
        m_presenter.notice(text(u"У вас последняя версия"),
                           text(u"Установлена версия") + u' ' + m_options.installedVersion + u'.');
}

void UpdateChecker::tellAbout(const Release &release)
{
    if (m_mode == Mode::Scheduled) {
        if (m_defaults.string(notifiedVersionKey) == release.version)
            return;
        m_defaults.set(notifiedVersionKey, release.version);
    }
    spawn(offerDownload(release));
}

void UpdateChecker::noticeFailedCheck(const QString &text)
{
    m_presenter.notice(Localization::text(u"Не удалось проверить обновления"), text);
}

QCoro::Task<> UpdateChecker::offerDownload(Release release)
{
    m_offer.request_stop();
    m_offer = std::stop_source();

    const UpdatePresenter::Offer offer{
        .title = text(u"Доступно обновление") + u' ' + release.version,
        .text = text(u"Установлена версия") + u' ' + m_options.installedVersion + u".\n\n"_s +
                text(u"Нажмите «Скачать» — образ с новой версией скачается и откроется, останется "
                     u"перетащить приложение в «Программы»."),
        .downloadButton = text(u"Скачать"),
        .laterButton = text(u"Позже")};
    const UpdatePresenter::Choice choice = co_await m_scope(m_presenter.offer(offer, m_offer.get_token()));
    if (choice == UpdatePresenter::Choice::Download)
        co_await m_scope(downloadAndOpen(release));
}

QCoro::Task<> UpdateChecker::downloadAndOpen(Release release)
{
    if (m_downloading)
        co_return;
    setDownloading(true);
    setDownloadProgress(0);
    m_presenter.showProgress(text(u"Скачиваю обновление"), text(u"Скачиваю обновление…"));

    // Looked at from here a few times a second, however often the network tells it.
    const auto progress = std::make_shared<std::atomic<double>>(0);
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [this, progress] { setDownloadProgress(*progress); });
    watch.start(50ms);

    const UpdateDownload download{.release = release,
                                  .folder = m_folder,
                                  .idleTimeout = m_options.downloadIdleTimeout,
                                  .progress = [progress](double fraction) { *progress = fraction; }};
    QString file;
    QString failure;
    try {
        const auto run = [download, stop = m_scope.stop()] { return download.run(stop); };
        file = co_await m_scope(offMainThread(&m_threads, run));
    } catch (const UpdateError &error) {
        failure = error.description();
    }
    watch.stop();
    if (failure.isEmpty())
        setDownloadProgress(1);
    m_presenter.hideProgress();
    setDownloading(false);
    if (!failure.isEmpty())
        m_presenter.notice(text(u"Не удалось скачать обновление"), failure);
    else
        open(file);
}

void UpdateChecker::open(const QString &file)
{
    if (!m_open(file))
        m_presenter.notice(text(u"Не удалось открыть обновление"),
                           text(u"Откройте скачанный файл сами: ") + file);
}

bool UpdateChecker::isNewer(const QString &version, const QString &than)
{
    const QStringList left = version.split(u'.');
    const QStringList right = than.split(u'.');
    for (qsizetype piece = 0; piece < std::max(left.size(), right.size()); ++piece) {
        const QString leftPiece = left.value(piece);
        const QString rightPiece = right.value(piece);
        if (const int order = compareNumbers(numberIn(leftPiece), numberIn(rightPiece)); order != 0)
            return order > 0;
    }
    return false;
}

QString UpdateChecker::currentVersion()
{
    return BuildInfo::version;
}

QUrl UpdateChecker::endpoint()
{
    return vendorAddress(BuildInfo::vendorServer, u"/api/version"_s);
}

QVariant UpdateChecker::availableVariant() const
{
    return m_available ? QVariant::fromValue(*m_available) : QVariant();
}

void UpdateChecker::setAvailable(const std::optional<Release> &release)
{
    if (m_available == release)
        return;
    m_available = release;
    Q_EMIT availableChanged();
}

void UpdateChecker::setChecking(bool checking)
{
    m_checking = checking;
    Q_EMIT checkingChanged();
}

void UpdateChecker::setDownloading(bool downloading)
{
    m_downloading = downloading;
    Q_EMIT downloadingChanged();
}

void UpdateChecker::setDownloadProgress(double progress)
{
    if (m_downloadProgress == progress)
        return;
    m_downloadProgress = progress;
    if (progress > 0)
        m_presenter.setProgress(progress);
    Q_EMIT downloadProgressChanged();
}

} // namespace orvane
