#include "dictation/DictatedText.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr size_t settlingDistance = 20 * sampleRate;

/// Dots are how the engine says that a sentence is not over: it goes on with what is joined to it.
QString withoutDots(const QString &text)
{
    static const QRegularExpression dots(u"(\\.{2,}|…)?\\s*$"_s);
    return QString(text).remove(dots);
}

/// Whether words are written with spaces between them.
bool isSpaced(QChar letter)
{
    switch (letter.script()) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Thai:
    case QChar::Script_Lao:
    case QChar::Script_Khmer:
    case QChar::Script_Myanmar:
        return false;
    default:
        return !letter.isSpace();
    }
}

QString joined(const QString &text, const QString &next)
{
    const bool touch = !text.isEmpty() && !next.isEmpty() && isSpaced(text.back()) && isSpaced(next.front());
    return touch ? text + u' ' + next : text + next;
}

} // namespace

void DictatedText::add(size_t end, const QString &text)
{
    m_heard.push_back({.end = end, .text = text});
    m_live = {.settled = m_settled.trimmed(), .unsettled = text.trimmed()};
}

void DictatedText::settle(size_t heard, const std::vector<PauseDetector::Pause> &pauses)
{
    const bool isTooMuch = heard - m_begin > window;
    const auto isFinal = [&](const Heard &text) { return isTooMuch || text.end + settlingDistance < heard; };
    const auto final = std::find_if(m_heard.rbegin(), m_heard.rend(), isFinal);
    if (final == m_heard.rend())
        return;
    const auto endsBefore = [end = final->end](const auto &pause) { return pause.begin < end; };
    const auto pause = std::find_if(pauses.rbegin(), pauses.rend(), endsBefore);
    if (pause == pauses.rend())
        return;
    m_settled = withoutDots(joined(m_settled, final->text));
    m_begin = pause->middle();
    m_heard.clear();
}

std::optional<QString> DictatedText::whole(size_t speechEnd) const
{
    if (!m_heard.empty() && m_heard.back().end >= speechEnd)
        return joined(m_settled, m_heard.back().text).trimmed();
    if (m_begin > speechEnd)
        return m_settled.trimmed();
    return std::nullopt;
}

} // namespace orvane
