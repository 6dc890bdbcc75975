#include "ui/presentation/SegmentList.h"

#include "base/localization/Localization.h"
#include "ui/presentation/Spans.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

SegmentList::SegmentList(QObject *parent) : CountedModel(parent) {}

void SegmentList::setSegments(const QList<TranscriptRecord::Segment> &segments, const SpeakerNames &names)
{
    if (m_segments == segments) {
        if (std::exchange(m_names, names) != names)
            relabel();
        return;
    }
    beginResetModel();
    m_segments = segments;
    m_names = names;
    m_hasSpeakers =
        std::ranges::any_of(segments, [](const auto &segment) { return segment.speaker.has_value(); });
    findHits();
    endResetModel();
    Q_EMIT countChanged();
}

void SegmentList::relabel()
{
    if (!m_segments.isEmpty())
        Q_EMIT dataChanged(index(0), index(count() - 1), {SpeakerNameRole});
}

void SegmentList::find(const QString &words)
{
    m_wanted = words.simplified();
    findHits();
    if (!m_segments.isEmpty())
        Q_EMIT dataChanged(index(0), index(count() - 1), {MarkedRole});
}

void SegmentList::findHits()
{
    findHits(m_wanted.isEmpty() ? QStringList() : QStringList(m_wanted));
    if (m_hits.isEmpty() && m_wanted.contains(u' '))
        findHits(m_wanted.split(u' '));
}

void SegmentList::findHits(const QStringList &words)
{
    m_words = words;
    m_hits.clear();
    for (int i = 0; i < m_segments.size() && !words.isEmpty(); ++i) {
        const QString &text = m_segments.at(i).text;
        if (std::ranges::any_of(
                words, [&](const QString &word) { return text.contains(word, Qt::CaseInsensitive); }))
            m_hits.append(i);
    }
}

QString SegmentList::speakerName(qint64 number) const
{
    return m_names.value(number, Localization::text(u"Спикер") + u' ' + QString::number(number));
}

int SegmentList::at(qint64 milliseconds) const
{
    const auto next =
        std::ranges::upper_bound(m_segments, milliseconds, {}, &TranscriptRecord::Segment::start);
    return int(next - m_segments.begin()) - 1;
}

int SegmentList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_segments.size());
}

QVariant SegmentList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count())
        return {};
    const TranscriptRecord::Segment &segment = m_segments.at(index.row());
    switch (role) {
    case TimeRole:
        return Spans::clock(segment.start);
    case SpeakerRole:
        return int(segment.speaker.value_or(0));
    case SpeakerNameRole:
        return segment.speaker ? speakerName(*segment.speaker) : QString();
    case TextRole:
        return segment.text.trimmed();
    case MarkedRole:
        return marked(segment.text.trimmed(), m_words);
    case StartRole:
        return int(segment.start);
    default:
        return {};
    }
}

QHash<int, QByteArray> SegmentList::roleNames() const
{
    return {{TimeRole, "time"}, {SpeakerRole, "speaker"}, {SpeakerNameRole, "speakerName"},
            {TextRole, "text"}, {MarkedRole, "marked"},   {StartRole, "startMs"}};
}

QString SegmentList::marked(const QString &text, const QStringList &words)
{
    QString html;
    qsizetype from = 0;
    while (true) {
        qsizetype first = -1;
        qsizetype length = 0;
        for (const QString &word : words) {
            const qsizetype hit = text.indexOf(word, from, Qt::CaseInsensitive);
            if (hit >= 0 && (first < 0 || hit < first)) {
                first = hit;
                length = word.size();
            }
        }
        if (first < 0)
            return from == 0 ? QString() : html + text.sliced(from).toHtmlEscaped();
        html += text.sliced(from, first - from).toHtmlEscaped() + u"<b>"_s +
                text.sliced(first, length).toHtmlEscaped() + u"</b>"_s;
        from = first + length;
    }
}

} // namespace orvane
