#include "history/TranscriptExporter.h"
#include "history/TranscriptRecord.h"
#include "tests/support/Rows.h"

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

DisplaySegment said(qint64 start, qint64 end, const QString &text,
                    std::optional<qint64> speaker = std::nullopt)
{
    return {.start = start, .end = end, .text = text, .speaker = speaker};
}

const QList<DisplaySegment> conversation = {
    said(0, 1500, u" \tПривет "_s, 1),        said(65'400, 66'000, u"да"_s, 1),
    said(70'000, 71'000, u"нет\n"_s, 2),      said(72'000, 73'000, u" шум "_s),
    said(3'725'000, 3'726'045, u"пока"_s, 2), said(3'727'000, 3'728'000, u""_s, 1)};

} // namespace

class TestTranscriptExporter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void subRip()
    {
        QCOMPARE(TranscriptExporter::srt(conversation.first(3)),
                 u"1\n00:00:00,000 --> 00:00:01,500\nПривет\n\n"
                 "2\n00:01:05,400 --> 00:01:06,000\nда\n\n"
                 "3\n00:01:10,000 --> 00:01:11,000\nнет\n\n"_s);
        QCOMPARE(TranscriptExporter::srt({}), QString());
    }

    void subRipTime_data()
    {
        const Rows<qint64, QString> row("milliseconds", "text");
        row("zero", qint64(0), u"00:00:00,000"_s);
        row("every place", qint64(3'723'045), u"01:02:03,045"_s);
        row("last of a day", qint64(86'399'999), u"23:59:59,999"_s);
        row("hundred hours", qint64(360'000'000), u"100:00:00,000"_s);
    }

    void subRipTime()
    {
        QFETCH(const qint64, milliseconds);
        QTEST(TranscriptExporter::time(milliseconds), "text");
    }

    void markdown()
    {
        QCOMPARE(TranscriptExporter::markdown(u"Имя %1"_s, conversation, u"не это"_s),
                 u"# Имя %1\n\n"
                 "\n**Спикер 1**\n\n`0:00`  Привет\n\n`1:05`  да\n\n"
                 "\n**Спикер 2**\n\n`1:10`  нет\n\n\n`1:12`  шум\n\n`1:02:05`  пока\n\n"
                 "\n**Спикер 1**\n\n`1:02:07`  \n\n"_s);
    }

    void markdownWithoutSpeakers()
    {
        QCOMPARE(TranscriptExporter::markdown(u"Имя"_s, {said(0, 1, u"а"_s), said(1, 2, u"б"_s)}, QString()),
                 u"# Имя\n\n`0:00`  а\n\n`0:00`  б\n\n"_s);
        QCOMPARE(TranscriptExporter::markdown(u"Протокол — Имя"_s, {}, u" Решили.\n"_s),
                 u"# Протокол — Имя\n\n Решили.\n"_s);
    }

    void exportsRecord()
    {
        using Format = TranscriptExporter::Format;
        TranscriptRecord record;
        record.title = u"Имя"_s;
        record.segments = TranscriptRecord::segmentsFrom(conversation);
        record.text = u" как есть \n"_s;
        QCOMPARE(TranscriptExporter::exported(Format::PlainText, record), "как есть");
        QCOMPARE(TranscriptExporter::exported(Format::SubRip, record),
                 TranscriptExporter::srt(conversation).toUtf8());
        QCOMPARE(TranscriptExporter::exported(Format::Markdown, record),
                 TranscriptExporter::markdown(u"Имя"_s, conversation, QString()).toUtf8());
    }
};

QTEST_GUILESS_MAIN(TestTranscriptExporter)
#include "tst_transcriptexporter.moc"
