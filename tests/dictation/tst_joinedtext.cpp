#include "tests/support/DictationReplay.h"
#include "tests/support/Speech.h"
#include "tests/support/WordError.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

const QStringList sentences = {
    u"Good morning everyone, and thank you for coming to this meeting."_s,
    u"The first thing I want to talk about is the new bridge over the river."_s,
    u"It was planned many years ago, but nobody could agree where it should stand."_s,
    u"In the end the council chose a place that is close to the railway station."_s,
    u"The work began in March and will probably last until the end of next year."_s,
    u"During that time the small streets around the harbor will be closed to cars."_s,
    u"Please leave your bicycles at the gate and walk the last few hundred meters."_s,
    u"The second question is about money."_s,
    u"We have spent a little more than we expected, because the ground was softer."_s,
    u"That is all from me for today."_s};

} // namespace

/// A real engine, and a dictation so long that parts of it are settled.
class TestJoinedText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAsOne()
    {
        const QString engine = qEnvironmentVariable("ORVANE_TEST_ENGINE");
        const QString model = qEnvironmentVariable("ORVANE_TEST_MODELS") + u"/ggml-base.bin"_s;
        if (!Speech::isInstalled(Speech::Voice::English) || !QFileInfo::exists(engine) ||
            !QFileInfo::exists(model))
            QSKIP("there is no engine, or nobody to speak to it");
        Speech speech;
        for (const QString &sentence : sentences) {
            speech.say(sentence);
            speech.pause(0.7);
        }
        speech.addNoise(-60);

        DictationReplay replay(QFileInfo(engine).path(), model);
        const auto [text, snapshots] = replay.dictated(speech.samples());
        QVERIFY2(speech.seconds() > 40 && snapshots >= 2, qPrintable(QString::number(snapshots)));
        // A word that a cut doubled or took away would be one of about a hundred.
        const double wholeError = wordError(replay.whole(speech.samples()), sentences.join(u' '));
        const double error = wordError(text, sentences.join(u' '));
        QVERIFY2(error <= wholeError + 0.03, qPrintable(text));
    }
};

QTEST_GUILESS_MAIN(TestJoinedText)
#include "tst_joinedtext.moc"
