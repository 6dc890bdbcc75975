#include "desktop/wayland/GnomeAccelerator.h"

#include "settings/TriggerName.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace orvane::GnomeAccelerator {

QString acceleratorOf(TriggerKey trigger)
{
    return trigger == TriggerKey::RightOption ? u"Alt_R"_s : u"Control_R"_s;
}

QString normalised(const QString &accelerator)
{
    QString text = accelerator.toLower();
    text.replace(u"<primary>"_s, u"<control>"_s).replace(u"<ctrl>"_s, u"<control>"_s);
    QStringList modifiers = text.split(u'>');
    const QString key = modifiers.takeLast();
    modifiers.sort();
    return (modifiers << key).join(u'>');
}

QString nameOf(const QString &accelerator)
{
    for (const TriggerKey trigger : triggerKeys) {
        if (accelerator == acceleratorOf(trigger))
            return triggerName(trigger).toString();
    }
    QStringList names = normalised(accelerator).remove(u'<').split(u'>');
    for (QString &name : names) {
        if (name == "control"_L1)
            name = u"ctrl"_s;
        if (!name.isEmpty())
            name.front() = name.front().toUpper();
    }
    if (names.removeAll(u"Ctrl"_s) > 0)
        names.prepend(u"Ctrl"_s);
    return names.join(u'+');
}

QString nameIn(const QString &description)
{
    static const QRegularExpression accelerator(u"(?:^|\\s)((?:<\\w+>)+\\w+|\\w+_[LR])$"_s);
    const QRegularExpressionMatch match = accelerator.match(description);
    return match.hasMatch() ? nameOf(match.captured(1)) : description;
}

} // namespace orvane::GnomeAccelerator
