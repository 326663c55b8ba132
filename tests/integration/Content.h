// The content of a folder, read through its tables.
#pragma once

#include "tests/integration/Host.h"

#include <string>
#include <vector>

namespace zeb::test
{

using Names = std::vector<std::string>;

/// One text column of every row, in the table's order.
inline Names Column(CZebTable table, ULONG tag)
{
    table.SetColumns(1, tag);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    Names names;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        names.push_back(rows[i][tag].String(true).GetString());
    }
    return names;
}

inline Names SubjectsOf(CZebFolder& folder, ULONG flags = 0)
{
    return Column(folder.GetContentsTable(flags), PR_SUBJECT_A);
}

inline Names SubfoldersOf(CZebFolder& folder, ULONG flags = 0)
{
    return Column(folder.GetHierarchyTable(flags), PR_DISPLAY_NAME_A);
}

/// Saves a message with a subject in the folder.
inline CZebMessage SaveMessage(CZebFolder& folder, const char* subject, ULONG flags = 0)
{
    CZebPropValArray properties(1);
    properties[PR_SUBJECT_A] = subject;
    return folder.CreateMessage(properties, true, flags);
}

inline CZebFolder MakeFolder(CZebFolder& parent, const char* name)
{
    return parent.CreateFolder(name, false, true, 0, nullptr, FOLDER_GENERIC);
}

/// Whether the object has the property with this value.
inline bool HasTrue(CZebIProp& object, ULONG tag)
{
    CZebPropValArray values;
    object.GetProps(values, 1, tag);
    return values.hasRealValue(tag) && static_cast<bool>(values[tag]);
}

inline LONG NumberOf(CZebIProp& object, ULONG tag)
{
    CZebPropValArray values;
    object.GetProps(values, 1, tag);
    return values.hasRealValue(tag) ? static_cast<LONG>(values[tag]) : -1;
}

/// The object's interface, for calls that the wrapper does not have.
template <class Interface>
CComPtr<Interface> InterfaceOf(const CZebIProp& object, const IID& iid)
{
    CComPtr<Interface> result;
    object.GetInterface().QueryInterface(iid, result);
    return result;
}

} // namespace zeb::test
