#include "correction/BuiltInModel.h"

#include "base/Error.h"
#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// This system has no language model of its own.
class NoBuiltInModel : public BuiltInModel
{
public:
    [[nodiscard]] ModelAvailability availability() const override
    {
        return {.isReady = false,
                .message = Localization::text(u"Apple Intelligence недоступен в этой сборке.")};
    }

    [[nodiscard]] QCoro::Task<QString> respond(QString, QString, std::stop_token) override
    {
        throw Error(availability().message);
        co_return {};
    }
};

} // namespace

std::unique_ptr<BuiltInModel> BuiltInModel::ofThisSystem()
{
    return std::make_unique<NoBuiltInModel>();
}

} // namespace orvane
