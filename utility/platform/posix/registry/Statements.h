#pragma once

#include "utility/platform/Types.h"

#include <cstdint>
#include <memory>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace utility::platform::posix
{

/// A statement of a database, which its first use prepares.
class Statement
{
public:
    explicit Statement(const char* text) noexcept : m_text(text) {}

    /// Null, with the reason in `result`, if it cannot be prepared.
    sqlite3_stmt* Prepare(sqlite3* database, int& result);

private:
    struct Closer
    {
        void operator()(sqlite3_stmt* statement) const;
    };

    const char* m_text;
    std::unique_ptr<sqlite3_stmt, Closer> m_prepared;
};

/// All that is asked of a hive's database.
struct Statements
{
    Statement applicationId{"pragma application_id"};
    Statement userVersion{"pragma user_version"};
    Statement journalMode{"pragma journal_mode"};
    Statement begin{"begin immediate"};
    Statement commit{"commit"};
    Statement rollback{"rollback"};
    Statement keyExists{"select 1 from keys where id = ?1"};
    Statement findKey{"select id from keys where parent = ?1 and fold = ?2"};
    Statement insertKey{"insert into keys (parent, fold, name) values (?1, ?2, ?3)"};
    Statement deleteValuesOfTree{
        "with recursive tree (id) as (select ?1 union select keys.id from keys join tree on keys.parent = tree.id) "
        "delete from \"values\" where key in tree"};
    Statement deleteKeysOfTree{
        "with recursive tree (id) as (select ?1 union select keys.id from keys join tree on keys.parent = tree.id) "
        "delete from keys where id in tree and id <> 1"}; // the root stays
    Statement queryValue{"select type, data from \"values\" where key = ?1 and fold = ?2"};
    Statement setValue{"insert into \"values\" (key, fold, name, type, data) "
                       "select ?1, ?2, ?3, ?4, ?5 where exists (select 1 from keys where id = ?1) "
                       "on conflict (key, fold) do update set type = excluded.type, data = excluded.data"};
    Statement removeValue{"delete from \"values\" where key = ?1 and fold = ?2"};
    // So many names behind another.
    Statement keyAtIndex{
        "select fold, name from keys where parent = ?1 and fold >= ?2 order by fold limit 1 offset ?3"};
    Statement valueAtIndex{"select fold, name, type, data from \"values\" where key = ?1 and fold >= ?2 "
                           "order by fold limit 1 offset ?3"};
    Statement countKeys{"select count(*), max(length(name)) from keys where parent = ?1"};
    Statement countValues{"select count(*), max(length(name)), max(length(data)) from \"values\" where key = ?1"};
};

/// One use of a prepared statement.
class Run
{
public:
    Run(sqlite3* database, Statement& statement);
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run();

    /// Gives a value to the next parameter. Bytes and texts stay the caller's, until the end of the run.
    Run& Bind(std::int64_t value);
    Run& Bind(std::string_view text);
    Run& BindBytes(std::string_view bytes);

    /// Goes to the next row; false at the end and on failure.
    bool Next();
    LSTATUS ToTheEnd();
    LSTATUS Status() const;

    std::int64_t Integer(int column);
    std::string_view Bytes(int column);

private:
    sqlite3* m_database;
    int m_result = 0; ///< of the latest call, the preparation being the first
    sqlite3_stmt* m_statement;
    int m_bound = 0;
};

/// Is undone unless its end is reached.
class Transaction
{
public:
    Transaction(sqlite3* database, Statements& statements);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    LSTATUS Begun() const { return m_begun; }
    LSTATUS End();

private:
    sqlite3* m_database;
    Statements& m_statements;
    LSTATUS m_begun;
};

}
