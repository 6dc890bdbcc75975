#pragma once

#include "base/Scope.h"
#include "history/RecordSummary.h"
#include "ui/presentation/ListModel.h"

#include <QSet>
#include <QUuid>

#include <optional>

namespace orvane {

class HistoryStore;
class Notices;
class RecordSaver;

/// The records by day, newest first, or those in which the user's words stand. What is deleted stays on the
/// disk as long as it can be taken back. Main thread.
class HistoryList : public ListModel<RecordSummary>
{
    Q_OBJECT
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    Q_PROPERTY(bool isLoaded READ isLoaded NOTIFY loadedChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)
    Q_PROPERTY(QStringList selection READ selection NOTIFY selectionChanged)

public:
    /// They outlive this.
    HistoryList(HistoryStore &history, RecordSaver &saver, Notices &notices, QObject *parent = nullptr);
    /// What was deleted is, for good.
    ~HistoryList() override;

    [[nodiscard]] QString search() const { return m_search; }
    void setSearch(const QString &words);
    [[nodiscard]] bool isLoaded() const;
    /// Why the disk does not hold what is shown here; empty when it does.
    [[nodiscard]] QString error() const;

    /// The ids of the records that were chosen together, in the order of the list; empty when none were.
    [[nodiscard]] QStringList selection() const;
    Q_INVOKABLE void toggleSelected(int row);
    /// From the row that was chosen last to this one.
    Q_INVOKABLE void selectTo(int row);
    Q_INVOKABLE void clearSelection();

    Q_INVOKABLE void rename(const QString &id, const QString &title);
    /// What the user is asked before records are deleted.
    [[nodiscard]] Q_INVOKABLE QString removalTitle(const QStringList &ids) const;
    [[nodiscard]] Q_INVOKABLE QString removalText(const QStringList &ids) const;
    Q_INVOKABLE void remove(const QStringList &ids);
    /// As "txt", "md" or "srt", where the user says.
    Q_INVOKABLE void save(const QStringList &ids, const QString &format);
    /// Of a "day" of the rows, in the interface language.
    [[nodiscard]] Q_INVOKABLE QString dayName(const QString &day) const;
    Q_INVOKABLE void open(const QString &id) { Q_EMIT opened(QUuid(id)); }

    /// The interface language, or the day, is another.
    void relabel();

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void searchChanged();
    void loadedChanged();
    void errorChanged();
    void selectionChanged();
    void opened(const QUuid &id);
    /// The record is about to go from every view.
    void removed(const QUuid &id);

protected:
    [[nodiscard]] bool isSame(const RecordSummary &row, const RecordSummary &other) const override
    {
        return row.id == other.id;
    }

private:
    enum Role {
        IdRole = Qt::UserRole,
        TitleRole,
        DetailRole,
        TimeRole,
        KindRole,
        KindNameRole,
        DayRole,
        SelectedRole
    };

    void show();
    void searchAnew();
    QCoro::Task<> find();
    QCoro::Task<QSet<QUuid>> search(QString words);
    void removeForGood();
    [[nodiscard]] const RecordSummary *record(const QString &id) const;
    void setSelected(const QSet<QUuid> &ids);

    HistoryStore &m_history;
    RecordSaver &m_saver;
    Notices &m_notices;
    QString m_search;
    /// What holds the words; none without words.
    std::optional<QSet<QUuid>> m_found;
    bool m_isSearching = false;
    bool m_mustSearchAgain = false;
    QSet<QUuid> m_selected;
    int m_selectedLast = -1;
    QSet<QUuid> m_removing;
    bool m_isRemoving = false;
    Scope m_scope;
};

} // namespace orvane
