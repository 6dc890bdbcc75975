#include "SourceTexts.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

class Scanner
{
public:
    Scanner(const QString &source, SourceLanguage language)
        : m_source(source),
          m_qml(language == SourceLanguage::Qml)
    {}

    QList<SourceText> run()
    {
        scanCode({});
        return m_texts;
    }

private:
    [[nodiscard]] bool atEnd() const { return m_position >= m_source.size(); }
    [[nodiscard]] QChar peek(qsizetype ahead = 0) const
    {
        return m_position + ahead < m_source.size() ? m_source[m_position + ahead] : QChar();
    }
    [[nodiscard]] bool sees(QStringView text) const
    {
        return QStringView(m_source).sliced(m_position).startsWith(text);
    }
    QChar take()
    {
        const QChar taken = m_source[m_position++];
        if (taken == u'\n')
            ++m_line;
        return taken;
    }
    void skip(qsizetype count)
    {
        while (count-- > 0 && !atEnd())
            take();
    }

    static bool startsName(QChar c) { return c.isLetter() || c == u'_'; }
    static bool continuesName(QChar c) { return c.isLetterOrNumber() || c == u'_'; }

    void scanCode(QChar closing);
    void scanName();
    void scanNumber();
    bool skipComment();
    void scanLiteral(QChar quote);
    void scanRawLiteral();
    void scanTemplate();
    void skipCharacter();
    QString takeEscape();
    void add(const QString &text, int line);

    const QString m_source;
    const bool m_qml;
    qsizetype m_position = 0;
    int m_line = 1;
    bool m_joins = false; // only blanks and comments since the last literal
    QList<SourceText> m_texts;
};

// Up to the closing brace of a template's expression, or to the end.
void Scanner::scanCode(QChar closing)
{
    int depth = 0;
    while (!atEnd()) {
        const QChar c = peek();
        if (c.isSpace()) {
            take();
        } else if (skipComment()) {
            continue;
        } else if (c == u'"' || (m_qml && c == u'\'')) {
            scanLiteral(c);
        } else if (m_qml && c == u'`') {
            scanTemplate();
        } else if (c == u'\'') {
            skipCharacter();
        } else if (startsName(c)) {
            scanName();
        } else if (c.isDigit()) {
            scanNumber();
        } else {
            m_joins = false;
            if (!closing.isNull() && c == closing && depth == 0)
                return;
            depth += c == u'{' ? 1 : c == u'}' ? -1 : 0;
            take();
        }
    }
}

// A name, or the prefix of a literal: u, U, L, u8, each possibly with R.
void Scanner::scanName()
{
    QString name;
    while (!atEnd() && continuesName(peek()))
        name += take();
    if (!m_qml && peek() == u'"' && name.size() <= 3 && name.endsWith(u'R')) {
        scanRawLiteral();
        return;
    }
    const bool prefix = name == u"u"_s || name == u"U"_s || name == u"L"_s || name == u"u8"_s;
    if (prefix && !m_qml && (peek() == u'"' || peek() == u'\''))
        return; // the literal comes next and may join
    m_joins = false;
}

// Takes the separators of 1'000 along, which would look like characters.
void Scanner::scanNumber()
{
    m_joins = false;
    while (!atEnd() && (continuesName(peek()) || (!m_qml && peek() == u'\'' && continuesName(peek(1)))))
        take();
}

bool Scanner::skipComment()
{
    if (sees(u"//")) {
        while (!atEnd() && peek() != u'\n')
            take();
        return true;
    }
    if (!sees(u"/*"))
        return false;
    skip(2);
    while (!atEnd() && !sees(u"*/"))
        take();
    skip(2);
    return true;
}

void Scanner::skipCharacter()
{
    m_joins = false;
    take();
    while (!atEnd() && peek() != u'\'' && peek() != u'\n')
        skip(peek() == u'\\' ? 2 : 1);
    skip(1);
}

void Scanner::scanLiteral(QChar quote)
{
    const int line = m_line;
    take();
    QString text;
    while (!atEnd() && peek() != quote && peek() != u'\n')
        text += peek() == u'\\' ? takeEscape() : QString(take());
    skip(1);
    while (!atEnd() && !m_qml && continuesName(peek())) // the suffix _s
        take();
    add(text, line);
}

void Scanner::scanRawLiteral()
{
    const int line = m_line;
    take();
    QString delimiter;
    while (!atEnd() && peek() != u'(')
        delimiter += take();
    skip(1);
    const QString end = u')' + delimiter + u'"';
    QString text;
    while (!atEnd() && !sees(end))
        text += take();
    skip(end.size());
    while (!atEnd() && continuesName(peek()))
        take();
    add(text, line);
}

void Scanner::scanTemplate()
{
    m_joins = false;
    int line = m_line;
    take();
    QString text;
    while (!atEnd() && peek() != u'`') {
        if (!sees(u"${")) {
            text += peek() == u'\\' ? takeEscape() : QString(take());
            continue;
        }
        add(text, line);
        text.clear();
        m_joins = false;
        skip(2);
        scanCode(u'}');
        skip(1);
        m_joins = false;
        line = m_line;
    }
    skip(1);
    add(text, line);
    m_joins = false;
}

QString Scanner::takeEscape()
{
    take();
    if (atEnd())
        return {};
    const QChar kind = take();
    const qsizetype digits = kind == u'u' ? 4 : kind == u'U' ? 8 : kind == u'x' ? 2 : 0;
    if (digits > 0) {
        const bool braces = peek() == u'{';
        const qsizetype length = braces ? m_source.indexOf(u'}', m_position) - m_position - 1 : digits;
        const char32_t code =
            QStringView(m_source).mid(m_position + (braces ? 1 : 0), length).toUInt(nullptr, 16);
        skip(length + (braces ? 2 : 0));
        return QString::fromUcs4(&code, 1);
    }
    switch (kind.unicode()) {
    case u'n':
        return u"\n"_s;
    case u't':
        return u"\t"_s;
    case u'r':
        return u"\r"_s;
    case u'0':
        return QString(QChar(0));
    case u'\n': // the line goes on
        return {};
    default:
        return kind;
    }
}

void Scanner::add(const QString &text, int line)
{
    if (m_joins && !m_qml)
        m_texts.last().text += text;
    else
        m_texts.append({text, line});
    m_joins = true;
}

} // namespace

QList<SourceText> stringLiterals(const QString &source, SourceLanguage language)
{
    return Scanner(source, language).run();
}

} // namespace orvane
