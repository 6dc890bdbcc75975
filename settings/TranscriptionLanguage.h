#pragma once

#include <QList>
#include <QObject>
#include <QString>

namespace orvane {

/// A language that speech is recognised in.
struct TranscriptionLanguage
{
    Q_GADGET
    Q_PROPERTY(QString code MEMBER code CONSTANT)
    Q_PROPERTY(QString displayName READ displayName)

public:
    /// What the recognition engine is told; "auto" lets it find out.
    QString code;
    /// The language's name in itself.
    QString name;

    /// The name to show. Only that of "auto" depends on the interface language.
    [[nodiscard]] QString displayName() const;

    /// Every language, in the order of the pickers; "auto" is the first.
    [[nodiscard]] static const QList<TranscriptionLanguage> &all();
    /// The entry with that code, else "auto".
    [[nodiscard]] static TranscriptionLanguage withCode(const QString &code);

    bool operator==(const TranscriptionLanguage &) const = default;
};

} // namespace orvane
