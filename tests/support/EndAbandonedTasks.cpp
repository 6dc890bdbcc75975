// Linked into every test of a sanitizer build. What a test leaves running ends before the program does, as in
// the program itself: what still waits for something then would be reported as leaked.

#include "base/Async.h"

namespace {

void beforeApplicationEnds()
{
    qAddPostRoutine(orvane::endAbandonedTasks);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beforeApplicationEnds)
