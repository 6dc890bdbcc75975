#pragma once

#include "base/Async.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

/// The frame of a benchmark program that measures in coroutines.
namespace orvane::Measurement {

using Measure = QCoro::Task<> (*)(QStringList arguments);

inline QCoro::Task<> run(Measure measure, QStringList arguments)
{
    int status = 0;
    try {
        co_await measure(arguments);
    } catch (const Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        status = 1;
    }
    QCoreApplication::exit(status);
}

/// The exit status of a program that wants as many arguments as `usage` has words after its own name. The
/// first of those that `measure` gets is the program.
inline int execute(int argc, char **argv, const char *usage, Measure measure)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != QString::fromLatin1(usage).count(u' ') + 1) {
        std::fprintf(stderr, "usage: %s\n", usage);
        return 2;
    }
    const auto begin = [measure, arguments] { spawn(run(measure, arguments)); };
    QMetaObject::invokeMethod(qApp, begin, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

} // namespace orvane::Measurement
