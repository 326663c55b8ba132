// Pins the slots of virtual operations. A class's slots are numbered in the order of its table of operations, the
// destructor as one; derived classes go on where their base ends.
#pragma once

#include "tests/support/Slot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace zeb::test
{

/// A virtual member after all those of a class.
template <class Base>
class Following : public Base
{
public:
    virtual void Last() {}
};

struct SlotRow
{
    size_t number;
    std::string name;
    size_t entry;
};

struct SlotTable
{
    size_t first; ///< the first slot that the class adds
    size_t count; ///< all its slots
    size_t destructor;
    size_t following; ///< the entry after its last one
    std::vector<SlotRow> rows;
};

/// Every class with its rows, filled before the tests run.
inline std::map<std::string, SlotTable>& SlotTables()
{
    static std::map<std::string, SlotTable> tables;
    return tables;
}

/// The number of an operation that has no slot of its own.
inline constexpr size_t NoSlot = static_cast<size_t>(-1);

template <class Class, class Function>
using MemberOf = Function Class::*;

// An explicit instantiation may name members that are not accessible otherwise.
template <class Tag, typename Tag::Pointer Member>
struct Registered
{
    static bool Register()
    {
        if (Tag::Number != NoSlot)
        {
            SlotTables()[Tag::Class()].rows.push_back({Tag::Number, Tag::Name(), SlotOf(Member)});
        }
        return true;
    }
    static inline const bool s_done = Register();
};

template <class Tag>
struct RegisteredTable
{
    static bool Register()
    {
        SlotTable& table = SlotTables()[Tag::Class()];
        table.first = Tag::First;
        table.count = Tag::Count;
        table.destructor = Tag::Destructor;
        table.following = SlotOf(&Following<typename Tag::Type>::Last);
        return true;
    }
    static inline const bool s_done = Register();
};

#define ZEB_JOIN2(a, b) a##b
#define ZEB_JOIN(a, b) ZEB_JOIN2(a, b)

/// A class: the first slot that it adds, the number of all its slots, the slot of the destructor.
#define SLOTS(CLASS, FIRST, COUNT, DESTRUCTOR)                                                                         \
    namespace                                                                                                          \
    {                                                                                                                  \
    struct ZEB_JOIN(Table, __LINE__)                                                                                   \
    {                                                                                                                  \
        using Type = CLASS;                                                                                            \
        static const char* Class()                                                                                     \
        {                                                                                                              \
            return #CLASS;                                                                                             \
        }                                                                                                              \
        static constexpr size_t First = FIRST;                                                                         \
        static constexpr size_t Count = COUNT;                                                                         \
        static constexpr size_t Destructor = DESTRUCTOR;                                                               \
    };                                                                                                                 \
    }                                                                                                                  \
    template struct RegisteredTable<ZEB_JOIN(Table, __LINE__)>;

/// An operation: its class, its slot, its name, and its type last.
#define SLOT(CLASS, NUMBER, MEMBER, ...)                                                                               \
    namespace                                                                                                          \
    {                                                                                                                  \
    struct ZEB_JOIN(Row, __LINE__)                                                                                     \
    {                                                                                                                  \
        using Pointer = MemberOf<CLASS, __VA_ARGS__>;                                                                  \
        static const char* Class()                                                                                     \
        {                                                                                                              \
            return #CLASS;                                                                                             \
        }                                                                                                              \
        static const char* Name()                                                                                      \
        {                                                                                                              \
            return #MEMBER " as " #__VA_ARGS__;                                                                        \
        }                                                                                                              \
        static constexpr size_t Number = NUMBER;                                                                       \
    };                                                                                                                 \
    }                                                                                                                  \
    template struct Registered<ZEB_JOIN(Row, __LINE__), &CLASS::MEMBER>;

} // namespace zeb::test
