#pragma once

#include <QString>

#include <atomic>
#include <chrono>
#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

class AudioDecoderModule;

/// Turns the first audio track of any audio or video file into samples. Reads that one file only, never
/// what it refers to. Without state but for the decoding module, which is loaded on first use.
/// decode() and duration() take long: call them off the main thread; any number at a time.
class AudioDecoder
{
public:
    /// The module "orvane-decoder" lies in that folder.
    explicit AudioDecoder(const QString &moduleFolder);
    Q_DISABLE_COPY_MOVE(AudioDecoder)

    struct Sound
    {
        /// Mono at 16 kHz, −1…1; never empty.
        std::vector<float> samples;
        /// The length of the samples where much more should have followed: the file is damaged from there
        /// on, or a part of it is missing. None when it was read to its end.
        std::optional<std::chrono::milliseconds> damagedFrom;
    };

    /// The track mixed down. Packets that cannot be decoded and gaps are left out. Throws
    /// AudioDecoderError, and Cancelled soon after a stop is requested.
    [[nodiscard]] Sound decode(const QString &path, const std::stop_token &stop = {}) const;

    /// The length of the track as the file tells, for an estimate; none when unknown for whatever reason.
    [[nodiscard]] std::optional<std::chrono::milliseconds> duration(const QString &path,
                                                                    const std::stop_token &stop = {}) const;

    /// Throws what decode() would throw for a file that cannot be opened or is empty. Does not look into
    /// the file or load the module.
    void requireReadable(const QString &path) const;

private:
    [[nodiscard]] const AudioDecoderModule &loadedModule() const;

    const QString m_moduleFile;
    mutable std::atomic<const AudioDecoderModule *> m_module = nullptr;
};

} // namespace orvane
