#include "app/commandline/CommandRun.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/Interruption.h"
#include "app/commandline/Output.h"
#include "app/services/AppServices.h"
#include "base/Async.h"

#include <QCoreApplication>

#include <optional>

namespace orvane::CommandRun {

namespace {

QCoro::Task<> finish(QCoro::Task<int> task, std::optional<int> *status)
{
    try {
        *status = co_await std::move(task);
    } catch (const std::exception &error) { // whatever it is, the event loop must end
        Output::complain(descriptionOf(error));
        *status = ExitStatus::failure;
    }
    QCoreApplication::quit();
}

} // namespace

int untilDone(QCoro::Task<int> task, const std::function<void()> &interrupt)
{
    Interruption interruption;
    std::optional<int> signal;
    QObject::connect(&interruption, &Interruption::requested, &interruption, [&](int number) {
        signal = number;
        interrupt();
    });
    std::optional<int> status;
    spawn(finish(std::move(task), &status));
    if (!status)
        QCoreApplication::exec();
    return signal ? Interruption::exitStatus(*signal) : status.value_or(ExitStatus::failure);
}

namespace {

template <typename Command>
int executeWithServices(const typename Command::Options &options)
{
    AppServices services({});
    Command command(services, options);
    return untilDone(command.run(), [&command] { command.interrupt(); });
}

} // namespace

int execute(const TranscribeCommand::Options &options)
{
    return executeWithServices<TranscribeCommand>(options);
}

int execute(const TextCommand::Options &options)
{
    return executeWithServices<TextCommand>(options);
}

int execute(const RetranscribeCommand::Options &options)
{
    return executeWithServices<RetranscribeCommand>(options);
}

int execute(const HistoryCommand::Options &options)
{
    AppServices services({});
    HistoryCommand command(services.history(), options);
    return untilDone(command.run(), [] {});
}

int execute(const ModelsCommand::Options &options)
{
    AppServices::Environment environment;
    if (!options.repository.isEmpty())
        environment.repository.address = options.repository;
    AppServices services(environment);
    ModelsCommand command(services.models(), services.correctionModels(), options);
    return untilDone(command.run(), [&command] { command.interrupt(); });
}

} // namespace orvane::CommandRun
