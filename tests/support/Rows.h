#pragma once

#include <QTest>

namespace orvane::test {

/// The data of a test function: made with the names of its columns, then called once for each row with the
/// row's name and its values.
template <typename... Columns>
class Rows
{
public:
    template <typename... Names>
    explicit Rows(Names... names)
    {
        (QTest::addColumn<Columns>(names), ...);
    }

    void operator()(const char *name, const Columns &...values) const
    {
        (QTest::newRow(name) << ... << values);
    }

    void operator()(const QString &name, const Columns &...values) const
    {
        (*this)(qUtf8Printable(name), values...);
    }
};

} // namespace orvane::test
