#pragma once

#include <QString>

#include <exception>

namespace orvane {

/// What keeps a dictation from its end, and what the user can do about it, in the interface language.
struct Advice
{
    QString title;
    QString detail;

    /// There is nothing to recognise speech with.
    [[nodiscard]] static Advice onMissingModel();
    /// The microphone does not record, for that reason.
    [[nodiscard]] static Advice onFailedRecording(const std::exception &reason);
    /// There is nothing to process the text with, in a mode that asks for it.
    [[nodiscard]] static Advice onMissingLanguageModel();
};

} // namespace orvane
