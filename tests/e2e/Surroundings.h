#pragma once

#include "tests/e2e/OrvaneProgram.h"
#include "tests/support/SessionBus.h"
#include "tests/support/SoundServer.h"

namespace orvane::test {

/// What the application finds on a desktop beside its display: a session bus and a microphone, its own.
class Surroundings
{
public:
    static inline const QString microphone = QStringLiteral("mic");

    explicit Surroundings(OrvaneProgram &program)
    {
        m_sound.plugIn(microphone);
        const QProcessEnvironment environment = m_sound.environment();
        for (const char *name : {"XDG_RUNTIME_DIR", "PULSE_SERVER", "PULSE_COOKIE"}) {
            const QString variable = QString::fromLatin1(name);
            program.setEnvironment(variable, environment.value(variable));
        }
        program.setEnvironment(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_bus.address());
    }

    [[nodiscard]] SoundServer &sound() { return m_sound; }
    [[nodiscard]] QString bus() const { return m_bus.address(); }

private:
    SoundServer m_sound;
    SessionBus m_bus;
};

} // namespace orvane::test
