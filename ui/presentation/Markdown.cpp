#include "ui/presentation/Markdown.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>

namespace orvane {

namespace {

// Pixels.
constexpr int headingSize = 16;
constexpr int aboveHeading = 18;
constexpr int belowHeading = 6;
constexpr int belowParagraph = 10;
constexpr int belowItem = 4;

void layOut(const QTextBlock &block)
{
    QTextCursor cursor(block);
    QTextBlockFormat format = block.blockFormat();
    const bool isHeading = format.headingLevel() > 0;
    const bool isFirst = !block.previous().isValid();
    format.setTopMargin(isHeading && !isFirst ? aboveHeading : 0);
    format.setHeadingLevel(0); // whose size HTML decides
    format.setBottomMargin(isHeading ? belowHeading : block.textList() ? belowItem : belowParagraph);
    cursor.setBlockFormat(format);
    cursor.select(QTextCursor::BlockUnderCursor);
    if (isHeading) {
        QTextCharFormat font;
        font.setProperty(QTextFormat::FontPixelSize, headingSize);
        font.setFontWeight(QFont::DemiBold);
        cursor.setCharFormat(font);
    }
}

} // namespace

QString htmlOfMarkdown(const QString &markdown)
{
    QTextDocument document;
    document.setMarkdown(markdown, QTextDocument::MarkdownFeatures(QTextDocument::MarkdownDialectGitHub) |
                                       QTextDocument::MarkdownNoHTML);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        layOut(block);
    static const QRegularExpression fontOfDocument(QStringLiteral("<body [^>]*>"));
    return document.toHtml().replace(fontOfDocument, QStringLiteral("<body>"));
}

} // namespace orvane
