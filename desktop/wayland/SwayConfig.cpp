#include "desktop/wayland/SwayConfig.h"

#include <QHash>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QStringList wordsOf(const QString &line)
{
    static const QRegularExpression space(u"\\s+"_s);
    return line.split(space, Qt::SkipEmptyParts);
}

QString nameOf(const QString &key)
{
    static const QHash<QString, QString> others = {
        {u"control"_s, u"ctrl"_s}, {u"alt"_s, u"mod1"_s}, {u"super"_s, u"mod4"_s}};
    const QString name = key.toLower();
    return others.value(name, name);
}

} // namespace

SwayConfig::SwayConfig(const QString &text)
{
    QHash<QString, QString> variables;
    int depth = 0; // of blocks, such as those of modes
    for (const QString &line : text.split(u'\n')) {
        QStringList words = wordsOf(line);
        if (words.isEmpty() || words.constFirst().startsWith(u'#'))
            continue;
        if (words.size() >= 3 && words.constFirst() == "set"_L1)
            variables.insert(words.at(1), words.mid(2).join(u' '));
        if (depth == 0 && words.constFirst() == "bindsym"_L1) {
            const bool isAtRelease = words.removeAll(u"--release"_s) > 0;
            words.removeIf([](const QString &word) { return word.startsWith("--"_L1); });
            QStringList keys = words.value(1).split(u'+');
            for (QString &key : keys)
                key = variables.value(key, key);
            m_bound.insert(normalised((isAtRelease ? u"--release "_s : QString()) + keys.join(u'+')));
        }
        if (words.constLast() == "{"_L1)
            ++depth;
        else if (words.constFirst() == "}"_L1)
            --depth;
    }
}

QStringList SwayConfig::normalised(const QString &keys)
{
    QStringList words = wordsOf(keys);
    if (words.isEmpty())
        return {};
    QStringList names;
    for (const QString &key : words.takeLast().split(u'+'))
        names.append(nameOf(key));
    names.sort();
    return words + names;
}

} // namespace orvane
