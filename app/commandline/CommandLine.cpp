#include "app/commandline/CommandLine.h"

#include "app/commandline/CommandOptions.h"
#include "app/commandline/InputStream.h"
#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane::CommandLine {

namespace {

using namespace CommandOptions;

Command parseTranscribe(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions({withValue(modelOption), withValue(languageOption), withValue(formatOption),
                       withValue(outputOption), QCommandLineOption(speakersOption),
                       QCommandLineOption(noHistoryOption)});
    parseInto(parser, arguments);
    if (parser.positionalArguments().isEmpty())
        throw UsageError(Localization::text(u"Укажите файл для расшифровки: orvane transcribe ФАЙЛ…"));

    TranscribeCommand::Options options;
    options.files = parser.positionalArguments();
    options.model = parser.value(modelOption);
    options.language = languageOf(parser);
    options.format = formatOf(parser);
    options.output = outputOf(parser);
    if (parser.isSet(speakersOption))
        options.speakers = TranscriptionService::SpeakerDetection::On;
    if (parser.isSet(noHistoryOption))
        options.history = TranscriptionService::History::Skip;
    return options;
}

Command parseOpen(const QStringList &arguments)
{
    QCommandLineParser parser;
    parseInto(parser, arguments);
    return RunApplication{.start = Start::Open, .files = parser.positionalArguments()};
}

Command parseHistory(const QStringList &arguments)
{
    using Action = HistoryCommand::Action;
    static const QMap<QString, Action> actions = {{u"list"_s, Action::List},
                                                  {u"show"_s, Action::Show},
                                                  {u"export"_s, Action::Export},
                                                  {u"rename"_s, Action::Rename},
                                                  {u"delete"_s, Action::Remove}};
    QCommandLineParser parser;
    parser.addOptions({withValue(formatOption), withValue(outputOption)});
    parseInto(parser, arguments);

    const QStringList words = parser.positionalArguments();
    HistoryCommand::Options options;
    options.action = actionNamed(words.value(0, u"list"_s), actions,
                                 Localization::text(u"Неизвестное действие с историей: "));
    options.title = words.value(2).trimmed();
    options.format = formatOf(parser);
    options.output = outputOf(parser);

    if (options.action != Action::Export && (parser.isSet(formatOption) || parser.isSet(outputOption)))
        throw UsageError(Localization::text(u"--format и --output есть только у history export."));
    if (options.action != Action::List)
        options.id = recordIn(words.mid(1));
    if (options.action == Action::Rename && options.title.isEmpty())
        throw UsageError(Localization::text(u"Укажите новое название записи."));
    refuseMoreThan(options.action == Action::List ? 1 : options.action == Action::Rename ? 3 : 2, words);
    return options;
}

Command parseRetranscribe(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions({withValue(modelOption), withValue(languageOption)});
    parseInto(parser, arguments);
    const QStringList words = parser.positionalArguments();
    RetranscribeCommand::Options options;
    options.id = recordIn(words);
    options.model = parser.value(modelOption);
    options.language = languageOf(parser);
    refuseMoreThan(1, words);
    return options;
}

const QMap<QString, TextCommand::Action> &textActions()
{
    using Action = TextCommand::Action;
    static const QMap<QString, Action> actions = {{u"correct"_s, Action::Correct},
                                                  {u"email"_s, Action::Email},
                                                  {u"prompt"_s, Action::Prompt},
                                                  {u"ask"_s, Action::Ask},
                                                  {u"protocol"_s, Action::Protocol}};
    return actions;
}

Command parseText(TextCommand::Action action, const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions({withValue(recordOption), withValue(modelOption), withValue(outputOption)});
    parseInto(parser, arguments);

    QStringList words = parser.positionalArguments();
    TextCommand::Options options;
    options.action = action;
    if (action == TextCommand::Action::Ask) {
        options.question = words.value(0).trimmed();
        if (options.question.isEmpty())
            throw UsageError(Localization::text(u"Задайте вопрос: orvane ask ВОПРОС [ФАЙЛ]"));
        words.removeFirst();
    }
    options.record = valueOf(recordOption, parser).value_or(QString());
    options.input = words.value(0, InputStream::standardInput.toString());
    options.model = parser.value(modelOption);
    options.output = outputOf(parser);
    refuseMoreThan(options.record.isEmpty() ? 1 : 0, words);
    return options;
}

Command parseModels(const QStringList &arguments)
{
    using Action = ModelsCommand::Action;
    static const QMap<QString, Action> actions = {{u"list"_s, Action::List},
                                                  {u"download"_s, Action::Download},
                                                  {u"delete"_s, Action::Delete},
                                                  {u"path"_s, Action::Path}};
    QCommandLineParser parser;
    parser.addOption(withValue(repositoryOption));
    parseInto(parser, arguments);

    const QStringList words = parser.positionalArguments();
    ModelsCommand::Options options;
    options.action = actionNamed(words.value(0, u"list"_s), actions,
                                 Localization::text(u"Неизвестное действие с моделями: "));
    options.ids = words.mid(1);
    options.repository = parser.value(repositoryOption);
    const bool needsModel = options.action == Action::Download || options.action == Action::Delete;
    if (needsModel && options.ids.isEmpty())
        throw UsageError(Localization::text(u"Укажите модель: их названия показывает orvane models list."));
    if (options.action == Action::List)
        refuseMoreThan(1, words);
    return options;
}

Command parseCheck(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption(QCommandLineOption(jsonOption));
    parseInto(parser, arguments);
    refuseMoreThan(0, parser.positionalArguments());
    return CheckCommand::Options{.asJson = parser.isSet(jsonOption)};
}

std::optional<ControlCommand::Options> parseControl(const QStringList &words)
{
    static const QMap<QString, QString> dictation = {{u"toggle"_s, u"Toggle"_s}, {u"tap"_s, u"Tap"_s},
                                                     {u"start"_s, u"Start"_s},   {u"stop"_s, u"Stop"_s},
                                                     {u"cancel"_s, u"Cancel"_s}, {u"status"_s, u"Status"_s}};
    static const QMap<QString, QString> meeting = {
        {u"start"_s, u"StartMeeting"_s},           {u"stop"_s, u"StopMeeting"_s},
        {u"cancel"_s, u"CancelMeeting"_s},         {u"status"_s, u"MeetingStatus"_s},
        {u"transcribe"_s, u"TranscribeMeeting"_s}, {u"dismiss"_s, u"DismissMeeting"_s}};
    const bool isMeeting = words.first() == "meeting"_L1;
    if (!isMeeting && !dictation.contains(words.first()))
        return std::nullopt;
    const qsizetype verb = isMeeting ? 1 : 0;
    if (words.size() > verb + 1)
        throw UsageError(Localization::text(u"Лишнее слово в команде: ") + words[verb + 1]);
    return ControlCommand::Options{actionNamed(words.value(verb, u"status"_s),
                                               isMeeting ? meeting : dictation,
                                               Localization::text(u"Неизвестное действие с совещанием: "))};
}

} // namespace

