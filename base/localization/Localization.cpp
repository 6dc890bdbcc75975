#include "base/localization/Localization.h"

#include <algorithm>
#include <array>
#include <atomic>

using namespace Qt::StringLiterals;

namespace orvane::Localization {

namespace {

std::atomic<bool> s_english = false;

/// Placeholders and the blanks at the ends: either text has to fit where it is used.
constexpr bool isFormedAlike(const TextPair &pair)
{
    const auto count = [](std::u16string_view text, std::u16string_view piece) {
        int found = 0;
        for (auto at = text.find(piece); at != std::u16string_view::npos; at = text.find(piece, at + 1))
            ++found;
        return found;
    };
    const auto isBlank = [](char16_t c) { return c == u' ' || c == u'\n'; };
    for (const std::u16string_view placeholder : {u"%1", u"%2", u"%3"}) {
        if (count(pair.russian, placeholder) != count(pair.english, placeholder))
            return false;
    }
    return !pair.english.empty() && isBlank(pair.russian.front()) == isBlank(pair.english.front()) &&
           isBlank(pair.russian.back()) == isBlank(pair.english.back());
}

consteval bool isEachTextThereOnce()
{
    std::array<std::u16string_view, std::size(table)> texts;
    std::ranges::transform(table, texts.begin(), &TextPair::russian);
    std::ranges::sort(texts, [](std::u16string_view one, std::u16string_view other) {
        return one.size() != other.size() ? one.size() < other.size() : one < other;
    });
    return std::ranges::adjacent_find(texts) == texts.end();
}

static_assert(std::ranges::all_of(table, isFormedAlike));
static_assert(isEachTextThereOnce());

QString stringOf(std::u16string_view text)
{
    return QString::fromRawData(reinterpret_cast<const QChar *>(text.data()), qsizetype(text.size()));
}

} // namespace

void setLanguage(const QString &code)
{
    s_english = code == "en"_L1;
}

bool isEnglish()
{
    return s_english;
}

QString Text::toString() const
{
    return stringOf(isEnglish() ? m_pair->english : m_pair->russian);
}

QString text(Text text)
{
    return text.toString();
}

QString translated(const QString &russian, std::span<const TextPair> ownPairs)
{
    if (!isEnglish())
        return russian;
    const std::u16string_view wanted(reinterpret_cast<const char16_t *>(russian.utf16()),
                                     size_t(russian.size()));
    for (const std::span<const TextPair> pairs : {ownPairs, std::span<const TextPair>(table)}) {
        if (const auto found = std::ranges::find(pairs, wanted, &TextPair::russian); found != pairs.end())
            return stringOf(found->english);
    }
    return russian;
}

} // namespace orvane::Localization
