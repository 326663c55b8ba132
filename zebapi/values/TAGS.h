// Arrays of property tags, and the names of MAPI's constants.
#pragma once

#include "platform/export.h"
#include "platform/mapi.h"
#include "platform/overloads.h"

#include <cstdarg>
#include <cstdint>

class CZebIProp;

/// Owns an SPropTagArray in a top-level MAPI buffer of exactly 4 + 4 * count bytes: a column set or a list of
/// properties. It grows by exact reallocation. Threads: none of its own.
class ZEBAPI_EXPORT CZebPropTagArray
{
protected:
    /// Replaces the buffer by one for `n` tags, which keeps the tags up to the smaller size; the count stays.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    virtual void Allocate(int n);

public:
    virtual ~CZebPropTagArray();
    virtual void Empty();
    /// The number of tags; 0 without a buffer.
    virtual int GetCount() const;
    /// Whether there is a buffer, even one of no tags.
    virtual bool IsValid() const;
    /// Appends one tag. @throws CZebException* as Allocate does.
    virtual void AddOne(ULONG tag);
    ZEB_OVERLOADS(
        /// Appends `tag`, whatever it is, and then the tags of an argument list up to the first 0, growing
        /// once. The list is left behind that 0.
        ///
        /// Inside a function that received its va_list as a parameter, this overload may lose to the variadic
        /// one, which would read the list itself as a tag: call AddList there.
        virtual void Add(ULONG tag, va_list& args),
        /// Appends `tag`, whatever it is, and then the further tags up to the first 0, which must be there.
        virtual void Add(ULONG tag, ...));
    /// Holds a copy; a source without a buffer, and assigning the object to itself, empties it.
    virtual CZebPropTagArray& operator=(const CZebPropTagArray& source);
    /// Tag `i`, without a bounds check.
    virtual ULONG operator[](int i) const;
    /// The array, borrowed. @throws CZebException* E_INVALIDARG without a buffer.
    virtual operator SPropTagArray*();
    /// Empties the object and gives the address of its pointer, for a MAPI call to fill.
    virtual SPropTagArray** operator&();
    /// Replaces every tag by the object's real one, so that tags of named properties become those of its
    /// store. When it throws, the tags are as they were.
    /// @throws CZebException* E_INVALIDARG without a buffer; what CZebIProp::GetRealTag throws; as Allocate does.
    virtual void ApplyTo(CZebIProp& object);

    CZebPropTagArray();
    CZebPropTagArray(const CZebPropTagArray& source);

    /// Appends exactly `count` tags of an argument list, whatever they are, growing once; a count of 0 makes
    /// an array of no tags, which is valid. The list is left behind the last tag.
    /// @throws CZebException* as Allocate does.
    void Gather(ULONG count, va_list& args);
    /// Add(tag, args) for a list that came as a parameter; the caller's list is not moved.
    void AddList(ULONG tag, va_list args);

private:
    /// Allocates for `more` tags than there are.
    void Grow(std::uint64_t more);

    SPropTagArray* m_tags = nullptr; ///< owned
};

/// One constant of a table: its value and its name.
struct ZebNamedValue
{
    ULONG value;
    const char* name;
};

/// A table of constants, in its fixed order.
struct ZebNameTable
{
    const char* name;
    ULONG count;
    const ZebNamedValue* rows;
};

// The names of MAPI's constants, in 22 tables: MAPIErrors, CMCErrors, PropTags (by full tag; text properties
// as PT_STRING8), PropIDs (by property identifier), PropType, FolderType, TableStatus, TableType, SortOrder,
// RestrictionType, RelOp, Bmr, FuzzyLevel, MAPIObjTypes, NotifEvents, TableEvents, MsgFlags, RecipType,
// EIDFlags, ResourceType, Priority and AttachMethod. A table's name is found without regard to case. An
// unknown table, or a null name, answers as a row that is not found. The longest name has 43 characters: give
// buffers of at least 44. Nothing here throws, and every function may be called from any thread.

/// The name of the first row with this value, in `buffer` when there is one; without a buffer the pointer
/// stays good. Not found: null, and the buffer then holds the value as "0x%08X".
ZEBAPI_EXPORT const char* Zeb_NameFromValue(const char* table, ULONG value, char* buffer = nullptr);
/// The name of a row, copied into `buffer`. Past the last row: null, and the buffer says "Row %lu Not Found".
ZEBAPI_EXPORT const char* Zeb_NameAt(const char* table, ULONG index, char* buffer);
/// The value of a row; 0 past the last.
ZEBAPI_EXPORT ULONG Zeb_ValueAt(const char* table, ULONG index);
/// The number of rows.
ZEBAPI_EXPORT ULONG Zeb_TableCount(const char* table);
/// The value of the first row with this name, compared with regard to case. 1 when found, else 0 with `value`
/// left alone.
ZEBAPI_EXPORT int Zeb_ValueFromName(const char* table, const char* name, ULONG* value);
