#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDController.h"

#include <QApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>
#include <QWindow>

#include <xcb/xtest.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

// On the display's one screen of 1280 × 800.
constexpr QRect place(450, 594, 380, 126);
constexpr QPoint emailChip(600, 696);
/// What the capsule grows by for the words so far.
constexpr QRect placeOfWords(450, 594 - 48, 380, 48);
constexpr QColor capsule(0x21, 0x21, 0x20);
constexpr QColor accent(0xff, 0x6b, 0x57);

QImage screen(QRect part)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, part.x(), part.y(), part.width(), part.height())
        .toImage();
}

QColor pixel(QPoint position)
{
    return screen({position, QSize(1, 1)}).pixelColor(0, 0);
}

bool has(const QImage &image, QColor color)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color)
                return true;
        }
    }
    return false;
}

bool isShown()
{
    return pixel(place.topLeft() + QPoint(190, 6)) == capsule;
}

/// The window of the scene, which is of a class that this program does not know.
QWindow *sceneWindow()
{
    for (QWindow *window : QGuiApplication::topLevelWindows())
        if (window->inherits("QQuickWindow"))
            return window;
    return nullptr;
}

/// The mouse as if moved by hand.
void sendMouse(std::uint8_t type, std::uint8_t button, QPoint position)
{
    const XcbConnection connection = XcbConnection::open();
    xcb_test_fake_input(connection.get(), type, button, XCB_CURRENT_TIME, connection.root(),
                        std::int16_t(position.x()), std::int16_t(position.y()), 0);
    // Waits until the server has done it.
    std::free(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
}

void moveMouse(QPoint position)
{
    sendMouse(XCB_MOTION_NOTIFY, 0, position);
}

/// Whom a click there reaches.
xcb_window_t windowUnderMouse(QPoint position)
{
    moveMouse(position);
    const XcbConnection connection = XcbConnection::open();
    const XcbOwned<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(
        connection.get(), xcb_query_pointer(connection.get(), connection.root()), nullptr));
    return pointer->child;
}

void click(QPoint position)
{
    moveMouse(position);
    sendMouse(XCB_BUTTON_PRESS, XCB_BUTTON_INDEX_1, position);
    sendMouse(XCB_BUTTON_RELEASE, XCB_BUTTON_INDEX_1, position);
}

} // namespace

