#include "update/UpdateDownload.h"

#include "update/UpdateError.h"
#include "update/UpdateFileName.h"
#include "update/VendorExchange.h"

#include <QFile>
#include <QTemporaryFile>

#include <algorithm>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// Unlike QFile's and QSaveFile's ways this replaces a link itself, not what it points to: others may have
// put one into a shared folder.
bool replace(const QString &target, const QString &source)
{
    std::error_code failure;
    std::filesystem::rename(QFile::encodeName(source).toStdString(), QFile::encodeName(target).toStdString(),
                            failure);
    return !failure;
}

} // namespace

QString UpdateDownload::run(const std::stop_token &stop) const
{
    QTemporaryFile file(folder + u"/Orvane-XXXXXX.part"_s);
    if (!file.open())
        throw UpdateError::notWritable(folder);

    qint64 received = 0;
    const auto save = [&](const QByteArray &bytes, std::optional<qint64> length) {
        if (file.write(bytes) != bytes.size())
            throw UpdateError::notWritable(folder);
        received += bytes.size();
        if (length && *length > 0)
            progress(std::min(1.0, double(received) / double(*length)));
    };
    const VendorExchange::Request request{.url = release.url, .idleTimeout = idleTimeout};
    const VendorExchange::Answer answer = VendorExchange::stream(request, save, stop);

    if (received == 0)
        throw UpdateError::connectionBroke();

    const QString name = updateFileName(answer.contentDisposition, answer.url, release.version);
    const QString target = folder + u'/' + name;
    if (!file.flush() || !replace(target, file.fileName()))
        throw UpdateError::notWritable(folder);
    file.setAutoRemove(false);
    return target;
}

} // namespace orvane
