#include "audio/Microphone.h"

#include "audio/capture/CaptureModule.h"
#include "base/Async.h"

#include <QLibrary>

#include <array>

using namespace Qt::StringLiterals;

namespace orvane {

QCoro::Task<QString> microphoneName(QString moduleFolder)
{
    return offMainThread([file = moduleFolder + u"/orvane-capture"_s] {
        const auto entry =
            reinterpret_cast<CaptureModuleEntry *>(QLibrary::resolve(file, captureModuleEntryName));
        if (!entry)
            return QString();
        std::array<char, 256> name{};
        entry()->nameInput(name.data(), name.size());
        return QString::fromUtf8(name.data());
    });
}

} // namespace orvane
