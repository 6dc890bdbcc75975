#pragma once

#include <QtGlobal>

namespace orvane {

/// A TCP port of 127.0.0.1 that is free at this moment, or `fallback` when the system gives none.
/// Nothing holds it afterwards: pass it at once to the server that shall listen there. Any thread.
[[nodiscard]] quint16 orvaneReserveFreePort(quint16 fallback);

} // namespace orvane
