#pragma once

#include <functional>

class QObject;
class QWindow;

namespace orvane {

// What the program and the module with the indicator's scene share.

/// Begins to make the window that shows a DictationHUDModel: hidden, of its final size, without flags. The
/// capsule stands at its bottom and grows upwards in it; nothing of the window is there above the capsule,
/// nor, unless `isBlended`, around its corners. It is made in pieces that do not keep the event loop busy;
/// `ready` is called from there once the window can be shown, and never when it was deleted before. The
/// caller owns it; the model outlives it.
using IndicatorWindowMaker = QWindow *(QObject *hud, std::function<bool()> isBlended,
                                       std::function<void()> ready);

/// The module's one exported function. Its name changes with what stands above and with the properties of
/// the model.
inline constexpr char indicatorWindowMakerName[] = "orvaneMakeIndicatorWindow3";

} // namespace orvane
