#pragma once

#include <memory>

namespace orvane {

/// Whether the machine runs on a battery that will not last long. This class itself is that of a machine that
/// does not say. Main thread.
class Battery
{
public:
    /// That of this machine, never null.
    [[nodiscard]] static std::unique_ptr<Battery> ofThisMachine();

    Battery() = default;
    virtual ~Battery() = default;
    Battery(const Battery &) = delete;
    Battery &operator=(const Battery &) = delete;

    /// Asks how it is; the answer comes a little later.
    virtual void look() {}
    /// By the last answer: it has less than 20 %, and nothing charges it.
    [[nodiscard]] virtual bool isLow() const { return false; }
};

} // namespace orvane
