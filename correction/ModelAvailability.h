#pragma once

#include <QString>

namespace orvane {

/// Whether a language model can be asked now.
struct ModelAvailability
{
    bool isReady = false;
    /// Why it cannot, a sentence in the interface language; may be empty where no reason is known.
    QString message = {};
};

} // namespace orvane
