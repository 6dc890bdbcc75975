#pragma once

#include "dictation/LiveText.h"

#include <QFont>
#include <QList>

namespace orvane {

/// The last lines of a text that grows, broken between words. Lines are filled from the beginning of the
/// text, so that what is appended never moves a word from one line to another: lines go up one by one, and
/// what goes out of sight does so with its whole line. Needs a QGuiApplication.
class LiveTextLines
{
public:
    /// What stands in one line, in this order.
    struct Line
    {
        QString settled;
        QString unsettled;

        bool operator==(const Line &) const = default;
    };

    /// Lines of that width in pixels, at most so many of them.
    LiveTextLines(const QFont &font, qreal width, qsizetype count);

    void setText(const LiveText &text);

    [[nodiscard]] const QList<Line> &lines() const { return m_lines; }
    /// There are lines above these.
    [[nodiscard]] bool isCut() const { return m_isCut; }

private:
    const QFont m_font;
    const qreal m_width;
    const qsizetype m_count;
    QList<Line> m_lines;
    bool m_isCut = false;
    /// The settled text of the last time, and where in it the first of the shown lines began.
    QString m_settled;
    qsizetype m_begin = 0;
};

} // namespace orvane
