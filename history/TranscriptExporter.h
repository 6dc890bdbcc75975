#pragma once

#include "base/Error.h"
#include "transcript/DisplaySegment.h"

#include <QList>
#include <QString>

namespace orvane {

/// Transcripts as text files. Any thread.
class TranscriptExporter
{
public:
    enum class Format { PlainText, SubRip, Markdown };

    class ExportError : public Error
    {
    public:
        enum class Kind { NotSaved };

        explicit ExportError(const QString &reason);
        [[nodiscard]] Kind kind() const { return Kind::NotSaved; }
    };

    /// ".txt", ".srt" or ".md".
    [[nodiscard]] static QString extension(Format format);

    /// What a file of that format holds. `baseName` is the heading of the Markdown form; `text` is the
    /// plain form as it stands, and the Markdown form of a transcript without segments.
    [[nodiscard]] static QString content(Format format, const QString &baseName,
                                         const QList<DisplaySegment> &segments, const QString &text);

    /// Empty without segments.
    [[nodiscard]] static QString srt(const QList<DisplaySegment> &segments);
    /// "01:02:03,045" for a number of milliseconds; hours are not limited to two digits.
    [[nodiscard]] static QString time(qint64 milliseconds);
    /// Time codes, and a heading wherever the speaker changes.
    [[nodiscard]] static QString markdown(const QString &title, const QList<DisplaySegment> &segments,
                                          const QString &plainText);

    /// Writes the content in UTF-8: the whole file or, with ExportError, nothing; an existing file is
    /// replaced. Waits for the disk: not for the main thread of an application with windows.
    static void save(const QString &path, const QString &content);
};

} // namespace orvane
