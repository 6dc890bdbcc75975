#pragma once

#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "desktop/TextInjector.h"
#include "dictation/DictationIndicator.h"
#include "dictation/Guidance.h"

#include <QStringList>

/// What a dictation meets outside the program, writing down what it is told.
namespace orvane::test {

class FakeIndicator : public DictationIndicator
{
public:
    void show(DictationController & /*dictation*/, AppSettings & /*settings*/) override { isShown = true; }
    void hide() override { isShown = false; }
    void notice(const QString &text) override { notices.append(text); }

    bool isShown = false;
    QStringList notices;
};

class FakeGuidance : public Guidance
{
public:
    void guide(const QString &title, const QString & /*detail*/) override { titles.append(title); }

    QStringList titles;
};

class FakeInjector : public TextInjector
{
public:
    QCoro::Task<Outcome> insert(QString text) override
    {
        texts.append(text);
        const Outcome result = outcome;
        if (end)
            co_await end->wait();
        else
            co_await sleepFor(std::chrono::milliseconds(0));
        ++ended;
        co_return result;
    }

    QStringList texts;
    Outcome outcome = Outcome::Pasted;
    /// Where there is one, texts are being inserted until it happens.
    std::shared_ptr<OneTimeEvent> end;
    int ended = 0;
};

} // namespace orvane::test
