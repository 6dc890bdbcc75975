#pragma once

#include <QIODevice>

namespace orvane {

/// A device for a request's body that is sent once. Qt sends a request again when the connection closes
/// without an answer; the server would compute everything a second time. The device must not be a QBuffer,
/// whose bytes Qt takes past it.
template <typename Device>
class OneTimeBody : public Device
{
public:
    using Device::Device;

    bool reset() override { return Device::pos() == 0; }
};

} // namespace orvane
