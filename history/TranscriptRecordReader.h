#pragma once

#include "history/TranscriptRecord.h"

#include <QByteArrayView>

#include <memory>
#include <optional>

namespace orvane {

/// Reads records from their JSON form. One reader serves many records, one at a time, and reuses its
/// memory: give each thread its own.
class TranscriptRecordReader
{
public:
    TranscriptRecordReader();
    ~TranscriptRecordReader();
    Q_DISABLE_COPY_MOVE(TranscriptRecordReader)

    /// None when the text is not JSON, lacks a required key, or holds a value of a wrong type or an unknown
    /// word where only certain words are known. Unknown keys are passed over; null stands for absent.
    [[nodiscard]] std::optional<TranscriptRecord> read(QByteArrayView json);

private:
    struct Parser;
    const std::unique_ptr<Parser> m_parser;
};

} // namespace orvane
