#pragma once

#include <QList>
#include <QString>

namespace orvane {

/// A string literal of a source file as the compiler sees it: adjacent literals joined, escapes resolved.
struct SourceText
{
    QString text;
    int line = 0;

    bool operator==(const SourceText &) const = default;
};

enum class SourceLanguage { Cpp, Qml };

/// Every string literal of a source outside comments, in order. A QML template literal gives one text for
/// each stretch between its expressions, and the literals of the expressions as texts of their own.
[[nodiscard]] QList<SourceText> stringLiterals(const QString &source, SourceLanguage language);

} // namespace orvane
