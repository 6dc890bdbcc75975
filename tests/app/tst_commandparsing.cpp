#include "app/commandline/CommandLine.h"
#include "app/commandline/ExitStatus.h"
#include "tests/support/Rows.h"

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

/// What a command asks for, in one line.
struct Described
{
    QString operator()(CommandLine::ShowVersion) const { return u"version"_s; }
    QString operator()(CommandLine::ShowHelp) const { return u"help"_s; }
    QString operator()(CommandLine::RunApplication run) const
    {
        return run.start == CommandLine::Start::Open ? u"open "_s + run.files.join(u'|') : u"background"_s;
    }
    QString operator()(const TranscribeCommand::Options &options) const
    {
        const bool withSpeakers = options.speakers == TranscriptionService::SpeakerDetection::On;
        const bool isKept = options.history == TranscriptionService::History::Save;
        return u"transcribe %1 model=%2 language=%3 to=%4%5%6%7"_s.arg(
            options.files.join(u'|'), options.model, options.language, options.output,
            extension(options.format), withSpeakers ? u" speakers"_s : u""_s, isKept ? u""_s : u" unkept"_s);
    }
    QString operator()(const TextCommand::Options &options) const
    {
        return u"text %1 question=%2 input=%3 record=%4 model=%5 to=%6"_s.arg(
            QString::number(static_cast<int>(options.action)), options.question, options.input,
            options.record, options.model, options.output);
    }
    QString operator()(const HistoryCommand::Options &options) const
    {
        return u"history %1 id=%2 title=%3"_s.arg(QString::number(static_cast<int>(options.action)),
                                                  options.id, options.title);
    }
    QString operator()(const RetranscribeCommand::Options &options) const
    {
        return u"retranscribe %1 model=%2 language=%3"_s.arg(options.id, options.model, options.language);
    }
    QString operator()(const ModelsCommand::Options &options) const
    {
        return u"models %1 %2"_s.arg(QString::number(static_cast<int>(options.action)),
                                     options.ids.join(u'|'));
    }
    QString operator()(const CheckCommand::Options &options) const
    {
        return options.asJson ? u"check as JSON"_s : u"check"_s;
    }
    QString operator()(const ControlCommand::Options &options) const { return options.method; }
};

} // namespace

class TestCommandParsing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void understands_data()
    {
        const Rows<QStringList, QString> rows("arguments", "meaning");
        const auto row = [&rows](const QString &arguments, const QString &meaning) {
            rows(arguments, arguments.split(u' ', Qt::SkipEmptyParts), meaning);
        };
        row(u""_s, u"open "_s);
        row(u"--background"_s, u"background"_s);
        row(u"open a.mp3 b.ogg"_s, u"open a.mp3|b.ogg"_s);
        row(u"check"_s, u"check"_s);
        row(u"check --json"_s, u"check as JSON"_s);
        row(u"-v"_s, u"version"_s);
        row(u"transcribe a.mp3 --help"_s, u"help"_s);
        row(u"transcribe a.mp3"_s, u"transcribe a.mp3 model= language= to=-.txt"_s);
        row(u"transcribe --model base a.mp3 b.wav --language=en --speakers --no-history"_s,
            u"transcribe a.mp3|b.wav model=base language=en to=-.txt speakers unkept"_s);
        row(u"transcribe a.mp3 --format srt --output a.srt"_s,
            u"transcribe a.mp3 model= language= to=a.srt.srt"_s);
        row(u"transcribe - --language auto"_s, u"transcribe - model= language=auto to=-.txt"_s);
        row(u"transcribe -- --help -x"_s, u"transcribe --help|-x model= language= to=-.txt"_s);
        row(u"correct"_s, u"text 0 question= input=- record= model= to=-"_s);
        row(u"ask Who? a.txt --model m"_s, u"text 3 question=Who? input=a.txt record= model=m to=-"_s);
        row(u"protocol --record 0A1B"_s, u"text 4 question= input=- record=0A1B model= to=-"_s);
        row(u"history"_s, u"history 0 id= title="_s);
        row(u"history rename 0A Talk"_s, u"history 3 id=0A title=Talk"_s);
        row(u"history retranscribe 0A --language ru"_s, u"retranscribe 0A model= language=ru"_s);
        row(u"models download base small"_s, u"models 1 base|small"_s);
        row(u"toggle"_s, u"Toggle"_s);
        row(u"meeting"_s, u"MeetingStatus"_s);
        row(u"meeting stop"_s, u"StopMeeting"_s);
    }

    void understands()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, meaning);
        QCOMPARE(std::visit(Described(), CommandLine::parse(arguments)), meaning);
    }

    void refuses_data()
    {
        const Rows<QStringList, QString> rows("arguments", "complaint");
        const auto row = [&rows](const QStringList &arguments, const QString &complaint) {
            rows(arguments.join(u' '), arguments, complaint);
        };
        row({u"sing"_s}, u"Неизвестная команда: sing"_s);
        row({u"transcribe"_s}, u"Укажите файл"_s);
        row({u"transcribe"_s, u"a"_s, u"--loud"_s}, u"Неизвестный параметр: --loud"_s);
        row({u"transcribe"_s, u"a"_s, u"--model"_s}, u"Параметру нужно значение: --model"_s);
        row({u"transcribe"_s, u"a"_s, u"--no-history=1"_s, u"b"_s},
            u"Параметр не принимает значения: --no-history"_s);
        row({u"transcribe"_s, u"a"_s, u"--output"_s, QString()}, u"Параметру нужно значение: --output"_s);
        row({u"transcribe"_s, u"a"_s, u"--format"_s, u"pdf"_s}, u"pdf"_s);
        row({u"transcribe"_s, u"a"_s, u"--language"_s, u"xx"_s}, u"xx"_s);
        row({u"history"_s, u"burn"_s}, u"burn"_s);
        row({u"history"_s, u"list"_s, u"--format"_s, u"md"_s}, u"history export"_s);
        row({u"history"_s, u"show"_s}, u"Укажите запись"_s);
        row({u"history"_s, u"delete"_s, QString()}, u"Укажите запись"_s);
        row({u"history"_s, u"rename"_s, u"1234"_s, u"  "_s}, u"Укажите новое название"_s);
        row({u"history"_s, u"show"_s, u"1"_s, u"2"_s}, u"2"_s);
        row({u"history"_s, u"retranscribe"_s}, u"Укажите запись"_s);
        row({u"ask"_s, u" "_s}, u"Задайте вопрос"_s);
        row({u"correct"_s, u"a.txt"_s, u"--record"_s, u"1"_s}, u"a.txt"_s);
        row({u"correct"_s, u"--record="_s}, u"Параметру нужно значение: --record"_s);
        row({u"models"_s, u"download"_s}, u"Укажите модель"_s);
        row({u"check"_s, u"all"_s}, u"all"_s);
        row({u"toggle"_s, u"now"_s}, u"now"_s);
        row({u"meeting"_s, u"adjourn"_s}, u"adjourn"_s);
    }

    void refuses()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, complaint);
        try {
            (void)CommandLine::parse(arguments);
            QFAIL("it was understood");
        } catch (const UsageError &error) {
            QVERIFY2(error.description().contains(complaint), qPrintable(error.description()));
        }
    }
};

QTEST_APPLESS_MAIN(TestCommandParsing)
#include "tst_commandparsing.moc"
