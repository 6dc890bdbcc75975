#include "desktop/ToolkitClipboard.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QMimeData>
#include <QWindow>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane::ToolkitClipboard {

namespace {

class OfferedText final : public QMimeData
{
public:
    explicit OfferedText(std::function<void()> asked) : m_asked(std::move(asked)) {}

protected:
    [[nodiscard]] QVariant retrieveData(const QString &type, QMetaType as) const override
    {
        if (type.startsWith("text/"_L1))
            m_asked();
        return QMimeData::retrieveData(type, as);
    }

private:
    const std::function<void()> m_asked;
};

} // namespace

void offer(const QString &text, QClipboard::Mode mode, std::function<void()> asked)
{
    auto *data = new OfferedText(std::move(asked)); // the clipboard owns it
    data->setText(text);
    // Tells programs that keep a history of the clipboard not to keep this.
    data->setData(u"org.nspasteboard.ConcealedType"_s, {});
    data->setData(u"x-kde-passwordManagerHint"_s, "secret"_ba);
    QGuiApplication::clipboard()->setMimeData(data, mode);
}

bool focusIsLostOnUs()
{
    if (!QGuiApplication::focusWindow())
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    if (QObject *focus = QGuiApplication::focusObject())
        QCoreApplication::sendEvent(focus, &query);
    return !query.value(Qt::ImEnabled).toBool();
}

} // namespace orvane::ToolkitClipboard
