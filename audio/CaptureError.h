#pragma once

#include "base/Error.h"

namespace orvane {

/// The microphone cannot be used. The description says why and what to do, in the interface language.
class CaptureError : public Error
{
public:
    enum class Kind { noInputDevice, accessRefused, deviceFailed };

    [[nodiscard]] static CaptureError noInputDevice();
    [[nodiscard]] static CaptureError accessRefused();
    [[nodiscard]] static CaptureError deviceFailed(const QString &description);

    [[nodiscard]] Kind kind() const { return m_kind; }

private:
    CaptureError(Kind kind, const QString &description) : Error(description), m_kind(kind) {}

    Kind m_kind;
};

} // namespace orvane
