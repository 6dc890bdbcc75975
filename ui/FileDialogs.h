#pragma once

#include "ui/presentation/FileChooser.h"

#include <QFileDialog>
#include <QPointer>

namespace orvane {

/// The desktop's file dialogs, or the toolkit's where it has none; one at a time. Needs a QApplication.
class FileDialogs : public FileChooser
{
public:
    [[nodiscard]] QCoro::Task<QList<QUrl>> media() override;
    [[nodiscard]] QCoro::Task<QString> model() override;
    [[nodiscard]] QCoro::Task<QString> target(QString suggestion) override;
    [[nodiscard]] QCoro::Task<QString> folder() override;

private:
    using Prepare = std::function<void(QFileDialog &)>;

    [[nodiscard]] QCoro::Task<QList<QUrl>> chosen(Prepare prepare);

    QPointer<QFileDialog> m_dialog;
    /// Where the last file was saved.
    QString m_folder;
};

} // namespace orvane
