#pragma once

#include "ui/presentation/ListModel.h"

#include <QVariantMap>

namespace orvane {

/// A list of rows with named values. Main thread.
class RowModel : public ListModel<QVariantMap>
{
    Q_OBJECT

public:
    /// Every row has these values. The first tells one row from another.
    explicit RowModel(const QList<QByteArray> &roles, QObject *parent = nullptr);

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override { return m_roles; }

protected:
    [[nodiscard]] bool isSame(const QVariantMap &row, const QVariantMap &other) const override;

private:
    const QString m_key;
    QHash<int, QByteArray> m_roles;
};

} // namespace orvane
