#include "app/commandline/Output.h"

#include "app/base/Error.h"
#include "app/settings/Localization.h"

#include <QSaveFile>

#include <cerrno>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace orvane::Output {

void write(const QByteArray &bytes)
{
    const size_t written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    if (written == size_t(bytes.size()) && std::fflush(stdout) == 0)
        return;
    throw Error(Localization::text(u"Не удалось записать результат: "_s) + qt_error_string(errno));
}

void write(const QByteArray &bytes, const QString &destination)
{
    if (destination == standardOutput) {
        write(bytes);
        return;
    }
    QSaveFile file(destination);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        throw Error(Localization::text(u"Не удалось записать файл"_s) +
                    u" «%1»: %2"_s.arg(destination, file.errorString()));
    }
}

void complain(const QString &sentence)
{
    std::fprintf(stderr, "%s\n", sentence.toUtf8().constData());
}

} // namespace orvane::Output
