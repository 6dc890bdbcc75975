#pragma once

#include <QString>

#include <QCoroTask>

namespace orvane {

/// Shows the user what wants an action of theirs. Texts are in the interface language. Main thread.
class Guidance
{
public:
    virtual ~Guidance() = default;

    /// Brings the program forward with a problem; returns before it is read.
    virtual void guide(const QString &title, const QString &detail) = 0;

    struct Question
    {
        QString title;
        QString text;
        QString yes;
        QString no;
    };

    /// Whether the answer was yes; closing the question is a no. Throws Cancelled when this object ends
    /// first.
    [[nodiscard]] virtual QCoro::Task<bool> ask(Question question) = 0;
};

} // namespace orvane
