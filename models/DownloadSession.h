#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <stop_token>

using CURLM = void;

namespace orvane {

class Transfer;

struct DownloadOptions
{
    /// How long the server may take to answer the first request.
    std::chrono::milliseconds probeTimeout{30'000};
    /// How long a connection may bring nothing before the download fails.
    std::chrono::milliseconds idleTimeout{60'000};
    /// How much of the download a power failure may cost.
    std::chrono::milliseconds checkpointInterval{10'000};
};

/// Runs the transfers of one download, each on a connection of its own, on the calling thread.
class DownloadSession
{
public:
    DownloadSession();
    ~DownloadSession();

    /// Returns when all transfers are complete. Throws what the first failed one failed with, or Cancelled
    /// soon after a stop request, whichever thread makes it; the others are then dropped. `afterRound` is
    /// called each time all that had arrived has been handed to the transfers.
    void run(
        std::span<const std::unique_ptr<Transfer>> transfers, const std::stop_token &stop,
        const std::function<void()> &afterRound = [] {});

    /// Returns when the descriptor is readable, or after the limit. Throws Cancelled soon after a stop
    /// request.
    void waitUntilReadable(int descriptor, std::chrono::milliseconds limit, const std::stop_token &stop);

private:
    void runRounds(std::span<const std::unique_ptr<Transfer>> transfers, const std::stop_token &stop,
                   const std::function<void()> &afterRound);
    /// How many of the transfers have ended since the last call.
    [[nodiscard]] size_t takeEnded();

    const std::unique_ptr<CURLM, void (*)(CURLM *)> m_multi;
};

} // namespace orvane
