// Owners of libpff's handles, and conversion of its failures to exceptions.
#pragma once

#include "tools/common/Property.h"

#include <libpff.h>

#include <memory>
#include <string>

namespace zeb::tools::pff
{

/// Throws ToolError with `what` and libpff's error text when `result` is -1; otherwise returns it.
int Check(int result, libpff_error_t*& error, const std::string& what);

struct FreeItem
{
    void operator()(libpff_item_t* item) const { libpff_item_free(&item, nullptr); }
};
/// A folder, message, attachment or recipient list. Must be released before the file is closed.
using Item = std::unique_ptr<libpff_item_t, FreeItem>;

/// Takes over the item that a call returns: `call(libpff_item_t**, libpff_error_t**)`.
/// @return empty when there is none
template <class Call>
Item Take(const std::string& what, Call&& call)
{
    libpff_item_t* raw = nullptr;
    libpff_error_t* error = nullptr;
    const int result = call(&raw, &error);
    Item item(raw);
    Check(result, error, what);
    return item;
}

/// A number that a call returns: `call(int*, libpff_error_t**)`.
template <class Call>
int Number(const std::string& what, Call&& call)
{
    int number = 0;
    libpff_error_t* error = nullptr;
    Check(call(&number, &error), error, what);
    return number;
}

/// The properties of one record set of an item, each with its tag, type, value and name.
/// @throws ToolError for a value that cannot be read
Properties ReadRecordSet(libpff_item_t* item, int index);

/// The number of record sets: one for messages and folders, one per recipient for recipient lists.
int RecordSets(libpff_item_t* item);

} // namespace zeb::tools::pff
