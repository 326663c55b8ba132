#include "fuzz/StoreDamage.h"

#include "fuzz/Require.h"
#include "zebstore/storage/Checksum.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/PropertyBlob.h"

#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <vector>

namespace
{

using namespace zebstore;

constexpr int MostEdits = 4;

struct TableOfFile
{
    std::string name;
    std::vector<std::string> columns;
    std::string key; // the columns that name a row
};

std::string_view BytesOf(sqlite3_value* value)
{
    const void* bytes = sqlite3_value_blob(value);
    return {static_cast<const char*>(bytes), static_cast<size_t>(sqlite3_value_bytes(value))};
}

void Sealed(sqlite3_context* context, int, sqlite3_value** values)
{
    const std::string sealed = PropertyBlob::Sealed(BytesOf(values[0]));
    sqlite3_result_blob64(context, sealed.data(), sealed.size(), SQLITE_TRANSIENT);
}

void SumOfPiece(sqlite3_context* context, int, sqlite3_value** values)
{
    sqlite3_result_int64(context, PieceChecksum(sqlite3_value_int64(values[0]), BytesOf(values[1])));
}

void SumOfRun(sqlite3_context* context, int, sqlite3_value** values)
{
    const auto group = static_cast<std::uint64_t>(sqlite3_value_int64(values[0]));
    sqlite3_result_int64(context, static_cast<sqlite3_int64>(Checksum(BytesOf(values[1]), group)));
}

// A connection past the store's rules: no triggers, no foreign keys, no checks of columns.
class Rows
{
public:
    explicit Rows(const std::string& path)
    {
        ::Require(sqlite3_open(path.c_str(), &m_handle) == SQLITE_OK, "the sample can be opened");
        sqlite3_db_config(m_handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
        Run("PRAGMA foreign_keys=OFF; PRAGMA ignore_check_constraints=ON; PRAGMA synchronous=OFF");
        sqlite3_create_function(m_handle, "sealed", 1, SQLITE_UTF8, nullptr, Sealed, nullptr, nullptr);
        sqlite3_create_function(m_handle, "piece_sum", 2, SQLITE_UTF8, nullptr, SumOfPiece, nullptr, nullptr);
        sqlite3_create_function(m_handle, "run_sum", 2, SQLITE_UTF8, nullptr, SumOfRun, nullptr, nullptr);
    }
    ~Rows() { sqlite3_close(m_handle); }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    // What SQLite refuses stays as it is.
    void Run(const std::string& sql) { sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr); }

    const std::vector<TableOfFile>& Tables()
    {
        static const std::vector<TableOfFile> tables = ReadTables();
        return tables;
    }

    // In the first row, `?2`-th by key, sets the column to the parameter ?1 by `expression`.
    void SetCell(const TableOfFile& table, const std::string& column, int row, const std::string& expression,
                 const std::string& bytes)
    {
        const std::string sql = "UPDATE \"" + table.name + "\" SET \"" + column + "\"=" + expression + Where(table);
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_handle, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK)
        {
            sqlite3_bind_blob(statement, 1, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
            sqlite3_bind_int(statement, 2, row);
            sqlite3_step(statement);
        }
        sqlite3_finalize(statement);
    }

    void Delete(const TableOfFile& table, int row)
    {
        std::string where = Where(table);
        where.replace(where.find("?2"), 2, std::to_string(row));
        Run("DELETE FROM \"" + table.name + "\"" + where);
    }

    void SealAll()
    {
        for (const char* table : {"store", "folder", "message", "recipient", "attachment", "address", "directory"})
        {
            Run("UPDATE " + std::string(table) + " SET props=sealed(props) WHERE props IS NOT NULL");
        }
        Run("UPDATE chunk SET sum=piece_sum(id, bytes)");
        Run("UPDATE date_run SET sum=run_sum(id, dates)");
    }

private:
    static std::string Where(const TableOfFile& table)
    {
        return " WHERE (" + table.key + ")=(SELECT " + table.key + " FROM \"" + table.name + "\" ORDER BY " +
               table.key + " LIMIT 1 OFFSET ?2)";
    }

    std::vector<std::vector<std::string>> Select(const std::string& sql)
    {
        std::vector<std::vector<std::string>> rows;
        const auto add = [](void* to, int count, char** values, char**)
        {
            auto& all = *static_cast<std::vector<std::vector<std::string>>*>(to);
            all.emplace_back();
            for (int i = 0; i < count; ++i)
            {
                all.back().emplace_back(values[i] == nullptr ? "" : values[i]);
            }
            return 0;
        };
        sqlite3_exec(m_handle, sql.c_str(), add, &rows, nullptr);
        return rows;
    }

