#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <QCoroTask>

namespace orvane {

/// Asks the user for files, in dialogs.
class FileChooser
{
public:
    virtual ~FileChooser() = default;
    /// Audio and video files to transcribe; empty when none were chosen.
    [[nodiscard]] virtual QCoro::Task<QList<QUrl>> media() = 0;
    /// A model's file; empty when none was chosen.
    [[nodiscard]] virtual QCoro::Task<QString> model() = 0;
    /// Where to save; empty when nowhere. The suggestion is a file's name without folder.
    [[nodiscard]] virtual QCoro::Task<QString> target(QString suggestion) = 0;
    /// A folder for several files; empty when none was chosen.
    [[nodiscard]] virtual QCoro::Task<QString> folder() = 0;
};

/// A title as the name of a file: without what a file system or a shell takes for something else, never empty
/// and of at most 120 characters.
[[nodiscard]] QString fileNameFor(const QString &title);

} // namespace orvane
