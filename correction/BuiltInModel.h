#pragma once

#include <QString>

#include <QCoroTask>

#include <memory>

namespace orvane {

/// The language model that comes with the operating system. Main thread.
class BuiltInModel
{
public:
    struct Availability
    {
        bool isReady;
        /// Why it is not ready, a sentence in the interface language.
        QString message;
    };

    virtual ~BuiltInModel() = default;

    [[nodiscard]] virtual Availability availability() const = 0;

    /// The model's answer to one prompt, in a session of its own: the model knows nothing of any request
    /// before. Throws Error. Comes to an end even when this object is destroyed meanwhile.
    [[nodiscard]] virtual QCoro::Task<QString> respond(QString instructions, QString prompt) = 0;

    /// What to tell the user about the reason for which the system says that its model is unavailable. Words
    /// of the reason decide, so that reasons of later systems are told too.
    [[nodiscard]] static QString reasonText(const QString &reason);

    /// The one of this system; where there is none, one that is never ready.
    [[nodiscard]] static std::unique_ptr<BuiltInModel> ofThisSystem();
};

} // namespace orvane
