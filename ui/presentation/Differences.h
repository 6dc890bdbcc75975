#pragma once

#include <QList>
#include <QString>

namespace orvane {

/// A piece of a text and of the text that was made of it, side by side.
struct Difference
{
    /// As HTML: escaped, with the words that are in one of the two alone marked by <s> or <b>.
    QString before;
    QString after;

    bool operator==(const Difference &) const = default;
};

/// The two texts in pieces of some sentences that stand for each other. Words are compared as they stand;
/// what is alike for long enough joins the pieces. Takes time in the order of the texts' length times what
/// differs: off the main thread for long ones.
[[nodiscard]] QList<Difference> differencesOf(const QString &before, const QString &after);

} // namespace orvane
