#pragma once

#include "tests/e2e/Surroundings.h"
#include "tests/support/AccessibleTree.h"

#include <QJsonObject>
#include <QObject>

#include <memory>

namespace orvane::test {

/// A test of the real program's windows, which it reads and works as a screen reader does, with the real
/// engines. It runs on a display of its own.
class WindowedTest : public QObject
{
    Q_OBJECT

protected:
    using Element = AccessibleTree::Element;
    using Role = AccessibleTree::Role;

    /// Long enough for a busy machine under a sanitizer.
    static constexpr int patience = 120'000; // ms

    /// Both engines; the answers of the language model are short.
    WindowedTest();

    /// Starts the program and returns when its window is there.
    void launch(const QStringList &arguments = {});
    void quit();
    void kill();
    /// With the model "tiny.en", English speech and the language models.
    void setPreferences(const QByteArray &interfaceLanguage = "ru") const;
    [[nodiscard]] QString settingOf(const QString &key) const;

    /// What the window shows of the open record.
    [[nodiscard]] QString transcript() const;
    /// The first in the history.
    [[nodiscard]] QJsonObject record() const;
    static void pressKeys(const QStringList &keys);
    /// The words of "jfk.wav".
    [[nodiscard]] static QString said();

    OrvaneProgram m_program;
    Surroundings m_surroundings{m_program};
    AccessibleTree m_windows{m_surroundings.bus()};
    std::unique_ptr<QProcess> m_application;

private Q_SLOTS:
    void cleanup();
};

} // namespace orvane::test
