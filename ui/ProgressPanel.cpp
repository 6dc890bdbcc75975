#include "ui/ProgressPanel.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace orvane {

namespace {

constexpr int steps = 1000;
constexpr int minimumBarWidth = 320; // pixels

} // namespace

ProgressPanel::ProgressPanel(const QString &title, const QString &text) : m_bar(new QProgressBar)
{
    setWindowTitle(title);
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    m_bar->setMinimumWidth(minimumBarWidth);
    m_bar->setRange(0, 0);

    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(label);
    layout->addWidget(m_bar);
}

void ProgressPanel::setFraction(double fraction)
{
    m_bar->setRange(0, steps);
    m_bar->setValue(qRound(fraction * steps));
}

} // namespace orvane
