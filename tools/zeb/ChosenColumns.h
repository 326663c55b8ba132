// The columns of a message list that the user chose.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/zeb/MessageRows.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// One column: a part of the MessageRow, or a property.
struct ChosenColumn
{
    std::string name;                                                                        ///< as the user wrote it
    std::string (*text)(const MessageRow& row, const FolderPath& path, Zone zone) = nullptr; ///< null for a property
    Json (*value)(const MessageRow& row, const FolderPath& path) = nullptr;                  ///< null for a property
    Property property;
    size_t index = 0; ///< of the property in MessageRow::more
    bool isDate = false;
    bool isNumber = false; ///< aligned to the right
};

class ChosenColumns
{
public:
    /// @param list names with commas between them: "number,date,subject,PR_IMPORTANCE"; empty for none
    /// @throws UsageError naming an unknown column
    explicit ChosenColumns(const std::string& list);

    /// Gives named properties their tags in the store of `object`. @throws CZebException*
    void Resolve(CZebIProp& object);

    bool IsEmpty() const { return m_columns.empty(); }
    /// The properties' tags, as MessageRow::more has them.
    std::vector<ULONG> Tags() const;
    /// The lines of a table, the heading first, each with its line end.
    /// @param terminal the terminal's columns; 0 for no limit
    std::vector<std::string> Lines(const std::vector<MessageRow>& rows, const FolderPath& path, Zone zone,
                                   size_t terminal) const;
    /// A row as a JSON object with these members.
    Json RowForMachines(const MessageRow& row, const FolderPath& path) const;
    /// The names that are not properties, with commas between them.
    static std::string KnownNames();

private:
    void Add(const std::string& name);
    std::vector<std::string> Headings(Zone zone) const;
    std::vector<std::string> Cells(const MessageRow& row, const FolderPath& path, Zone zone) const;

    std::vector<ChosenColumn> m_columns;
};

} // namespace zeb::tools
