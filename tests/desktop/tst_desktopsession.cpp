#include "desktop/DesktopSession.h"
#include "tests/support/Rows.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace orvane;
using namespace orvane::test;
using namespace Qt::StringLiterals;

namespace {

enum class Compositor { Named, ThatIsGone, ThatHangs };

} // namespace

class TestDesktopSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// What a session leaves in the environment does not make the next one Wayland.
    void noCompositorAnswers_data()
    {
        const Rows<Compositor> row("compositor");
        row("none was there", Compositor::Named);
        row("it is gone", Compositor::ThatIsGone);
        row("it hangs", Compositor::ThatHangs);
    }

    void noCompositorAnswers()
    {
        QFETCH(const Compositor, compositor);
        const QTemporaryDir folder;
        const QString name = folder.filePath(u"wayland-7"_s);
        qputenv("WAYLAND_DISPLAY", name.toLocal8Bit());
        QLocalServer server; // answers nothing, as its event loop does not run
        if (compositor != Compositor::Named)
            QVERIFY(server.listen(name));
        if (compositor == Compositor::ThatIsGone)
            ::close(int(server.socketDescriptor()));

        QElapsedTimer elapsed;
        elapsed.start();
        const DesktopSession session = DesktopSession::ask();
        QVERIFY(!session.isWayland());
        QVERIFY(!session.offers("wl_compositor"));
        QVERIFY2(elapsed.elapsed() < 3000, QByteArray::number(elapsed.elapsed()).constData());
    }
};

QTEST_GUILESS_MAIN(TestDesktopSession)
#include "tst_desktopsession.moc"
