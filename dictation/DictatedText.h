#pragma once

#include "dictation/LiveText.h"
#include "dictation/PauseDetector.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// What has been recognised of a recording, in parts that read as one text. Positions are numbers of samples
/// from the beginning of the recording.
class DictatedText
{
public:
    /// As much as the model takes in at once, with something to spare.
    static constexpr size_t window = 28 * sampleRate;

    /// Where that begins which is not settled.
    [[nodiscard]] size_t begin() const { return m_begin; }

    /// That text, as the engine gave it, was heard from begin() to `end`.
    void add(size_t end, const QString &text);

    /// Makes a text that ends in one of the pauses final when the speech is far enough by now that what
    /// comes will not change it, or when more than a window is not settled. begin() is then the middle of
    /// that pause.
    void settle(size_t heard, const std::vector<PauseDetector::Pause> &pauses);

    /// The text of everything, when what was heard last reaches the end of the speech; else nothing.
    [[nodiscard]] std::optional<QString> whole(size_t speechEnd) const;

    /// As of the last text that was added.
    [[nodiscard]] const LiveText &live() const { return m_live; }

private:
    struct Heard
    {
        size_t end;
        QString text;
    };

    size_t m_begin = 0;
    QString m_settled;
    std::vector<Heard> m_heard; // from m_begin on, the longest last
    LiveText m_live;
};

} // namespace orvane
