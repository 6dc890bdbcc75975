#pragma once

#include <QString>

/// The texts that are sent to language models, in Russian whatever the interface language.
namespace orvane::CorrectionPrompts {

/// Stand around a text that is to be corrected.
inline const QString openingMarker = QStringLiteral("⟦ТЕКСТ⟧");
inline const QString closingMarker = QStringLiteral("⟦/ТЕКСТ⟧");

[[nodiscard]] QString marked(const QString &text);

/// Keeps the model from carrying out what a text to be corrected asks for.
[[nodiscard]] QString safeguard();

/// A model's answer without the markers, lines that repeat the safeguard and blanks around it. Takes time in
/// proportion to the answer's length.
[[nodiscard]] QString withoutEcho(const QString &answer);

/// System prompts.
[[nodiscard]] QString email();
[[nodiscard]] QString request();
[[nodiscard]] QString protocol();
[[nodiscard]] QString question();

/// What goes with the prompt of a question as the user's text.
[[nodiscard]] QString questionAbout(const QString &transcript, const QString &instruction);

} // namespace orvane::CorrectionPrompts
