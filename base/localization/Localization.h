#pragma once

#include <QHash>
#include <QString>

namespace orvane::Localization {

/// The interface language of the whole process: "ru" or "en". Set on the main thread; read anywhere.
void setLanguage(const QString &code);
[[nodiscard]] bool isEnglish();

/// The text to show for a Russian text of the program: its English twin when the interface is English
/// and it has one, else the text itself. Texts made of pieces are looked up piece by piece.
[[nodiscard]] QString text(const QString &russian);

/// Russian to English, made on first use. Public for the check that no text lacks its twin.
[[nodiscard]] const QHash<QString, QString> &en();

} // namespace orvane::Localization
