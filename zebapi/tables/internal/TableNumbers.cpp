#include "zebapi/tables/internal/TableNumbers.h"

#include "zebapi/tables/internal/Locks.h"

#include <map>
#include <tuple>

namespace zeb
{
namespace
{

using Key = std::tuple<const IMAPITable*, TableNumber, ULONG>;

// Far above the usual numbers of tables, and above the three standard bookmarks.
constexpr ULONG FirstSubstitute = 0xC0000000;

/// The substitutes of the process. A table that is released without freeing a number leaves its entry here. An entry is
/// never confused with a number of another table at the same address, because ShortNumber never returns a number that
/// has an entry.
struct Substitutes
{
    lockorder::MutexOf<lockorder::Numbers> lock;
    std::map<Key, ULONG_PTR> numbers;
    ULONG next = FirstSubstitute;
};

Substitutes& The()
{
    static Substitutes substitutes;
    return substitutes;
}

} // namespace

ULONG ShortNumber(const IMAPITable* table, TableNumber kind, ULONG_PTR number)
{
    Substitutes& all = The();
    const std::lock_guard hold(all.lock);
    ULONG given = static_cast<ULONG>(number);
    if (given == number && all.numbers.count(Key(table, kind, given)) == 0)
    {
        return given;
    }
    do
    {
        given = all.next++;
        if (all.next == 0)
        {
            all.next = FirstSubstitute;
        }
    } while (!all.numbers.emplace(Key(table, kind, given), number).second);
    return given;
}

ULONG_PTR WholeNumber(const IMAPITable* table, TableNumber kind, ULONG given) noexcept
{
    Substitutes& all = The();
    const std::lock_guard hold(all.lock);
    const auto found = all.numbers.find(Key(table, kind, given));
    return found == all.numbers.end() ? given : found->second;
}

void ForgetNumber(const IMAPITable* table, TableNumber kind, ULONG given) noexcept
{
    Substitutes& all = The();
    const std::lock_guard hold(all.lock);
    all.numbers.erase(Key(table, kind, given));
}

} // namespace zeb
