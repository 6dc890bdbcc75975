#pragma once

#include "transcript/RawSegment.h"

#include <QList>
#include <QString>

namespace orvane {

/// What the speech engine heard.
struct RecognisedSpeech
{
    QList<RawSegment> segments;
    /// What it was heard as, in a form that a request takes too; empty when the engine does not say.
    QString language;

    bool operator==(const RecognisedSpeech &) const = default;
};

} // namespace orvane
