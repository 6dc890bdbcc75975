#pragma once

#include <QMetaType>
#include <QString>
#include <QUrl>

namespace orvane {

/// A published version of the program.
struct UpdateRelease
{
    Q_GADGET
    Q_PROPERTY(QString version MEMBER version CONSTANT)
    Q_PROPERTY(QUrl url MEMBER url CONSTANT)

public:
    /// Dotted, such as "1.4.2"; as the server wrote it.
    QString version;
    /// The package to download: http or https.
    QUrl url;

    bool operator==(const UpdateRelease &) const = default;
};

} // namespace orvane
