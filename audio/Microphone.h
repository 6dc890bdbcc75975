#pragma once

#include <QString>

#include <QCoroTask>

namespace orvane {

/// What the sound server calls the microphone that a recording would begin with; empty when there is none.
/// The module "orvane-capture" lies in that folder. Main thread.
[[nodiscard]] QCoro::Task<QString> microphoneName(QString moduleFolder);

} // namespace orvane