Command parse(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return RunApplication{Start::Open};
    const QString &name = arguments.first();
    const QStringList rest = arguments.sliced(1);
    const QStringList options = rest.mid(0, rest.indexOf(u"--"_s)); // all of it without a "--"
    const bool asksForHelp = name == "help"_L1 || name == "--help"_L1 || name == "-h"_L1 ||
                             options.contains(u"--help"_s) || options.contains(u"-h"_s);
    if (asksForHelp)
        return ShowHelp();
    if (name == "--version"_L1 || name == "-v"_L1)
        return ShowVersion();
    if (name == "--background"_L1)
        return RunApplication{Start::Background};
    if (name == "open"_L1)
        return parseOpen(rest);
    if (name == "transcribe"_L1)
        return parseTranscribe(rest);
    if (const auto action = textActions().constFind(name); action != textActions().cend())
        return parseText(*action, rest);
    if (name == "history"_L1)
        return rest.value(0) == "retranscribe"_L1 ? parseRetranscribe(rest.sliced(1)) : parseHistory(rest);
    if (name == "models"_L1)
        return parseModels(rest);
    if (name == "check"_L1)
        return parseCheck(rest);
    if (const auto control = parseControl(arguments))
        return *control;
    throw UsageError(Localization::text(u"Неизвестная команда: ") + name);
}

} // namespace orvane::CommandLine
