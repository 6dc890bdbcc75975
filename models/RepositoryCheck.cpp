#include "models/RepositoryCheck.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/system/Loopback.h"
#include "models/CorrectionModel.h"
#include "models/DownloadError.h"
#include "models/ModelRepository.h"
#include "models/Transfer.h"
#include "models/WhisperModel.h"

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// Somebody waits before the screen.
constexpr std::chrono::milliseconds patience = 15s;

struct Candidate
{
    QUrl url;
    QByteArray magic;
};

/// Ends the request when the file's first bytes are there.
struct BeginningSuffices
{};

class Beginning : public Transfer
{
public:
    explicit Beginning(const Candidate &file)
        : Transfer(file.url, ByteRange{.start = 0, .end = file.magic.size() - 1}, patience),
          m_magic(file.magic)
    {}

protected:
    void answered(const DownloadAnswer &answer) override
    {
        if (answer.status != 200 && answer.status != 206)
            throw DownloadError::badStatus(answer.status);
    }
    void received(std::span<const char> bytes) override
    {
        m_bytes.append(bytes.data(), std::ssize(bytes));
        if (m_bytes.size() >= m_magic.size())
            ended();
    }
    void ended() override
    {
        if (!m_bytes.startsWith(m_magic))
            throw DownloadError::notARepository();
        throw BeginningSuffices();
    }

private:
    const QByteArray m_magic;
    QByteArray m_bytes;
};

template <typename Model>
void appendAll(QList<Candidate> &candidates, const ModelRepository &repository)
{
    for (const Model &model : Model::catalog())
        candidates.append({repository.urlOf(model.repositoryPath()), Model::magic()});
}

void request(const Candidate &file, const std::stop_token &stop)
{
    const std::unique_ptr<Transfer> transfers[] = {std::make_unique<Beginning>(file)};
    try {
        DownloadSession().run(transfers, stop);
    } catch (const BeginningSuffices &) {
        // It is there.
    }
}

/// A repository need not have every model.
void requireOneOf(const QList<Candidate> &candidates, const std::stop_token &stop)
{
    std::optional<DownloadError> missing;
    for (const Candidate &file : candidates) {
        try {
            request(file, stop);
            return;
        } catch (const DownloadError &error) {
            if (error.kind() != DownloadError::Kind::BadStatus)
                throw;
            missing = error;
        }
    }
    if (missing)
        throw DownloadError(*missing);
}

} // namespace

RepositoryCheck::RepositoryCheck()
{
    m_pool.setMaxThreadCount(1);
}

RepositoryCheck::~RepositoryCheck()
{
    m_scope.end();
    waitForDone(m_pool);
}

QCoro::Task<> RepositoryCheck::run(QString address, std::stop_token stop)
{
    const ModelRepository repository{.address = address, .options = {}};
    QList<Candidate> candidates;
    appendAll<WhisperModel>(candidates, repository);
    appendAll<CorrectionModel>(candidates, repository);
    const QUrl &first = candidates.constFirst().url;
    if (first.scheme() != u"https" && !isLoopback(first.host()))
        throw DownloadError::insecureRepository();

    const AnyStop any(stop, m_scope.stop());
    const auto work = [candidates, token = any.token()] { requireOneOf(candidates, token); };
    co_await m_scope(offMainThread(&m_pool, work), stop);
}

} // namespace orvane