class TestHUDController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        moveMouse({10, 10});
        m_hud.setState(DictationState::Recording);
        m_hud.setWaveform(QList<float>(48, 0.0F));
        m_controller = make(QStringLiteral(ORVANE_RESOURCES));
        QVERIFY(!sceneWindow());
    }

    void cleanup()
    {
        m_controller.reset();
        QTRY_VERIFY(!isShown());
    }

    void showsAndHides()
    {
        m_controller->show();
        QTRY_VERIFY(isShown());
        QVERIFY(pixel(place.topLeft() - QPoint(-190, 1)) != capsule);
        QVERIFY(pixel(place.bottomRight() - QPoint(190, 6)) == capsule);
        // Nobody blends windows on this display, so the corners must not be there at all.
        for (const QPoint corner :
             {place.topLeft(), place.topRight(), place.bottomLeft(), place.bottomRight()})
            QCOMPARE(pixel(corner), pixel({0, 0}));

        m_controller->hide();
        QTRY_VERIFY(!isShown());
        m_controller->show();
        m_controller->hide();
        QTest::qWait(200); // longer than it takes to be shown again
        QVERIFY(!isShown());

        // Hidden before it was first shown.
        m_controller = make(QStringLiteral(ORVANE_RESOURCES));
        m_controller->show();
        m_controller->hide();
        QTest::qWait(500);
        QVERIFY(!isShown());
    }

    void keepsTheFocusWhereItIs()
    {
        const FocusedEditor editor(FocusedEditor::Kind::Terminal);
        const XKeyboard keyboard;
        const xcb_window_t focused = keyboard.focus();
        m_controller->show();
        QTRY_VERIFY(isShown());
        QCOMPARE(keyboard.focus(), focused);

        m_settings.setDictationMode(DictationMode::Correct);
        click(emailChip);
        QTRY_COMPARE(m_settings.dictationMode(), DictationMode::Email);
        QTRY_COMPARE(pixel(emailChip + QPoint(-28, 0)), accent);
        QCOMPARE(keyboard.focus(), focused);
        QVERIFY(!QGuiApplication::focusWindow());
    }

    void helpOfAChip()
    {
        m_controller->show();
        QTRY_VERIFY(isShown());
        moveMouse(emailChip);
        QTRY_VERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), m_hud.chipHelps().at(1));
        m_controller->hide();
        QTRY_VERIFY(!QToolTip::isVisible());
    }

    void notices()
    {
        m_settings.setDictationMode(DictationMode::Email);
        m_controller->show();
        QTRY_COMPARE(pixel(emailChip + QPoint(-28, 0)), accent);
        m_controller->notice(u"Текст в буфере обмена — вставьте его: Ctrl+V"_s);
        QTRY_COMPARE(pixel(emailChip + QPoint(-28, 0)), capsule); // nothing but the text
        QTRY_COMPARE(pixel(emailChip + QPoint(-28, 0)), accent);  // the dictation goes on
        m_controller->hide();

        m_controller->notice(u"…"_s); // after a dictation
        QTRY_VERIFY(isShown());
        QTRY_VERIFY(!isShown());

        m_controller->notice(u"…"_s);
        m_controller->show(); // a new dictation takes its place
        QTRY_COMPARE(pixel(emailChip + QPoint(-28, 0)), accent);
    }

    void drawsNothingAtRest()
    {
        m_controller->show();
        QTRY_VERIFY(isShown());
        QSignalSpy frames(sceneWindow(), SIGNAL(frameSwapped()));
        QTRY_VERIFY(!frames.wait(500));
        m_hud.setWaveform(QList<float>(48, 1.0F));
        QTRY_COMPARE(pixel(place.topLeft() + QPoint(22, 71 - 9)), accent);
        QVERIFY(frames.size() > 2); // it was animated
        QTRY_VERIFY(!frames.wait(500));
    }

    void growsUpwardsForTheWords()
    {
        m_settings.setDictationMode(DictationMode::Email);
        m_controller->show();
        QTRY_COMPARE(pixel(emailChip + QPoint(-28, 0)), accent);
        QSignalSpy frames(sceneWindow(), SIGNAL(frameSwapped()));
        QTRY_VERIFY(!frames.wait(500)); // what was animated stands still
        const QImage before = screen(place);
        const QColor desktop = pixel({0, 0});
        QCOMPARE(pixel(placeOfWords.center()), desktop);

        m_hud.setLiveText({.settled = u"Первые"_s, .unsettled = u"слова"_s});
        const QPoint top(640, placeOfWords.top() + 6);
        QTRY_COMPARE(pixel(top), capsule);
        QTRY_COMPARE(screen(QRect(470, 606, 340, 100)), before.copy(20, 12, 340, 100)); // nothing moved
        for (const QPoint corner : {placeOfWords.topLeft(), placeOfWords.topRight()})
            QCOMPARE(pixel(corner), desktop);
        QTRY_VERIFY(has(screen(placeOfWords), QColor(0xed, 0xec, 0xe8)));
        QVERIFY(has(screen(placeOfWords), QColor(0x9c, 0x9a, 0x93)));

        m_hud.setLiveText({});
        QTest::qWait(300);
        QCOMPARE(pixel(top), capsule);
        m_controller->hide();
        m_controller->show();
        QTRY_VERIFY(isShown());
        QCOMPARE(pixel(top), desktop); // the next one begins small, at once
    }

    void letsClicksPassAboveIt()
    {
        m_controller->show();
        QTRY_VERIFY(isShown());
        const auto ours = xcb_window_t(sceneWindow()->winId());
        QCOMPARE(windowUnderMouse(place.center()), ours);
        QVERIFY(windowUnderMouse(placeOfWords.center()) != ours);
        m_hud.setLiveText({.settled = u"Слова"_s, .unsettled = {}});
        QTRY_COMPARE(windowUnderMouse(placeOfWords.center()), ours);
    }

    void missingModule()
    {
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(u"^The dictation indicator could not be loaded: "_s));
        m_controller = make(m_folder.path());
        m_controller->notice(u"первое"_s);
        QTRY_COMPARE(m_saidElsewhere, QStringList{u"первое"_s});
        m_controller->notice(u"второе"_s);
        QCOMPARE(m_saidElsewhere.size(), 2);
        QVERIFY(!sceneWindow());
    }

private:
    [[nodiscard]] std::unique_ptr<HUDController> make(const QString &moduleFolder)
    {
        return std::make_unique<HUDController>(m_hud, moduleFolder,
                                               [this](const QString &text) { m_saidElsewhere << text; });
    }

    QStringList m_saidElsewhere;
    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"settings.json"_s)};
    AppSettings m_settings{m_defaults};
    DictationHUDModel m_hud{m_settings};
    std::unique_ptr<HUDController> m_controller;
};

ORVANE_DISPLAY_TEST_MAIN(TestHUDController, QApplication)
#include "tst_hudcontroller.moc"
