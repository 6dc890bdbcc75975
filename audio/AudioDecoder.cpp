#include "audio/AudioDecoder.h"

#include "audio/AudioDecoderError.h"
#include "audio/MediaFile.h"
#include "audio/SampleBuffer.h"
#include "audio/SampleRate.h"
#include "audio/decoding/AudioDecoderModule.h"
#include "base/localization/Localization.h"

#include <QLibrary>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

[[noreturn]] void throwFailure(const DecodingResult &result, bool isTooLong)
{
    const QString detail = QString::fromUtf8(result.detail.data());
    switch (result.outcome) {
    case DecodingOutcome::Cancelled:
        throw Cancelled();
    case DecodingOutcome::NotMedia:
        throw AudioDecoderError::couldNotOpen(
            Localization::text(u"это не аудио и не видео, или файл повреждён"));
    case DecodingOutcome::RefersElsewhere:
        throw AudioDecoderError::couldNotOpen(Localization::text(u"в нём только ссылки на другие файлы"));
    case DecodingOutcome::NoAudioTrack:
        throw AudioDecoderError::noAudioTrack();
    case DecodingOutcome::UnknownCodec:
        throw AudioDecoderError::conversionFailed(Localization::text(u"формат звука не поддерживается: ") +
                                                  detail);
    case DecodingOutcome::NotConfigured:
        throw AudioDecoderError::conversionFailed(Localization::text(u"не удалось настроить чтение дорожки"));
    case DecodingOutcome::NotStarted:
        throw AudioDecoderError::conversionFailed(Localization::text(u"не удалось начать чтение"));
    case DecodingOutcome::Damaged:
        throw AudioDecoderError::conversionFailed(Localization::text(u"данные повреждены"));
    case DecodingOutcome::NoRoom:
        throw AudioDecoderError::conversionFailed(isTooLong ? Localization::text(u"запись длиннее 37 часов")
                                                            : Localization::text(u"не хватило памяти"));
    case DecodingOutcome::Decoded:
    case DecodingOutcome::NoSamples:
        break;
    }
    throw AudioDecoderError::noSamples();
}

} // namespace

AudioDecoder::AudioDecoder(const QString &moduleFolder) : m_moduleFile(moduleFolder + u"/orvane-decoder"_s) {}

AudioDecoder::Sound AudioDecoder::decode(const QString &path, const std::stop_token &stop) const
{
    throwIfCancelled(stop);
    MediaFile file(path, stop);
    SampleBuffer samples;
    const DecodingResult result = loadedModule().decode(file, samples);
    throwIfCancelled(stop);
    if (file.hasFailed())
        throw AudioDecoderError::conversionFailed(Localization::text(u"ошибка чтения"));
    if (result.outcome != DecodingOutcome::Decoded)
        throwFailure(result, samples.isTooLong());
    try {
        Sound sound{.samples = samples.take(), .damagedFrom = std::nullopt};
        if (result.isCutShort)
            sound.damagedFrom = std::chrono::milliseconds(qint64(sound.samples.size()) * 1000 / sampleRate);
        return sound;
    } catch (const std::bad_alloc &) {
        throw AudioDecoderError::conversionFailed(Localization::text(u"не хватило памяти"));
    }
}

std::optional<std::chrono::milliseconds> AudioDecoder::duration(const QString &path,
                                                                const std::stop_token &stop) const
{
    try {
        MediaFile file(path, stop);
        const std::chrono::milliseconds length(loadedModule().duration(file));
        return length.count() < 0 ? std::nullopt : std::optional(length);
    } catch (const AudioDecoderError &) {
        return std::nullopt;
    }
}

void AudioDecoder::requireReadable(const QString &path) const
{
    const MediaFile opened(path, {});
}

const AudioDecoderModule &AudioDecoder::loadedModule() const
{
    if (const AudioDecoderModule *loaded = m_module)
        return *loaded;
    // Loading twice at the same time gives the same module; it stays for the life of the program.
    const auto entry = reinterpret_cast<AudioDecoderModuleEntry *>(
        QLibrary::resolve(m_moduleFile, audioDecoderModuleEntryName));
    if (!entry) {
        throw AudioDecoderError::couldNotOpen(
            Localization::text(u"модуль декодирования не загрузился; переустановите программу"));
    }
    m_module = entry();
    return *m_module;
}

} // namespace orvane
