#pragma once

#include <QCoroTask>

/// Whether texts come into the focused program by themselves on this desktop. Main thread.
namespace orvane::PasteAccess {

enum class State {
    Granted,
    /// The desktop may let the program press keys, once the user allows it.
    ToBeAsked,
    /// Texts wait on the clipboard.
    None,
};

/// As far as is known without asking anybody. Needs the application object.
[[nodiscard]] State state();

/// Lets the desktop ask the user. Returns once that is allowed for good; else throws one sentence.
[[nodiscard]] QCoro::Task<> ask();

} // namespace orvane::PasteAccess
