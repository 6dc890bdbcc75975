#include "app/commandline/CommandOptions.h"

#include "app/commandline/Output.h"
#include "base/localization/Localization.h"
#include "settings/TranscriptionLanguage.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane::CommandOptions {

namespace {

UsageError usageError(const QString &text, const QString &detail)
{
    return UsageError(text + detail);
}

/// An option's name as the user writes it.
QString asTyped(const QString &option)
{
    return (option.size() == 1 ? u"-"_s : u"--"_s) + option;
}

} // namespace

QCommandLineOption withValue(const QString &name)
{
    return {name, {}, u"value"_s};
}

// Qt words its complaints in English only, so they are worded here.
void parseInto(QCommandLineParser &parser, const QStringList &arguments)
{
    if (parser.parse(QStringList(QString()) + arguments))
        return;
    const QStringList unknown = parser.unknownOptionNames();
    if (!unknown.isEmpty())
        throw usageError(Localization::text(u"Неизвестный параметр: "), asTyped(unknown.first()));
    for (const QString &name : {speakersOption, noHistoryOption, jsonOption}) {
        const QString flag = asTyped(name);
        if (!arguments.filter(flag + u'=').isEmpty())
            throw usageError(Localization::text(u"Параметр не принимает значения: "), flag);
    }
    throw usageError(Localization::text(u"Параметру нужно значение: "), arguments.last());
}

OutputFormat formatOf(const QCommandLineParser &parser)
{
    if (!parser.isSet(formatOption))
        return OutputFormat::Text;
    const QString name = parser.value(formatOption);
    if (const std::optional<OutputFormat> format = outputFormat(name))
        return *format;
    throw usageError(Localization::text(u"Неизвестный формат (есть txt, md, srt и json): "), name);
}

std::optional<QString> valueOf(const QString &option, const QCommandLineParser &parser)
{
    if (!parser.isSet(option))
        return std::nullopt;
    QString value = parser.value(option);
    if (value.isEmpty())
        throw usageError(Localization::text(u"Параметру нужно значение: "), asTyped(option));
    return value;
}

QString outputOf(const QCommandLineParser &parser)
{
    return valueOf(outputOption, parser).value_or(Output::standardOutput.toString());
}

QString recordIn(const QStringList &words)
{
    // An empty name, such as an unset variable gives, would be short for every record.
    if (words.value(0).isEmpty())
        throw UsageError(
            Localization::text(u"Укажите запись: её обозначение показывает orvane history list."));
    return words.first();
}

void refuseMoreThan(qsizetype expected, const QStringList &words)
{
    if (words.size() > expected)
        throw usageError(Localization::text(u"Лишнее слово в команде: "), words[expected]);
}

QString languageOf(const QCommandLineParser &parser)
{
    const QString code = parser.value(languageOption);
    const auto &languages = TranscriptionLanguage::all();
    const bool known = std::ranges::find(languages, code, &TranscriptionLanguage::code) != languages.end();
    if (!parser.isSet(languageOption) || known)
        return code;
    QStringList codes;
    for (const TranscriptionLanguage &language : languages)
        codes.append(language.code);
    throw usageError(Localization::text(u"Неизвестный язык (есть %1): ").arg(codes.join(u", "_s)), code);
}

} // namespace orvane::CommandOptions
