#pragma once

#include <QString>

namespace orvane {

/// The folders the program works in, without trailing slashes. Made once at start and passed to
/// whoever needs one; nothing here is created by asking for it.
struct StandardFolders
{
    /// The user's data folder, shared by all applications.
    QString applicationSupport;
    /// Read-only files that come with the program; engines lie in its "engine" subfolder.
    QString resources;
    /// For files that end with the operation that made them.
    QString temporary;
    /// The user's caches, shared by all applications; empty where nothing is to be kept.
    QString caches = {};

    /// The user's private data: history, recordings, models, the engine process file.
    [[nodiscard]] QString orvane() const;
    [[nodiscard]] QString history() const;
    [[nodiscard]] QString recordings() const;
    [[nodiscard]] QString models() const;
    [[nodiscard]] QString correctionModels() const;
    [[nodiscard]] QString engineProcessFile() const;
    /// Whoever deletes it loses a moment; empty without caches.
    [[nodiscard]] QString historyIndex() const;

    /// The running user's folders. Needs a QCoreApplication: resources are found beside the program.
    [[nodiscard]] static StandardFolders ofUser();
};

/// The path of the program's command, whichever of its executables this is. Needs a QCoreApplication.
[[nodiscard]] QString commandOfProgram();

} // namespace orvane
