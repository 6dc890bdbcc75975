#pragma once

#include "tests/support/Compositor.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace orvane::test {

/// A real program in a Wayland session that has the focus and takes what is typed.
class WaylandEditor
{
public:
    /// The last is shown by the compositor's X server.
    enum class Kind { Gtk, Terminal, X11Terminal };

    /// Returns when it takes what is typed. The compositor outlives it.
    WaylandEditor(Compositor &compositor, Kind kind);
    ~WaylandEditor();
    WaylandEditor(const WaylandEditor &) = delete;
    WaylandEditor &operator=(const WaylandEditor &) = delete;

    /// What it has received since, as far as it has worked through it: ask again. An editor saves it with
    /// Ctrl+S, so the layout should have an S then, and no modifier be held.
    [[nodiscard]] QString text();

private:
    [[nodiscard]] QString received();

    Compositor &m_compositor;
    Kind m_kind;
    QTemporaryDir m_folder;
    QString m_file;
    QString m_received;
    qsizetype m_start = 0;
    QProcess m_process;
};

} // namespace orvane::test
