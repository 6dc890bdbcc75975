#pragma once

#include "app/AppServices.h"

#include <QObject>

namespace orvane {

/// The application's life between its start and its end.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(AppServices &services, QObject *parent = nullptr);

    /// Once, when the event loop begins: ends the engines that a crashed run left behind, follows
    /// what the command line does to the history, looks for recordings that were left behind, and begins
    /// with update checks and device reports.
    void applicationDidFinishLaunching();

    /// Ends the program once a recording in progress is completed.
    void terminate();

    /// Once, when the program is about to end: asks every engine to end, without waiting.
    void applicationWillTerminate();

private:
    AppServices &m_services;
    bool m_isTerminating = false;
};

} // namespace orvane
