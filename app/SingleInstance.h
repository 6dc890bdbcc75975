#pragma once

#include "base/files/FileLock.h"

#include <QString>

#include <optional>

namespace orvane {

/// Makes sure that one application runs in a session, through its name on the session bus, and that one works
/// on a user's data, through a lock in their folder. Both are held while this lives and given up however the
/// process ends.
class SingleInstance
{
public:
    enum class Claim {
        /// The name, if there is a bus that gives names, and the data are ours.
        First,
        AnotherRuns,
    };

    SingleInstance() = default;
    ~SingleInstance();
    Q_DISABLE_COPY_MOVE(SingleInstance)

    /// Waits for an earlier run that has given its name up but not the data yet, and says so. What is to
    /// answer under the name has to be on the bus already. Throws FileError when the data cannot be locked.
    [[nodiscard]] Claim claim(const QString &dataFolder);

    /// This run ends: the next one that starts waits for it.
    void giveUpName();

private:
    [[nodiscard]] bool waitForData(const QString &lockFile);

    bool m_hasName = false;
    std::optional<FileLock> m_data;
};

} // namespace orvane
