#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

#include <optional>

namespace orvane::test {

/// An X server without a screen, with a window manager, that lives as long as this object. Its number is
/// free, so that there may be several.
class XDisplay
{
public:
    XDisplay();
    ~XDisplay();
    XDisplay(const XDisplay &) = delete;
    XDisplay &operator=(const XDisplay &) = delete;

    /// Such as ":1".
    [[nodiscard]] QString name() const { return m_name; }
    /// For programs that are to run there.
    [[nodiscard]] QProcessEnvironment environment() const;

    /// Runs this program again on a display of its own and returns its exit status, unless it was started
    /// by that: then nothing. For the main function of a test that shows something or hears keys.
    [[nodiscard]] static std::optional<int> runThisProgram(int argc, char **argv);

private:
    QProcess m_server;
    QProcess m_windowManager;
    QString m_name;
};

} // namespace orvane::test

/// The main function of a test class that needs a display.
#define ORVANE_DISPLAY_TEST_MAIN(TestClass, Application)                                                     \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        if (const std::optional<int> status = orvane::test::XDisplay::runThisProgram(argc, argv))            \
            return *status;                                                                                  \
        Application application(argc, argv);                                                                 \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
