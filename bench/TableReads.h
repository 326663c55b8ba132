// What is measured on contents tables of any size.
#pragma once

#include "zebapi/ZebAPI.h"

#include <memory>
#include <random>

namespace bench
{

constexpr LONG ListWindow = 50;

void SetListColumns(CZebTable& table);
/// Sets the columns and sorts.
void SortBySubject(CZebTable& table);
/// Reads the next ListWindow rows. @throws std::runtime_error unless there are `expected`
void ReadWindow(CZebTable& table, ULONG expected);
/// The seconds to open a contents table, to count its rows and to read the first.
double OpenOnce(CZebFolder& folder, ULONG count);

/// An open table after a first seek, and the positions to read next.
class SoughtTable
{
public:
    /// @param owner of the folder
    SoughtTable(std::shared_ptr<void> owner, CZebFolder& folder, ULONG count);
    double Windows(int count);

private:
    std::shared_ptr<void> m_owner;
    CZebTable m_table;
    std::mt19937 m_random{20260101};
    std::uniform_int_distribution<ULONG> m_positions;
};

} // namespace bench
