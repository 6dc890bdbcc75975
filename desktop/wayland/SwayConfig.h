#pragma once

#include <QString>
#include <QStringList>

#include <set>

namespace orvane {

/// The keys that a sway user's own configuration binds outside of its modes: what `bindsym` is given, such as
/// "--release Control_R" or "Ctrl+Mod1+space". Files that it includes are not seen.
class SwayConfig
{
public:
    SwayConfig() = default;
    explicit SwayConfig(const QString &text);

    /// Whatever the order and the names of the modifiers.
    [[nodiscard]] bool binds(const QString &keys) const { return m_bound.contains(normalised(keys)); }

private:
    /// First the word that says when, if one does, then the keys.
    static QStringList normalised(const QString &keys);

    std::set<QStringList> m_bound;
};

} // namespace orvane
