#include "history/SqliteDatabase.h"

#include "base/files/PrivateFile.h"

#include <QFile>

#include <sqlite3.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int busyTimeoutMs = 3000;

void require(int code)
{
    if (code != SQLITE_OK)
        throw SqliteDatabase::Failure(code);
}

} // namespace

SqliteDatabase::Failure SqliteDatabase::Failure::unknownForm()
{
    return Failure(SQLITE_NOTADB);
}

bool SqliteDatabase::Failure::isBusy() const
{
    return (m_code & 0xff) == SQLITE_BUSY || (m_code & 0xff) == SQLITE_LOCKED;
}

const char *SqliteDatabase::Failure::what() const noexcept
{
    return sqlite3_errstr(m_code);
}

void SqliteDatabase::Closer::operator()(sqlite3 *database) const
{
    sqlite3_close_v2(database);
}

SqliteDatabase::SqliteDatabase(const QString &path)
{
    // SQLite would let others read it; what it makes beside the file gets the file's permissions.
    if (path != ":memory:"_L1)
        static_cast<void>(QFile(path).open(QFile::ReadWrite, privateFile));
    const QByteArray file = QFile::encodeName(path);
    sqlite3 *database = nullptr;
    const int code =
        sqlite3_open_v2(file.constData(), &database,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    require(code);
    require(sqlite3_busy_timeout(database, busyTimeoutMs));
}

void SqliteDatabase::run(const char *statements)
{
    require(sqlite3_exec(m_database.get(), statements, nullptr, nullptr, nullptr));
}

SqliteDatabase::Statement SqliteDatabase::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    require(sqlite3_prepare_v2(m_database.get(), sql, -1, &statement, nullptr));
    Statement prepared;
    prepared.m_statement.reset(statement);
    return prepared;
}

qint64 SqliteDatabase::lastRow() const
{
    return sqlite3_last_insert_rowid(m_database.get());
}

void SqliteDatabase::Statement::Finalizer::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

void SqliteDatabase::Statement::require(int code)
{
    if (code == SQLITE_OK)
        return;
    sqlite3_reset(m_statement.get());
    throw Failure(code);
}

SqliteDatabase::Statement &SqliteDatabase::Statement::bind(int number, qint64 value)
{
    require(sqlite3_bind_int64(m_statement.get(), number, value));
    return *this;
}

SqliteDatabase::Statement &SqliteDatabase::Statement::bind(int number, QByteArrayView text)
{
    require(sqlite3_bind_text64(m_statement.get(), number, text.isNull() ? "" : text.data(),
                                sqlite3_uint64(text.size()), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

SqliteDatabase::Statement &SqliteDatabase::Statement::bindBlob(int number, QByteArrayView bytes)
{
    require(sqlite3_bind_blob64(m_statement.get(), number, bytes.data(), sqlite3_uint64(bytes.size()),
                                SQLITE_TRANSIENT));
    return *this;
}

bool SqliteDatabase::Statement::step()
{
    const int code = sqlite3_step(m_statement.get());
    if (code == SQLITE_ROW)
        return true;
    sqlite3_reset(m_statement.get());
    require(code == SQLITE_DONE ? SQLITE_OK : code);
    return false;
}

void SqliteDatabase::Statement::run()
{
    while (step()) {
    }
}

qint64 SqliteDatabase::Statement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

QByteArray SqliteDatabase::Statement::bytes(int column) const
{
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(m_statement.get(), column));
    return {bytes, sqlite3_column_bytes(m_statement.get(), column)};
}

QString SqliteDatabase::Statement::text(int column) const
{
    return QString::fromUtf8(bytes(column));
}

SqliteTransaction::SqliteTransaction(SqliteDatabase &database) : m_database(database)
{
    m_database.run("BEGIN IMMEDIATE");
}

SqliteTransaction::~SqliteTransaction()
{
    try {
        if (m_isOpen)
            m_database.run("ROLLBACK");
    } catch (const SqliteDatabase::Failure &) {
        // it has been rolled back already
    }
}

void SqliteTransaction::commit()
{
    m_database.run("COMMIT");
    m_isOpen = false;
}

} // namespace orvane
