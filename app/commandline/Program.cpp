#include "app/commandline/Program.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "base/localization/Localization.h"
#include "settings/BuildInfo.h"
#include "settings/UserDefaults.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace orvane::Program {

int run(int argc, char **argv, const std::function<int(const CommandLine::Command &)> &execute)
{
    Output::reserveStandardStreams();
    QCoreApplication::setApplicationName(u"Orvane"_s);
    QCoreApplication::setApplicationVersion(BuildInfo::version);
    // Complaints about the command line come before any service reads the settings.
    Localization::setLanguage(
        UserDefaults(UserDefaults::standardFile()).string(u"interfaceLanguage"_s).value_or(u"ru"_s));
    try {
        QStringList arguments;
        for (int i = 1; i < argc; ++i)
            arguments << QString::fromLocal8Bit(argv[i]);
        return execute(CommandLine::parse(arguments));
    } catch (const UsageError &error) {
        Output::complain(error.description());
        Output::complain(Localization::text(u"Справка: orvane --help"));
        return ExitStatus::usage;
    } catch (const Error &error) {
        Output::complain(error.description());
        return ExitStatus::failure;
    }
}

} // namespace orvane::Program
