#pragma once

#include <cstddef>

namespace orvane {

// What the program and its capture module share. No exception crosses this border.

/// Takes what the device gives, on the thread that runs the capture.
class CaptureListener
{
public:
    /// The device runs; reported once, before the first samples.
    virtual void opened() noexcept = 0;
    /// Mono samples at 16 kHz in −1…1, in order. What a change of devices misses is left out.
    virtual void deliver(const float *samples, std::size_t count) noexcept = 0;

protected:
    ~CaptureListener() = default;
};

enum class CaptureOutcome {
    /// As it was told to.
    Ended,
    // The next ones before opened() only: without a device or a service the capture then waits for one.
    NoService,
    AccessRefused,
    NoDevice,
    NotOpened,
    /// After opened(): it cannot go on, whatever the devices do.
    Broken,
};

/// What happens to samples that the device has recorded but not delivered yet.
enum class CaptureRest { Keep, Drop };

/// One recording of whatever is the default input at each moment.
class Capture
{
public:
    /// Blocks until the end. Called once.
    virtual CaptureOutcome run(CaptureListener &listener) noexcept = 0;
    /// Makes run() return soon, at once when the rest is dropped. Any thread, at any time before release().
    virtual void end(CaptureRest rest) noexcept = 0;
    /// Frees it; not while it runs.
    virtual void release() noexcept = 0;

protected:
    ~Capture() = default;
};

/// Records with libraries that the program itself does not load.
class CaptureModule
{
public:
    /// Null when there is no memory.
    [[nodiscard]] virtual Capture *create() const noexcept = 0;
    /// What the sound server calls the input that a capture would begin with: puts as much of it into `name`
    /// as there is room for, in UTF-8 and ended by a NUL. Empty when there is none. Waits for the server, 2 s
    /// at most.
    virtual void nameInput(char *name, std::size_t size) const noexcept = 0;

protected:
    ~CaptureModule() = default;
};

/// The module's one exported function. Its name changes with what stands above.
using CaptureModuleEntry = const CaptureModule *();
inline constexpr char captureModuleEntryName[] = "orvaneCaptureModule3";

} // namespace orvane
