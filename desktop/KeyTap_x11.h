#pragma once

#include "base/Scope.h"
#include "desktop/KeyDisplay_x11.h"
#include "desktop/KeyGrab_x11.h"
#include "desktop/KeyTap.h"

#include <QCoroTask>

#include <QSet>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <optional>
#include <utility>

namespace orvane {

/// Keys of an X11 display: raw events of the X Input extension for the trigger keys, passive grabs of the
/// plain key, whatever locks are on, for F5 and Esc. Keys that other programs post count like real ones.
class X11KeyTap final : public KeyTap
{
    Q_OBJECT

public:
    X11KeyTap();
    ~X11KeyTap() override;
    Q_DISABLE_COPY_MOVE(X11KeyTap)

    void install() override;
    void uninstall() override;
    [[nodiscard]] bool isActive() const override { return m_display != nullptr; }
    [[nodiscard]] bool grabIsMissing() const override;
    [[nodiscard]] bool escapeIsMissing() const override { return m_escape.isMissing(); }
    [[nodiscard]] bool has(TriggerKey key) const override;
    [[nodiscard]] bool rightOptionTypes() const override;
    void setEscapeIntercepted(bool intercepted) override;

private:
    QCoro::Task<> connectToDisplay();
    QCoro::Task<> refreshMap();

    void readEvents();
    void handle(const xcb_generic_event_t &event);
    void handleInput(const xcb_generic_event_t &event);
    void handleRawKey(const xcb_generic_event_t &event);
    void handleDevices(const xcb_generic_event_t &event);

    void takeGrabs();
    void releaseGrabs();
    /// Whatever grabs were asked for are taken or refused once the server has answered this.
    void askForAnswer();
    void settleGrabs();
    void tryAgain();
    void disconnectFromDisplay();

    std::shared_ptr<KeyDisplay> m_display; // null while not connected
    std::unique_ptr<QSocketNotifier> m_readable;
    KeyGrab m_toggle;
    KeyGrab m_escape;
    bool m_escapeIsIntercepted = false;
    std::optional<unsigned> m_answer; // the request that tells how the grabs went
    std::pair<bool, bool> m_missing;  // any grab and that of Esc, as published
    QSet<std::pair<int, int>> m_down; // trigger keys, each after its device
    bool m_mapIsStale = false;
    bool m_mapIsBeingRead = false;
    QTimer m_retry;
    std::unique_ptr<Scope> m_installation; ///< null while not installed
};

} // namespace orvane
