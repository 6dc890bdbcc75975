#include "ui/presentation/RowModel.h"

namespace orvane {

RowModel::RowModel(const QList<QByteArray> &roles, QObject *parent)
    : ListModel(parent),
      m_key(QString::fromLatin1(roles.constFirst()))
{
    for (qsizetype i = 0; i < roles.size(); ++i)
        m_roles.insert(Qt::UserRole + int(i), roles.at(i));
}

bool RowModel::isSame(const QVariantMap &row, const QVariantMap &other) const
{
    return row.value(m_key) == other.value(m_key);
}

QVariant RowModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count())
        return {};
    return rows().at(index.row()).value(QString::fromLatin1(m_roles.value(role)));
}

} // namespace orvane
