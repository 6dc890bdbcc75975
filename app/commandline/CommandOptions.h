#pragma once

#include "app/commandline/ExitStatus.h"
#include "app/commandline/OutputFormat.h"

#include <QCommandLineParser>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// The options and words that several commands have. What is wrong with them is thrown as UsageError, in the
/// user's language.
namespace orvane::CommandOptions {

inline const QString modelOption = QStringLiteral("model");
inline const QString languageOption = QStringLiteral("language");
inline const QString formatOption = QStringLiteral("format");
inline const QString outputOption = QStringLiteral("output");
inline const QString speakersOption = QStringLiteral("speakers");
inline const QString noHistoryOption = QStringLiteral("no-history");
inline const QString recordOption = QStringLiteral("record");
inline const QString repositoryOption = QStringLiteral("repository");
inline const QString jsonOption = QStringLiteral("json");

/// An option that takes a value.
[[nodiscard]] QCommandLineOption withValue(const QString &name);

/// Reads the arguments of one command.
void parseInto(QCommandLineParser &parser, const QStringList &arguments);

template <typename Action>
[[nodiscard]] Action actionNamed(const QString &name, const QMap<QString, Action> &actions,
                                 const QString &complaint)
{
    const auto found = actions.constFind(name);
    if (found == actions.cend())
        throw UsageError(complaint + name);
    return *found;
}

[[nodiscard]] OutputFormat formatOf(const QCommandLineParser &parser);
/// The option's value; none when it is not there.
[[nodiscard]] std::optional<QString> valueOf(const QString &option, const QCommandLineParser &parser);
[[nodiscard]] QString outputOf(const QCommandLineParser &parser);
[[nodiscard]] QString languageOf(const QCommandLineParser &parser);
/// The first word, which names a record.
[[nodiscard]] QString recordIn(const QStringList &words);
void refuseMoreThan(qsizetype expected, const QStringList &words);

} // namespace orvane::CommandOptions
