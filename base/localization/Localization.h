#pragma once

#include "base/localization/LocalizationTable.h"

#include <QString>

#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>

namespace orvane::Localization {

/// Not defined: a call that is met while the program is compiled tells that a text lacks its translation.
void thisTextIsNotInTheTable();

/// A text that the user reads, written in Russian and translated in the table; one that is not there does not
/// compile. Texts made of pieces are looked up piece by piece.
class Text
{
public:
    template <std::size_t Size>
    // NOLINTNEXTLINE(google-explicit-constructor): a literal is a text
    consteval Text(const char16_t (&russian)[Size]) : m_pair(found({russian, Size - 1}))
    {}

    /// In the interface language.
    [[nodiscard]] QString toString() const;

    bool operator==(const Text &) const = default;

private:
    static consteval const TextPair *found(std::u16string_view russian)
    {
        for (const TextPair &pair : table) {
            if (pair.russian == russian)
                return &pair;
        }
        thisTextIsNotInTheTable();
        return nullptr;
    }

    const TextPair *m_pair;
};

/// The interface language of the whole process: "ru" or "en". Set on the main thread; read anywhere.
void setLanguage(const QString &code);
[[nodiscard]] bool isEnglish();

/// The text in the interface language.
[[nodiscard]] QString text(Text text);
/// The same of a text that is known only when it is shown, as those of scenes are, whose own pairs are looked
/// at first; as it stands when there is no such text.
[[nodiscard]] QString translated(const QString &russian, std::span<const TextPair> ownPairs);

} // namespace orvane::Localization
