#pragma once

#include <QString>

namespace orvane {

/// Markdown as HTML to read: with room between its paragraphs, lists and headings, which are no larger than
/// the titles of pages. Links and pictures stay text.
[[nodiscard]] QString htmlOfMarkdown(const QString &markdown);

} // namespace orvane
