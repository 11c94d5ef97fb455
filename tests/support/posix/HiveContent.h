#pragma once

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <string>

namespace support
{

/// Everything that is in a hive, as it lies on the disk, "none" if there is no file. Another process could write to it.
inline std::string ContentOf(const boost::filesystem::path& file)
{
    if (!exists(file))
        return "none";
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    std::string content;
    const auto append = [](void* text, int columns, char** values, char**)
    {
        for (int i = 0; i < columns; ++i)
            static_cast<std::string*>(text)->append(values[i] != nullptr ? values[i] : "null").append(1, '|');
        return 0;
    };
    EXPECT_EQ(sqlite3_exec(database,
                           "pragma busy_timeout = 100; begin immediate; pragma integrity_check; select * from keys;"
                           "select key, name, type, quote(data) from \"values\"; rollback",
                           append, &content, nullptr),
              SQLITE_OK)
        << sqlite3_errmsg(database);
    EXPECT_EQ(sqlite3_close(database), SQLITE_OK);
    EXPECT_TRUE(content.starts_with("100|ok|")) << content;
    return content;
}

}
