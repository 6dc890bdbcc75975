#pragma once

#include <QString>

namespace orvane {

/// Shows the user a problem that wants an action of theirs. Main thread.
class GuidancePresenter
{
public:
    virtual ~GuidancePresenter() = default;

    /// Brings the program forward with the text, in the interface language; returns before it is read.
    virtual void guide(const QString &title, const QString &detail) = 0;
};

} // namespace orvane
