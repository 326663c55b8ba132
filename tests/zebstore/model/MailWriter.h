// Writes the model's messages through the provider's interfaces and compares them with what it gives.
#pragma once

#include "tests/zebstore/model/StoreModel.h"
#include "tests/zebstore/provider/ProviderFixture.h"
#include "tests/zebstore/storage/TableCopy.h"

#include <stdexcept>

namespace zebstore::model
{

/// The provider says something else than the model.
class Difference : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// @throws Difference when the call did not return what it must
void Check(HRESULT result, HRESULT expected, const std::string& call);
void Check(bool isRight, const std::string& text);

/// Sets the values; those of a missing value are deleted.
void Write(IMAPIProp& object, const Properties& before, const Properties& after);
void WriteRecipients(IMessage& message, const Mail& mail);
/// Adds an attachment and writes its number into its properties.
void WriteAttachment(IMessage& message, Properties& attachment);
void RemoveAttachment(IMessage& message, const Properties& attachment);

/// Creates and saves the message with all that it has; it gets its identifiers.
void Create(IMAPIFolder& folder, Mail& mail);
/// The properties, recipients and attachments are those of the model, and there are no others.
void Compare(IMessage& message, const Mail& mail);
void TakeIdentifiers(IMAPIProp& object, std::vector<BYTE>& id, std::string& key);

/// All rows of a table with these columns, from its beginning to its end.
test::CopiedRows ReadRows(IMAPITable& table);
void SetColumns(IMAPITable& table, const std::vector<ULONG>& columns);
void SortBy(IMAPITable& table, const Order& order);
/// @param restriction null: none
void RestrictTo(IMAPITable& table, const Condition* restriction);

} // namespace zebstore::model
