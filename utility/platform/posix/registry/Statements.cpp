#include "utility/platform/posix/registry/Statements.h"

#include "utility/platform/posix/registry/Sqlite.h"
#include "utility/platform/posix/registry/Status.h"

namespace utility::platform::posix
{

sqlite3_stmt* Statement::Prepare(sqlite3* database, int& result)
{
    if (!m_prepared)
    {
        sqlite3_stmt* statement = nullptr;
        result = sqlite.prepare_v3(database, m_text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
        m_prepared.reset(statement);
    }
    return m_prepared.get();
}

void Statement::Closer::operator()(sqlite3_stmt* statement) const { sqlite.finalize(statement); }

Run::Run(sqlite3* database, Statement& statement)
    : m_database(database), m_statement(statement.Prepare(database, m_result))
{
}

Run::~Run() { sqlite.reset(m_statement); }

Run& Run::Bind(std::int64_t value)
{
    sqlite.bind_int64(m_statement, ++m_bound, value);
    return *this;
}

Run& Run::Bind(std::string_view text)
{
    sqlite.bind_text(m_statement, ++m_bound, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    return *this;
}

Run& Run::BindBytes(std::string_view bytes)
{
    // A null pointer would stand for no value at all.
    sqlite.bind_blob64(m_statement, ++m_bound, bytes.empty() ? "" : bytes.data(), bytes.size(), SQLITE_STATIC);
    return *this;
}

bool Run::Next()
{
    if (m_statement != nullptr)
        m_result = sqlite.step(m_statement);
    return m_result == SQLITE_ROW;
}

LSTATUS Run::ToTheEnd()
{
    while (Next())
        ;
    return Status();
}

LSTATUS Run::Status() const { return StatusOf(m_result, m_database); }

std::int64_t Run::Integer(int column) { return sqlite.column_int64(m_statement, column); }

std::string_view Run::Bytes(int column)
{
    const auto* const data = static_cast<const char*>(sqlite.column_blob(m_statement, column));
    return {data, static_cast<std::size_t>(sqlite.column_bytes(m_statement, column))};
}

Transaction::Transaction(sqlite3* database, Statements& statements)
    : m_database(database), m_statements(statements), m_begun(Run(database, statements.rollback).Status())
{
    // What undoes it is prepared ahead: what has to be undone may be for want of memory.
    if (m_begun == success)
        m_begun = Run(database, statements.begin).ToTheEnd();
}

Transaction::~Transaction()
{
    // Some failures have rolled back already.
    if (sqlite.get_autocommit(m_database) == 0)
        Run(m_database, m_statements.rollback).ToTheEnd();
}

LSTATUS Transaction::End() { return Run(m_database, m_statements.commit).ToTheEnd(); }

}
