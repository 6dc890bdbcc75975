#pragma once

#include <QObject>

#include <memory>

namespace orvane {

/// Something that coroutines wait for, shared by them and by whoever makes it happen. They are resumed from
/// the event loop, even when who made it happen is gone by then; waiting for a signal of an object that is
/// destroyed would never end.
class OneTimeEvent : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] static std::shared_ptr<OneTimeEvent> create()
    {
        // The last reference may be dropped inside this object's own signal.
        return {new OneTimeEvent, [](OneTimeEvent *event) { event->deleteLater(); }};
    }

Q_SIGNALS:
    void happened();

private:
    OneTimeEvent() = default;
};

} // namespace orvane
