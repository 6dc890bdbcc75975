#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace orvane {

/// A list of texts kept in a file. A line that starts with "#" gives the reason for the texts after it, up
/// to the next one; every other line is one text in double quotes, written as a C++ literal. Quotes
/// followed by "…" stand for every text that starts so.
class TextList
{
public:
    explicit TextList(const QString &file);

    /// What is wrong with the file, one line each.
    [[nodiscard]] const QStringList &faults() const { return m_faults; }

    /// True for a text of the list; the entry then counts as used.
    bool covers(const QString &text);
    /// The entries that covered nothing so far.
    [[nodiscard]] QStringList unused() const;

private:
    void read(const QString &line, int number);

    QSet<QString> m_texts;
    QSet<QString> m_beginnings;
    QSet<QString> m_used;
    QStringList m_faults;
    bool m_hasReason = false;
};

} // namespace orvane
