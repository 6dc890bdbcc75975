#include "update/DeviceSources.h"

#include "base/system/Machine.h"

#include <QLocale>
#include <QSysInfo>

using namespace Qt::StringLiterals;

namespace orvane {

DeviceSources DeviceSources::ofThisMachine(const QString &root)
{
    return {.platformUUID = [root] { return Machine::identifier(root); },
            .os =
                [] {
                    return u"%1 (%2 %3)"_s.arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                                               QSysInfo::kernelVersion());
                },
            .model = [root] { return Machine::productName(root); },
            .cpu = [root] { return Machine::processorName(root); },
            .memory = [] { return double(Machine::physicalMemory()); },
            .locale = [] { return QLocale::system().name(); }};
}

} // namespace orvane
