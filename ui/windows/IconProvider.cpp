#include "ui/windows/IconProvider.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int usualSize = 20;

} // namespace

QImage IconProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const QString name = id.section(u'/', 0, 0);
    const QString colour = id.section(u'/', 1, 1);
    QFile file(u":/qt/qml/Orvane/Windows/icons/%1.svg"_s.arg(name));
    if (!file.open(QFile::ReadOnly)) {
        qWarning("There is no icon %s", qUtf8Printable(name));
        return {};
    }
    QByteArray drawing = file.readAll();
    drawing.replace("currentColor", '#' + colour.toLatin1());
    QBuffer buffer(&drawing);
    QImageReader reader(&buffer, "svg");
    reader.setScaledSize(requestedSize.isValid() ? requestedSize : QSize(usualSize, usualSize));
    const QImage image = reader.read();
    *size = image.size();
    return image;
}

} // namespace orvane
