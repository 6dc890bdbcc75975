#include "ui/Dialogs.h"

#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTextDocumentFragment>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Choice = UpdatePresenter::Choice;

namespace {

const UpdatePresenter::Offer anOffer = {.title = u"Доступно обновление <b>2</b>"_s,
                                        .text = u"Установлена версия 1.\n\nНажмите «Скачать» & ждите."_s,
                                        .downloadButton = u"Скачать"_s,
                                        .laterButton = u"Позже"_s};

QList<QWidget *> windows()
{
    return QApplication::topLevelWidgets();
}

template <typename Window>
Window *onlyWindow()
{
    return windows().size() == 1 ? qobject_cast<Window *>(windows().constFirst()) : nullptr;
}

QPushButton *buttonOf(const QMessageBox &message, const QString &text)
{
    for (QAbstractButton *button : message.buttons())
        if (button->text() == text)
            return qobject_cast<QPushButton *>(button);
    return nullptr;
}

QString shownText(const QMessageBox &message)
{
    return QTextDocumentFragment::fromHtml(message.text()).toPlainText();
}

} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dialogs = std::make_unique<Dialogs>();
        QVERIFY(windows().isEmpty()); // none before there is something to show
    }

    void cleanup()
    {
        // Without the help of the destructor, since the program stays.
        QTRY_VERIFY(windows().isEmpty());
        m_dialogs.reset();
    }

    void answers_data()
    {
        const Rows<std::function<void(QMessageBox &)>, Choice> row("answer", "choice");
        row(
            "Download", [](QMessageBox &m) { buttonOf(m, anOffer.downloadButton)->click(); },
            Choice::Download);
        row("Later", [](QMessageBox &m) { buttonOf(m, anOffer.laterButton)->click(); }, Choice::Later);
        row("Enter", [](QMessageBox &m) { QTest::keyClick(&m, Qt::Key_Return); }, Choice::Download);
        row("Escape", [](QMessageBox &m) { QTest::keyClick(&m, Qt::Key_Escape); }, Choice::Later);
        row("closed", [](QMessageBox &m) { m.close(); }, Choice::Later);
        row("closed with all windows", [](QMessageBox &) { QApplication::closeAllWindows(); }, Choice::Later);
    }

    void answers()
    {
        QFETCH(const std::function<void(QMessageBox &)>, answer);
        QFETCH(const Choice, choice);
        const TaskResult offer(m_dialogs->offer(anOffer, {}));
        auto *message = onlyWindow<QMessageBox>();
        QVERIFY(message && message->isVisible());
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(shownText(*message), anOffer.title + u'\n' + anOffer.text);
        answer(*message);
        QVERIFY(offer.succeeded());
        QCOMPARE(offer.value(), choice);
    }

    void stoppedOffers()
    {
        std::stop_source stop;
        const TaskResult first(m_dialogs->offer(anOffer, stop.get_token()));
        stop.request_stop();
        QVERIFY(first.isCancelled());
        stop = {};
        const TaskResult second(m_dialogs->offer(anOffer, stop.get_token()));
        QTRY_VERIFY(onlyWindow<QMessageBox>());
        QVERIFY(!second.isDone());
        onlyWindow<QMessageBox>()->close();
        QCOMPARE(second.value(), Choice::Later);
        stop.request_stop(); // too late to matter
    }

    void endOfTheProgram()
    {
        const TaskResult offer(m_dialogs->offer(anOffer, {}));
        m_dialogs->notice(u"Не удалось скачать обновление"_s, u"Сервер не отвечает."_s);
        m_dialogs->showProgress(u"Скачиваю обновление"_s, u"Скачиваю обновление…"_s);
        QCOMPARE(windows().size(), 3);
        m_dialogs.reset(); // no event loop runs any more
        QVERIFY(windows().isEmpty());
        QVERIFY(offer.isCancelled());
    }

    void notices()
    {
        m_dialogs->notice(u"Не удалось открыть обновление"_s, u"Файл: /tmp/<i>a</i>  & b.deb"_s);
        auto *message = onlyWindow<QMessageBox>();
        QVERIFY(message && message->isVisible());
        QCOMPARE(shownText(*message), u"Не удалось открыть обновление\nФайл: /tmp/<i>a</i>  & b.deb"_s);
        message->button(QMessageBox::Ok)->click();
    }

    void progress()
    {
        m_dialogs->showProgress(u"Скачиваю обновление"_s, u"Скачиваю <обновление>…"_s);
        auto *panel = onlyWindow<QDialog>();
        QVERIFY(panel && panel->isVisible() && !panel->isModal());
        QCOMPARE(panel->windowTitle(), u"Скачиваю обновление"_s);
        QCOMPARE(panel->findChild<QLabel *>()->text(), u"Скачиваю <обновление>…"_s);
        const auto *bar = panel->findChild<QProgressBar *>();
        QCOMPARE(bar->maximum(), 0); // busy, until something is known
        m_dialogs->setProgress(0.25);
        QCOMPARE(bar->value() * 4, bar->maximum());
        panel->close();
        m_dialogs->setProgress(1); // goes on without being seen
        QCOMPARE(bar->value(), bar->maximum());
        QVERIFY(!panel->isVisible());
        m_dialogs->hideProgress();
        QVERIFY(windows().isEmpty());
    }

private:
    std::unique_ptr<Dialogs> m_dialogs;
};

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
