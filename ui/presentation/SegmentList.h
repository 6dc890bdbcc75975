#pragma once

#include "history/TranscriptRecord.h"
#include "ui/presentation/ListModel.h"

namespace orvane {

/// The segments of the record that is open, for a view that shows some of many; where words are that the user
/// looks for, and which segment is heard at a time. Main thread.
class SegmentList : public CountedModel
{
    Q_OBJECT

public:
    explicit SegmentList(QObject *parent = nullptr);

    void setSegments(const QList<TranscriptRecord::Segment> &segments, const SpeakerNames &names);
    /// The interface language is another.
    void relabel();
    [[nodiscard]] bool hasSpeakers() const { return m_hasSpeakers; }
    /// What the speaker with that number is called.
    [[nodiscard]] QString speakerName(qint64 number) const;

    /// Marks the words wherever they stand, in whatever case: together, or each of them where they never
    /// stand together. Empty ends it.
    void find(const QString &words);
    /// The rows that hold them, in order.
    [[nodiscard]] const QList<int> &hits() const { return m_hits; }
    /// The segment heard at that time, or the last one before; −1 before the first.
    [[nodiscard]] int at(qint64 milliseconds) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// A text as HTML with the words in bold; empty when they are not in it.
    [[nodiscard]] static QString marked(const QString &text, const QStringList &words);

private:
    void findHits();
    void findHits(const QStringList &words);

    enum Role { TimeRole = Qt::UserRole, SpeakerRole, SpeakerNameRole, TextRole, MarkedRole, StartRole };

    QList<TranscriptRecord::Segment> m_segments;
    SpeakerNames m_names;
    bool m_hasSpeakers = false;
    QString m_wanted;
    QStringList m_words;
    QList<int> m_hits;
};

} // namespace orvane
