#pragma once

#include <QStringView>

#include <span>

namespace orvane::Localization {

/// A text of the program and its English twin. Both have the same placeholders and the same blanks at
/// their ends, so that either fits where it is used.
struct TextPair
{
    QStringView russian;
    QStringView english;
};

/// Every pair, grouped by the area that shows it; no Russian text stands twice.
[[nodiscard]] std::span<const TextPair> table();

} // namespace orvane::Localization
