#include "ui/presentation/Prompt.h"

#include "correction/CorrectionPrompts.h"
#include "settings/AppSettings.h"

namespace orvane {

Prompt::Prompt(AppSettings &settings, QObject *parent) : QObject(parent), m_settings(settings)
{
    connect(&settings, &AppSettings::correctionPromptChanged, this, &Prompt::changed);
}

QString Prompt::text() const
{
    const QString stored = m_settings.correctionPrompt();
    return stored.trimmed().isEmpty() ? AppSettings::defaultCorrectionPrompt() : stored;
}

bool Prompt::isDefault() const
{
    return text() == AppSettings::defaultCorrectionPrompt();
}

QString Prompt::safeguard() const
{
    return CorrectionPrompts::safeguard();
}

void Prompt::store(const QString &text)
{
    if (text != this->text())
        m_settings.setCorrectionPrompt(text);
    Q_EMIT changed(); // a blank one is shown as the default one again
}

void Prompt::reset()
{
    m_settings.setCorrectionPrompt(AppSettings::defaultCorrectionPrompt());
    Q_EMIT changed();
}

} // namespace orvane
