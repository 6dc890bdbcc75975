#pragma once

#include <QAbstractListModel>
#include <QList>

#include <algorithm>

namespace orvane {

/// A list for a view, with the number of its rows as a property.
class CountedModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int count() const { return rowCount(); }

Q_SIGNALS:
    void countChanged();
};

/// A list of rows made anew by whoever knows them: setRows() tells the view no more than what differs, so
/// that its selection and its place stay. Main thread.
template <typename Row>
class ListModel : public CountedModel
{
public:
    using CountedModel::CountedModel;

    [[nodiscard]] const QList<Row> &rows() const { return m_rows; }
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }

    // What is alike at the beginning and at the end stays; what stands between is taken out and put in.
    void setRows(const QList<Row> &rows)
    {
        const qsizetype oldCount = m_rows.size();
        const qsizetype shorter = std::min(rows.size(), oldCount);
        qsizetype first = 0;
        while (first < shorter && isSame(rows.at(first), m_rows.at(first)))
            ++first;
        qsizetype last = 0;
        while (last < shorter - first &&
               isSame(rows.at(rows.size() - 1 - last), m_rows.at(oldCount - 1 - last)))
            ++last;
        const QList<Row> old = m_rows;
        if (const qsizetype gone = oldCount - first - last; gone > 0) {
            beginRemoveRows({}, int(first), int(first + gone - 1));
            m_rows.remove(first, gone);
            endRemoveRows();
        }
        const qsizetype come = rows.size() - first - last;
        if (come > 0)
            beginInsertRows({}, int(first), int(first + come - 1));
        m_rows = rows;
        if (come > 0)
            endInsertRows();
        for (qsizetype i = 0; i < first; ++i)
            tellChange(i, old.at(i));
        for (qsizetype i = 1; i <= last; ++i)
            tellChange(rows.size() - i, old.at(oldCount - i));
        if (m_rows.size() != oldCount)
            Q_EMIT countChanged();
    }

protected:
    /// Whether the two stand for the same thing, whatever has changed of it.
    [[nodiscard]] virtual bool isSame(const Row &row, const Row &other) const = 0;

private:
    void tellChange(qsizetype row, const Row &before)
    {
        if (!(m_rows.at(row) == before))
            Q_EMIT dataChanged(index(int(row)), index(int(row)));
    }

    QList<Row> m_rows;
};

} // namespace orvane
