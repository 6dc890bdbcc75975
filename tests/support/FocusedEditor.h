#pragma once

#include "tests/support/XKeyboard.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace orvane::test {

/// A real program on the display of the environment that has the focus and takes what is typed.
class FocusedEditor
{
public:
    enum class Kind { Gtk, Qt, Terminal };

    /// Returns when it has the focus.
    explicit FocusedEditor(Kind kind);
    ~FocusedEditor();
    FocusedEditor(const FocusedEditor &) = delete;
    FocusedEditor &operator=(const FocusedEditor &) = delete;

    /// What it has received, as far as it has worked through it: ask again. Of the editors it is what they
    /// save with Ctrl+S, so no lock should be on and the layout have an S; of the terminal every byte, so
    /// that a key without a character is its escape sequence.
    [[nodiscard]] QString text();

private:
    Kind m_kind;
    QTemporaryDir m_folder;
    QString m_file;
    QString m_text;
    QProcess m_process;
    XKeyboard m_keyboard;
};

} // namespace orvane::test
