#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>

#include <array>

/// The enumerations among the preferences, and the words they are stored as.
namespace orvane {

Q_NAMESPACE

/// What processes texts with a language model: the system's own model, or a downloaded one.
enum class CorrectionEngine { BuiltIn, Local };
Q_ENUM_NS(CorrectionEngine)

/// What becomes of a dictation: its text corrected, an e-mail made of it, or its request carried out.
enum class DictationMode { Correct, Email, Prompt };
Q_ENUM_NS(DictationMode)

/// In the order in which they are offered.
inline constexpr std::array dictationModes = {DictationMode::Correct, DictationMode::Email,
                                              DictationMode::Prompt};

/// The modifier keys of which one, pressed twice, starts a dictation, by their places on the keyboard of the
/// first platform. On Linux the first is the right Ctrl or Super, the second the right Alt (AltGr).
enum class TriggerKey { RightCommand, RightOption };
Q_ENUM_NS(TriggerKey)

/// In the order in which they are offered.
inline constexpr std::array triggerKeys = {TriggerKey::RightCommand, TriggerKey::RightOption};

/// "apple" or "local".
[[nodiscard]] QString storedForm(CorrectionEngine engine);
/// Any word but "local" is the built-in model.
[[nodiscard]] CorrectionEngine correctionEngineFrom(const QString &stored);

/// "correct", "email" or "prompt".
[[nodiscard]] QString storedForm(DictationMode mode);
/// An unknown word is Correct.
[[nodiscard]] DictationMode dictationModeFrom(const QString &stored);

/// "rcmd" or "ropt".
[[nodiscard]] QString storedForm(TriggerKey key);
/// Any word but "ropt" is RightCommand.
[[nodiscard]] TriggerKey triggerKeyFrom(const QString &stored);

} // namespace orvane
