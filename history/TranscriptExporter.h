#pragma once

#include "history/TranscriptRecord.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace orvane {

/// Transcripts as text files. Any thread.
class TranscriptExporter
{
public:
    enum class Format { PlainText, SubRip, Markdown };

    /// ".txt", ".srt" or ".md".
    [[nodiscard]] static QString extension(Format format);

    /// What is exported of a record: the same bytes for whoever exports it, UTF-8. The recognised text
    /// begins with a blank that no file needs.
    [[nodiscard]] static QByteArray exported(Format format, const TranscriptRecord &record);

    /// What a file of that format holds. `baseName` is the heading of the Markdown form; `text` is the
    /// plain form as it stands, and the Markdown form of a transcript without segments.
    [[nodiscard]] static QString content(Format format, const QString &baseName,
                                         const QList<DisplaySegment> &segments, const QString &text,
                                         const SpeakerNames &names = {});

    /// Empty without segments.
    [[nodiscard]] static QString srt(const QList<DisplaySegment> &segments);
    /// "01:02:03,045" for a number of milliseconds; hours are not limited to two digits.
    [[nodiscard]] static QString time(qint64 milliseconds);
    /// Time codes, and a heading wherever the speaker changes.
    [[nodiscard]] static QString markdown(const QString &title, const QList<DisplaySegment> &segments,
                                          const QString &plainText, const SpeakerNames &names = {});
};

} // namespace orvane
