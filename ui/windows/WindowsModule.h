#pragma once

#include <functional>
#include <memory>

class QObject;
class QWindow;

namespace orvane {

// What the program and the module with the windows' scenes share.

/// The windows of the program, made when they are first shown and gone when they are closed.
class Windows
{
public:
    enum class Which { Main, Settings };

    virtual ~Windows() = default;
    /// Makes the window, hidden. The caller owns it. Null when its scene is broken; a line on standard error
    /// says why.
    [[nodiscard]] virtual std::unique_ptr<QWindow> make(Which which) = 0;
    virtual void setDark(bool dark) = 0;
    virtual void setAnimated(bool animated) = 0;
};

/// Begins with the windows, which the caller owns. `desk` is what they show and `texts` the table of texts;
/// both outlive them.
using WindowsMaker = Windows *(QObject *desk, QObject *texts);

/// The module's one exported function. Its name changes with what stands above and with the properties of
/// what is shown.
inline constexpr char windowsMakerName[] = "orvaneMakeWindows1";

} // namespace orvane
