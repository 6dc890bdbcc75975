#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <exception>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace orvane {

/// An open SQLite file. One thread.
class SqliteDatabase
{
public:
    /// The file cannot be opened, is locked for too long, is damaged, or lies on a full disk.
    class Failure : public std::exception
    {
    public:
        explicit Failure(int code) : m_code(code) {}
        /// The file was made by another version of the program, or is none of ours.
        [[nodiscard]] static Failure unknownForm();
        /// Another process works on it: the file itself is all right.
        [[nodiscard]] bool isBusy() const;
        [[nodiscard]] const char *what() const noexcept override;

    private:
        int m_code;
    };

    /// A statement with its values, numbered from 1; the columns of a row are numbered from 0.
    class Statement
    {
    public:
        Statement &bind(int number, qint64 value);
        Statement &bind(int number, QByteArrayView text);
        Statement &bindBlob(int number, QByteArrayView bytes);

        /// Whether there is a row; without one the statement can be run anew, with the same values or others.
        bool step();
        /// For a statement that gives no row.
        void run();

        [[nodiscard]] qint64 integer(int column) const;
        [[nodiscard]] QByteArray bytes(int column) const;
        [[nodiscard]] QString text(int column) const;

    private:
        friend class SqliteDatabase;
        struct Finalizer
        {
            void operator()(sqlite3_stmt *statement) const;
        };

        void require(int code);

        std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
    };

    /// Makes the file, for its owner alone, when it is not there; ":memory:" is none. Throws Failure, as all
    /// here does.
    explicit SqliteDatabase(const QString &path);

    void run(const char *statements);
    [[nodiscard]] Statement prepare(const char *sql);
    [[nodiscard]] qint64 lastRow() const;

private:
    struct Closer
    {
        void operator()(sqlite3 *database) const;
    };

    std::unique_ptr<sqlite3, Closer> m_database;
};

/// All that happens while it lives is kept, by commit(), or none of it.
class SqliteTransaction
{
public:
    explicit SqliteTransaction(SqliteDatabase &database);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction &) = delete;
    SqliteTransaction &operator=(const SqliteTransaction &) = delete;

    void commit();

private:
    SqliteDatabase &m_database;
    bool m_isOpen = true;
};

} // namespace orvane
