#include "TextList.h"

#include "SourceTexts.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace orvane {

TextList::TextList(const QString &file)
{
    QFile list(file);
    if (!list.open(QFile::ReadOnly)) {
        m_faults << u"%1 cannot be read"_s.arg(file);
        return;
    }
    int number = 0;
    for (const QString &line : QString::fromUtf8(list.readAll()).split(u'\n'))
        read(line.trimmed(), ++number);
}

void TextList::read(const QString &line, int number)
{
    if (line.isEmpty())
        return;
    if (line.startsWith(u'#')) {
        m_hasReason = true;
        return;
    }
    const bool beginning = line.endsWith(u"\"…"_s);
    const QList<SourceText> texts = stringLiterals(beginning ? line.chopped(1) : line, SourceLanguage::Cpp);
    if (texts.size() != 1 || !line.startsWith(u'"') || !(beginning || line.endsWith(u'"')))
        m_faults << u"line %1 is not one text in quotes"_s.arg(number);
    else if (!m_hasReason)
        m_faults << u"line %1 has no reason above it"_s.arg(number);
    else if (m_texts.contains(texts.first().text) || m_beginnings.contains(texts.first().text))
        m_faults << u"line %1 repeats a text"_s.arg(number);
    else
        (beginning ? m_beginnings : m_texts).insert(texts.first().text);
}

bool TextList::covers(const QString &text)
{
    if (m_texts.contains(text)) {
        m_used.insert(text);
        return true;
    }
    for (const QString &beginning : m_beginnings) {
        if (text.startsWith(beginning)) {
            m_used.insert(beginning);
            return true;
        }
    }
    return false;
}

QStringList TextList::unused() const
{
    return (m_texts + m_beginnings - m_used).values();
}

} // namespace orvane
