#pragma once

#include "correction/ModelAvailability.h"

#include <QString>

#include <QCoroTask>

#include <memory>
#include <stop_token>

namespace orvane {

/// The language model that comes with the operating system. Main thread.
class BuiltInModel
{
public:
    virtual ~BuiltInModel() = default;

    [[nodiscard]] virtual ModelAvailability availability() const = 0;

    /// The model's answer to one prompt, in a session of its own: the model knows nothing of any request
    /// before. Throws Error, or Cancelled. Comes to an end even when this object is destroyed meanwhile.
    [[nodiscard]] virtual QCoro::Task<QString> respond(QString instructions, QString prompt,
                                                       std::stop_token stop) = 0;

    /// What the user reads about the reason for which the system says that its model is unavailable. Words
    /// of the reason decide, so that reasons of later systems have a text too.
    [[nodiscard]] static QString reasonText(const QString &reason);

    /// The one of this system; where there is none, one that is never ready.
    [[nodiscard]] static std::unique_ptr<BuiltInModel> ofThisSystem();
};

} // namespace orvane
