#pragma once

#include <QDir>
#include <QImage>
#include <QString>

class QWindow;

/// Lets the windows draw and what is read come.
void settle();

/// A folder of pictures of one look and language.
struct Album
{
    QDir folder;
    bool isDark = false;
    QString language;

    /// A page as the window shows it; for the README also on a desktop.
    void take(QWindow *window, const QString &page) const;
    /// The dictation indicator on a desktop.
    void takeIndicator(QWindow *indicator, const QString &state) const;

private:
    [[nodiscard]] QString nameOf(const QString &page) const;
    void save(const QImage &picture, const QString &name) const;
};
