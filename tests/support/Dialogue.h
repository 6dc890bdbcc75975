#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvane::test {

/// Two voices that speak English in turn, as a microphone across the room hears them.
class Dialogue
{
public:
    struct Turn
    {
        /// 1 or 2; 1 begins.
        qint64 speaker;
        /// A sound file that ends with a pause.
        QString sound;
    };

    static bool canSpeak();

    /// Makes the sound files in that folder.
    explicit Dialogue(const QString &folder);

    [[nodiscard]] const QList<Turn> &turns() const { return m_turns; }
    /// All turns as one sound file.
    [[nodiscard]] QString joined() const;

    /// Who said that; none when its words are nobody's, or of both.
    [[nodiscard]] static std::optional<qint64> speakerOf(const QString &text);

private:
    const QString m_folder;
    QList<Turn> m_turns;
};

} // namespace orvane::test
