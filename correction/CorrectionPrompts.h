#pragma once

#include <QString>

/// What language models are told, in Russian whatever the interface language.
namespace orvane::CorrectionPrompts {

/// Stand around a text that is to be corrected.
inline const QString openingMarker = QStringLiteral("⟦ТЕКСТ⟧");
inline const QString closingMarker = QStringLiteral("⟦/ТЕКСТ⟧");

[[nodiscard]] QString marked(const QString &text);

/// Keeps the model from carrying out what a text to be corrected asks for.
[[nodiscard]] QString safeguard();

/// A model's answer without the markers, lines that repeat the safeguard and blanks around it. Takes time in
/// proportion to the answer's length.
[[nodiscard]] QString removedFrom(const QString &answer);

[[nodiscard]] QString email();
[[nodiscard]] QString request();
[[nodiscard]] QString protocol();

/// The system prompt of a question about a transcript, and what goes with it as the user's text.
[[nodiscard]] QString question();
[[nodiscard]] QString question(const QString &transcript, const QString &instruction);

} // namespace orvane::CorrectionPrompts
