#include "diagnostics/CheckResult.h"

using namespace Qt::StringLiterals;

namespace orvane {

QString nameOf(CheckResult::State state)
{
    switch (state) {
    case CheckResult::State::Unknown:
        return u"unknown"_s;
    case CheckResult::State::Good:
        return u"good"_s;
    case CheckResult::State::Bad:
        return u"bad"_s;
    }
    Q_UNREACHABLE();
}

} // namespace orvane
