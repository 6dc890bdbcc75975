#include "base/localization/Localization.h"

#include "base/localization/LocalizationTable.h"

#include <atomic>

using namespace Qt::StringLiterals;

namespace orvane::Localization {

namespace {

std::atomic<bool> s_english = false;

QHash<QString, QString> makeTwins()
{
    QHash<QString, QString> twins;
    twins.reserve(qsizetype(table().size()));
    for (const TextPair &pair : table())
        twins.insert(pair.russian.toString(), pair.english.toString());
    return twins;
}

} // namespace

void setLanguage(const QString &code)
{
    s_english = code == u"en"_s;
}

bool isEnglish()
{
    return s_english;
}

QString text(const QString &russian)
{
    return isEnglish() ? en().value(russian, russian) : russian;
}

const QHash<QString, QString> &en()
{
    static const QHash<QString, QString> twins = makeTwins();
    return twins;
}

} // namespace orvane::Localization
