#pragma once

#include "desktop/TextInjector.h"
#include "desktop/wayland/WaylandThread.h"

#include <memory>

namespace orvane {

/// Inserts texts in a Wayland session: by the selections that its compositor lets programs fill, and the keys
/// that it lets them press. A text counts as pasted when some program has asked for it.
class WaylandInjector final : public TextInjector
{
public:
    WaylandInjector();

    QCoro::Task<Outcome> insert(QString text) override;

private:
    [[nodiscard]] QCoro::Task<Outcome> insertByDataControl(QString text);
    [[nodiscard]] QCoro::Task<Outcome> insertByToolkit(QString text);

    std::shared_ptr<WaylandThread> m_thread; ///< null where the compositor has no clipboard for us
};

} // namespace orvane
