#include "ui/FileDialogs.h"

#include "base/localization/Localization.h"

#include <QCoroSignal>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QWindow>

#include <memory>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString pathOf(const QList<QUrl> &chosen)
{
    return chosen.isEmpty() ? QString() : chosen.constFirst().toLocalFile();
}

QString documents()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace

QCoro::Task<QList<QUrl>> FileDialogs::chosen(Prepare prepare)
{
    if (m_dialog) {
        m_dialog->raise();
        co_return {};
    }
    const auto dialog = std::make_unique<QFileDialog>();
    m_dialog = dialog.get();
    prepare(*dialog);
    dialog->setModal(true);
    // Above the window that asked, which is none of the dialog's kind.
    dialog->winId();
    if (QWindow *own = dialog->windowHandle())
        own->setTransientParent(QGuiApplication::focusWindow());
    dialog->show();
    const int answer = co_await qCoro(dialog.get(), &QFileDialog::finished);
    if (answer != QDialog::Accepted)
        co_return {};
    m_folder = dialog->directory().path();
    co_return dialog->selectedUrls();
}

QCoro::Task<QList<QUrl>> FileDialogs::media()
{
    return chosen([](QFileDialog &dialog) {
        dialog.setWindowTitle(Localization::text(u"Выберите аудио или видео"));
        dialog.setFileMode(QFileDialog::ExistingFiles);
        dialog.setNameFilters(
            {Localization::text(u"Аудио и видео") +
                 u" (*.aac *.aif *.aiff *.amr *.avi *.caf *.flac *.m4a *.m4v *.mka *.mkv *.mov *.mp3 "
                 "*.mp4 *.mpg *.oga *.ogg *.opus *.ts *.wav *.webm *.wma *.wmv)"_s,
             Localization::text(u"Все файлы") + u" (*)"_s});
    });
}

QCoro::Task<QString> FileDialogs::model()
{
    co_return pathOf(co_await chosen([](QFileDialog &dialog) {
        dialog.setWindowTitle(Localization::text(u"Выберите файл модели"));
        dialog.setFileMode(QFileDialog::ExistingFile);
        dialog.setNameFilters({Localization::text(u"Модели") + u" (*.bin *.gguf)"_s,
                               Localization::text(u"Все файлы") + u" (*)"_s});
    }));
}

QCoro::Task<QString> FileDialogs::target(QString suggestion)
{
    co_return pathOf(co_await chosen([suggestion, folder = m_folder](QFileDialog &dialog) {
        dialog.setWindowTitle(Localization::text(u"Сохранить"));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDirectory(folder.isEmpty() ? documents() : folder);
        dialog.selectFile(suggestion);
    }));
}

QCoro::Task<QString> FileDialogs::folder()
{
    co_return pathOf(co_await chosen([folder = m_folder](QFileDialog &dialog) {
        dialog.setWindowTitle(Localization::text(u"Выберите папку"));
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        dialog.setDirectory(folder.isEmpty() ? documents() : folder);
    }));
}

} // namespace orvane
