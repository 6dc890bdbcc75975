#pragma once

#include "base/Scope.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <QCoroTask>

namespace orvane {

/// Whether the desktop starts the program, without windows, when the user logs in. Main thread; the disk is
/// waited for elsewhere.
class Autostart : public QObject
{
    Q_OBJECT

public:
    /// The desktop's entry for this program, and the program that it is to start.
    explicit Autostart(const QString &file = standardFile(), const QString &program = thisProgram(),
                       QObject *parent = nullptr);
    /// Waits until the last choice is stored.
    ~Autostart() override;

    /// False until the entry has been read.
    [[nodiscard]] bool isOn() const { return m_isOn; }
    /// Holds at once; goes back when it cannot be stored.
    void set(bool on);
    /// Why the last choice is not stored; empty when it is.
    [[nodiscard]] QString error() const { return m_error; }

    /// Reads the entry again: the desktop has settings for it too.
    void look();

    [[nodiscard]] static QString standardFile();
    [[nodiscard]] static QString thisProgram();

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] QCoro::Task<> read();
    [[nodiscard]] QCoro::Task<> store(bool on);

    const QString m_file;
    const QString m_program;
    bool m_isOn = false;
    int m_choices = 0; ///< so far: what was read before the last one does not count
    QString m_error;
    QThreadPool m_thread; ///< one: choices are stored in their order
    Scope m_scope;
};

} // namespace orvane
