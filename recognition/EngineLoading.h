#pragma once

#include <QObject>

#include <memory>

namespace orvane {

/// A load that is under way, shared by those who wait for it: it tells them of its end even when the
/// engine that loaded is gone by then, as a signal of the engine itself would not.
class EngineLoading : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] static std::shared_ptr<EngineLoading> begin()
    {
        // The last reference may be dropped inside this object's own signal.
        return {new EngineLoading, [](EngineLoading *ended) { ended->deleteLater(); }};
    }

Q_SIGNALS:
    void ended();

private:
    EngineLoading() = default;
};

} // namespace orvane
