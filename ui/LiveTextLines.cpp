#include "ui/LiveTextLines.h"

#include <QTextLayout>
#include <QTextOption>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// A line of the text, without the space that it ends with.
struct Piece
{
    qsizetype begin;
    qsizetype length;
};

QList<Piece> broken(const QString &text, const QFont &font, qreal width)
{
    QTextLayout layout(text, font);
    QTextOption option;
    option.setUseDesignMetrics(true); // as the scene does
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QList<Piece> pieces;
    if (text.isEmpty())
        return pieces; // instead of an empty line
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        pieces.append({line.textStart(), line.textLength()});
    }
    layout.endLayout();
    return pieces;
}

} // namespace

LiveTextLines::LiveTextLines(const QFont &font, qreal width, qsizetype count)
    : m_font(font),
      m_width(width),
      m_count(count)
{}

void LiveTextLines::setText(const LiveText &text)
{
    const QString settled = text.settled.simplified();
    const QString unsettled = text.unsettled.simplified();
    // What is settled and out of sight need not be laid out again.
    if (!settled.startsWith(m_settled))
        m_begin = 0;
    m_settled = settled;

    const QString gap = settled.isEmpty() || unsettled.isEmpty() ? QString() : u" "_s;
    const QString visible = settled.sliced(m_begin) + gap + unsettled;
    const qsizetype border = settled.size() - m_begin;
    const QList<Piece> pieces = broken(visible, m_font, m_width);
    const qsizetype first = std::max<qsizetype>(0, pieces.size() - m_count);
    m_lines.clear();
    for (qsizetype i = first; i < pieces.size(); ++i) {
        const auto [begin, length] = pieces.at(i);
        const qsizetype ofSettled = std::clamp<qsizetype>(border - begin, 0, length);
        m_lines.append({.settled = visible.sliced(begin, ofSettled).trimmed(),
                        .unsettled = visible.sliced(begin + ofSettled, length - ofSettled).trimmed()});
    }
    m_isCut = m_begin > 0 || first > 0;
    if (first < pieces.size() && pieces.at(first).begin <= border)
        m_begin += pieces.at(first).begin;
}

} // namespace orvane
