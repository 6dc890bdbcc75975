#pragma once

#include <QDialog>

class QProgressBar;

namespace orvane {

/// A small window that shows how far something is. Closing it stops nothing and does not bring it back.
class ProgressPanel : public QDialog
{
    Q_OBJECT

public:
    /// Shows that the end is unknown until a fraction is reported.
    ProgressPanel(const QString &title, const QString &text);

    /// 0…1.
    void setFraction(double fraction);

private:
    QProgressBar *m_bar;
};

} // namespace orvane
