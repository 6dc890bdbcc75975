#include "ui/presentation/Notices.h"

#include <utility>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto plainTime = 4s;
constexpr auto offerTime = 8s;

} // namespace

Notices::Notices(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Notices::end);
}

void Notices::show(const QString &text)
{
    end();
    m_text = text;
    m_timer.start(plainTime);
    Q_EMIT changed();
}

void Notices::offer(const QString &text, const QString &action, std::function<void()> act,
                    std::function<void()> over)
{
    end();
    m_text = text;
    m_action = action;
    m_act = std::move(act);
    m_over = std::move(over);
    m_timer.start(offerTime);
    Q_EMIT changed();
}

void Notices::act()
{
    m_over = nullptr;
    const std::function<void()> act = std::exchange(m_act, nullptr);
    end();
    if (act)
        act();
}

void Notices::end()
{
    m_timer.stop();
    m_act = nullptr;
    m_text.clear();
    m_action.clear();
    const std::function<void()> over = std::exchange(m_over, nullptr);
    Q_EMIT changed();
    if (over)
        over();
}

} // namespace orvane
