#pragma once

#include <QString>

namespace orvane {

/// Shows the user what wants an action of theirs. Texts are in the interface language. Main thread.
class Guidance
{
public:
    virtual ~Guidance() = default;

    /// Brings the program forward with a problem; returns before it is read.
    virtual void guide(const QString &title, const QString &detail) = 0;
};

} // namespace orvane
