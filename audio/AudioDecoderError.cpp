#include "audio/AudioDecoderError.h"

#include "base/localization/Localization.h"

namespace orvane {

AudioDecoderError AudioDecoderError::couldNotOpen(const QString &reason)
{
    return {Kind::couldNotOpen, Localization::text(u"Не удалось открыть файл: ") + reason};
}

AudioDecoderError AudioDecoderError::conversionFailed(const QString &reason)
{
    return {Kind::conversionFailed, Localization::text(u"Ошибка декодирования аудио: ") + reason};
}

AudioDecoderError AudioDecoderError::noAudioTrack()
{
    return {Kind::noAudioTrack, Localization::text(u"В файле нет аудиодорожки.")};
}

AudioDecoderError AudioDecoderError::noSamples()
{
    return {Kind::noSamples, Localization::text(u"В файле не найдено аудиоданных.")};
}

} // namespace orvane