    std::vector<TableOfFile> ReadTables()
    {
        std::vector<TableOfFile> tables;
        for (const auto& name : Select("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name"))
        {
            TableOfFile table{name[0], {}, {}};
            for (const auto& column : Select("SELECT name, pk FROM pragma_table_info('" + name[0] + "')"))
            {
                table.columns.push_back(column[0]);
                if (column[1] != "0")
                {
                    table.key += (table.key.empty() ? "\"" : ", \"") + column[0] + "\"";
                }
            }
            table.key = table.key.empty() ? "rowid" : table.key;
            tables.push_back(table);
        }
        return tables;
    }

    sqlite3* m_handle = nullptr;
};

// Numbers at which something begins or ends.
std::int64_t Number(FuzzedDataProvider& input)
{
    constexpr std::int64_t Special[] = {0,
                                        1,
                                        -1,
                                        255,
                                        256,
                                        32768,
                                        65535,
                                        std::int64_t{1} << 30,
                                        std::int64_t{1} << 31,
                                        std::int64_t{1} << 32,
                                        std::int64_t{6} << 33 | 1,
                                        std::numeric_limits<std::int64_t>::max(),
                                        std::numeric_limits<std::int64_t>::min()};
    return input.ConsumeBool() ? input.PickValueInArray(Special) : input.ConsumeIntegral<std::int64_t>();
}

void EditCell(Rows& rows, const TableOfFile& table, FuzzedDataProvider& input)
{
    const std::string column = table.columns[input.ConsumeIntegralInRange<size_t>(0, table.columns.size() - 1)];
    const int row = input.ConsumeIntegralInRange<int>(0, 20);
    const std::string cell = "\"" + column + "\"";
    switch (input.ConsumeIntegralInRange<int>(0, 6))
    {
    case 0:
        return rows.SetCell(table, column, row, "NULL", {});
    case 1:
        return rows.SetCell(table, column, row, std::to_string(Number(input)), {});
    case 2:
        return rows.SetCell(table, column, row,
                            "CAST(" + cell + " AS INTEGER)+" + std::to_string(input.ConsumeIntegral<std::int8_t>()),
                            {});
    case 3:
        return rows.SetCell(table, column, row, "CAST(?1 AS TEXT)", input.ConsumeRandomLengthString(64));
    case 4:
        return rows.SetCell(table, column, row, "?1", input.ConsumeRandomLengthString(64));
    case 5:
        // A part of what is there is replaced; it may become shorter.
        return rows.SetCell(table, column, row,
                            "CAST(substr(" + cell + ", 1, " + std::to_string(input.ConsumeIntegral<std::uint8_t>()) +
                                ") || ?1 || substr(" + cell + ", " +
                                std::to_string(input.ConsumeIntegral<std::uint8_t>()) + ") AS BLOB)",
                            input.ConsumeRandomLengthString(16));
    default:
        // The cell of another row.
        return rows.SetCell(table, column, row,
                            "(SELECT o." + cell + " FROM \"" + table.name + "\" o LIMIT 1 OFFSET " +
                                std::to_string(input.ConsumeIntegralInRange<int>(0, 20)) + ")",
                            {});
    }
}

void EditRows(const std::string& path, FuzzedDataProvider& input)
{
    Rows rows(path);
    const std::vector<TableOfFile>& tables = rows.Tables();
    const int edits = input.ConsumeIntegralInRange<int>(1, MostEdits);
    for (int i = 0; i < edits; ++i)
    {
        const TableOfFile& table = tables[input.ConsumeIntegralInRange<size_t>(0, tables.size() - 1)];
        const int what = input.ConsumeIntegralInRange<int>(0, 31);
        if (what == 0)
        {
            rows.Run("PRAGMA user_version=" + std::to_string(input.ConsumeIntegralInRange<int>(0, 8)));
        }
        else if (what < 4)
        {
            rows.Delete(table, input.ConsumeIntegralInRange<int>(0, 20));
        }
        else
        {
            EditCell(rows, table, input);
        }
    }
    if (input.ConsumeBool())
    {
        rows.SealAll();
    }
}

void EditBytes(const std::string& path, FuzzedDataProvider& input)
{
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint32_t>(file.tellg());
    const int edits = input.ConsumeIntegralInRange<int>(1, MostEdits);
    for (int i = 0; i < edits; ++i)
    {
        file.seekp(input.ConsumeIntegralInRange<std::uint32_t>(0, size - 1));
        const std::string bytes = input.ConsumeRandomLengthString(8);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
}

} // namespace

StoreDamage DamageStore(const std::string& path, FuzzedDataProvider& input)
{
    StoreDamage damage;
    const int what = input.ConsumeIntegralInRange<int>(0, 7);
    damage.rows = what != 0;
    damage.bytes = what <= 1;
    if (damage.rows)
    {
        EditRows(path, input);
    }
    if (damage.bytes)
    {
        EditBytes(path, input);
    }
    return damage;
}
