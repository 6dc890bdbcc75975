#include "models/DownloadSession.h"

#include "base/Error.h"
#include "models/Curl.h"
#include "models/Transfer.h"

namespace orvane {

namespace {

constexpr std::chrono::milliseconds maxPoll{250};

} // namespace

DownloadSession::DownloadSession()
    : m_multi(curl().multi_init(), [](CURLM *multi) { curl().multi_cleanup(multi); })
{}

DownloadSession::~DownloadSession() = default;

void DownloadSession::run(std::span<const std::unique_ptr<Transfer>> transfers, const std::stop_token &stop,
                          const std::function<void()> &afterRound)
{
    const std::stop_callback wake(stop, [this] { curl().multi_wakeup(m_multi.get()); });
    for (const auto &transfer : transfers)
        curl().multi_add_handle(m_multi.get(), transfer->handle());
    try {
        runRounds(transfers, stop, afterRound);
    } catch (...) {
        for (const auto &transfer : transfers)
            curl().multi_remove_handle(m_multi.get(), transfer->handle());
        throw;
    }
    for (const auto &transfer : transfers)
        curl().multi_remove_handle(m_multi.get(), transfer->handle());
}

void DownloadSession::waitUntilReadable(int descriptor, std::chrono::milliseconds limit,
                                        const std::stop_token &stop)
{
    const std::stop_callback wake(stop, [this] { curl().multi_wakeup(m_multi.get()); });
    throwIfCancelled(stop);
    curl_waitfd waited{.fd = descriptor, .events = CURL_WAIT_POLLIN, .revents = 0};
    curl().multi_poll(m_multi.get(), &waited, 1, static_cast<int>(limit.count()), nullptr);
    throwIfCancelled(stop);
}

void DownloadSession::runRounds(std::span<const std::unique_ptr<Transfer>> transfers,
                                const std::stop_token &stop, const std::function<void()> &afterRound)
{
    for (size_t ended = 0;;) {
        int running = 0;
        curl().multi_perform(m_multi.get(), &running);
        afterRound();
        throwIfCancelled(stop);
        ended += takeEnded();
        if (ended == transfers.size())
            return;
        for (const auto &transfer : transfers)
            transfer->throwIfIdle();
        curl().multi_poll(m_multi.get(), nullptr, 0, static_cast<int>(maxPoll.count()), nullptr);
    }
}

size_t DownloadSession::takeEnded()
{
    size_t ended = 0;
    int left = 0;
    while (const CURLMsg *message = curl().multi_info_read(m_multi.get(), &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        Transfer::of(message->easy_handle).finish(message->data.result);
        ++ended;
    }
    return ended;
}

} // namespace orvane
