#include "app/settings/LocalizationTable.h"

namespace orvane::Localization {

namespace {

constexpr TextPair pairs[] = {
    // Dictation keys
    {u"правый Ctrl", u"right Ctrl"},
    {u"правый Alt", u"right Alt"},
    {u"правый ⌘", u"right ⌘"},
    {u"правый ⌥", u"right ⌥"},

    // Languages of speech: all but this one are called the same in every interface
    {u"Автоопределение", u"Auto-detect"},
};

} // namespace

std::span<const TextPair> table()
{
    return pairs;
}

} // namespace orvane::Localization
