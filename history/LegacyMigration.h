#pragma once

#include "base/StandardFolders.h"

namespace orvane {

class UserDefaults;

/// Takes over what the product's earlier version left: its data folder and its preferences. Runs at
/// every start, before anything reads either, and does nothing once they are gone. Failures are
/// ignored: what could not be moved stays where it is.
class LegacyMigration
{
public:
    /// Moves the old folder to the new one's place or, when there is a new one, what is missing there
    /// into it. What both hold stays in the old folder.
    static void migrateAppSupportDirectory(const StandardFolders &folders);

    /// Moves old preferences to their new keys unless those hold a value.
    static void migrateDefaults(UserDefaults &defaults);
};

} // namespace orvane
