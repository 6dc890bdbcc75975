#pragma once

#include "desktop/wayland/VirtualKeyboard.h"
#include "desktop/wayland/WaylandDisplay.h"
#include "tests/support/XKeyboard.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>

namespace orvane::test {

/// A Wayland session that nobody sees, with an X server for programs that want one, that lives as long as
/// this object. Its keyboard is not the one that our program presses.
class Compositor
{
public:
    enum class Kind { Sway, KWin };

    /// In that environment, whose session bus and applications it takes for the user's.
    explicit Compositor(Kind kind,
                        const QProcessEnvironment &session = QProcessEnvironment::systemEnvironment());
    ~Compositor();
    Compositor(const Compositor &) = delete;
    Compositor &operator=(const Compositor &) = delete;

    [[nodiscard]] static bool isInstalled(Kind kind);

    [[nodiscard]] Kind kind() const { return m_kind; }
    /// For programs that are to run there.
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }
    [[nodiscard]] QString file(const QString &name) const { return m_folder.filePath(name); }

    /// The keys of <linux/input-event-codes.h>.
    void press(std::uint32_t key) { set(key, true); }
    void release(std::uint32_t key) { set(key, false); }
    /// Taps the last while the others are held.
    void tap(const QList<std::uint32_t> &keys);
    /// Another keyboard in the place of this one; sway only.
    void setLayout(const char *layout, const char *variant = "");

    /// Runs a command of sway's.
    void command(const QStringList &words) const;

    /// Ends the compositor, which a new one of these does not replace.
    void end();

private:
    void startSway();
    void startKWin();
    void start(const QString &program, const QStringList &arguments);
    void set(std::uint32_t key, bool isDown);

    const Kind m_kind;
    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    QProcess m_screen; ///< an X server to which KWin is a window
    QProcess m_process;
    std::unique_ptr<XKeyboard> m_keyboardOfScreen;
    std::unique_ptr<WaylandDisplay> m_display;
    std::unique_ptr<VirtualKeyboard> m_keyboard;
};

} // namespace orvane::test
