#include "tests/zebstore/model/MailWriter.h"

#include "platform/tags.h"

namespace zebstore::model
{

namespace
{

std::string HexCode(HRESULT code)
{
    return ReadableTag(static_cast<ULONG>(code));
}

struct FreeRows
{
    void operator()(SRowSet* rows) const { FreeProws(rows); }
};

// Rows of a table of recipients or attachments, by the properties of the model.
void CompareParts(IMAPITable* made, const std::vector<Properties>& expected, const std::vector<Kind>& kinds,
                  ULONG order, const char* what)
{
    const Ref<IMAPITable> table = Ref<IMAPITable>::Adopt(made);
    std::vector<ULONG> columns;
    for (const Kind& kind : kinds)
    {
        columns.push_back(PROP_TAG(kind.types[0], kind.id));
    }
    SetColumns(*table, columns);
    SortBy(*table, {{order, false}});
    const test::CopiedRows rows = ReadRows(*table);
    Check(rows.size() == expected.size(), std::string("the number of ") + what + " is " + std::to_string(rows.size()) +
                                              ", not " + std::to_string(expected.size()));
    for (size_t i = 0; i < rows.size(); ++i)
    {
        for (size_t column = 0; column < columns.size(); ++column)
        {
            // Memory tables show large values, tables of a store do not; both ways of showing one are right.
            const Value value = Shown(expected[i], columns[column]);
            const std::string shown = ShownAs(columns[column], value);
            Check(IsLarge(value) || rows[i].cells[column] == shown,
                  std::string("of the ") + what + " " + ReadableTag(columns[column]) + " is " +
                      Readable(rows[i].cells[column]) + ", not " + Readable(shown));
        }
    }
}

void CompareProperties(IMessage& message, const Mail& mail)
{
    const Item shown = ShownOf(mail);
    for (const Kind& kind : MailColumnKinds())
    {
        const auto found = shown.own.find(kind.id);
        const bool isThere = found != shown.own.end();
        const ULONG tag = PROP_TAG(isThere ? found->second.type : PT_UNSPECIFIED, kind.id);
        HRESULT code = S_OK;
        const Buffer<SPropValue> got = Get(&message, tag, &code);
        Check(code, isThere ? S_OK : MAPI_E_NOT_FOUND, "HrGetOneProp of " + ReadableTag(tag));
        if (!isThere)
        {
            continue;
        }
        Room room;
        const std::string value = test::CellText(*got.Get());
        const std::string expected = test::CellText(room.Mapi(tag, found->second));
        Check(value == expected, ReadableTag(tag) + " is " + Readable(value) + ", not " + Readable(expected));
    }
}

} // namespace

void Check(HRESULT result, HRESULT expected, const std::string& call)
{
    Check(result == expected, call + " returned " + HexCode(result) + ", not " + HexCode(expected));
}

void Check(bool isRight, const std::string& text)
{
    if (!isRight)
    {
        throw Difference(text);
    }
}

void Write(IMAPIProp& object, const Properties& before, const Properties& after)
{
    Room room;
    std::vector<SPropValue> values;
    for (const auto& [id, value] : after)
    {
        const ULONG tag = PROP_TAG(value.type, id);
        const SPropValue made = room.Mapi(tag, value);
        const auto old = before.find(id);
        if (old == before.end() || old->second.type != value.type ||
            test::ValueText(room.Mapi(tag, old->second)) != test::ValueText(made))
        {
            values.push_back(made);
        }
    }
    SPropProblemArray* problems = nullptr;
    if (!values.empty())
    {
        Check(object.SetProps(static_cast<ULONG>(values.size()), values.data(), &problems), S_OK, "SetProps");
        const Buffer<SPropProblemArray> owner(problems);
        Check(problems == nullptr, "SetProps has problems");
    }
    std::vector<ULONG> gone;
    for (const auto& each : before)
    {
        if (after.count(each.first) == 0)
        {
            gone.push_back(PROP_TAG(PT_UNSPECIFIED, each.first));
        }
    }
    if (!gone.empty())
    {
        Check(object.DeleteProps(test::TagArray(gone).Get(), &problems), S_OK, "DeleteProps");
        const Buffer<SPropProblemArray> owner(problems);
        Check(problems == nullptr, "DeleteProps has problems");
    }
}

void WriteRecipients(IMessage& message, const Mail& mail)
{
    Room room;
    std::deque<std::vector<SPropValue>> values;
    std::vector<ADRENTRY> entries;
    for (const Properties& recipient : mail.item.recipients)
    {
        values.emplace_back();
        for (const auto& [id, value] : recipient)
        {
            values.back().push_back(room.Mapi(id << 16, value));
        }
        entries.push_back({0, static_cast<ULONG>(values.back().size()), values.back().data()});
    }
    const Buffer<ADRLIST> list(Allocate(CbNewADRLIST(entries.size())));
    list->cEntries = static_cast<ULONG>(entries.size());
    std::copy(entries.begin(), entries.end(), list->aEntries);
    Check(message.ModifyRecipients(0, list.Get()), S_OK, "ModifyRecipients");
}

void WriteAttachment(IMessage& message, Properties& attachment)
{
    ULONG number = 0;
    IAttach* made = nullptr;
    Check(message.CreateAttach(nullptr, 0, &number, &made), S_OK, "CreateAttach");
    const Ref<IAttach> owner = Ref<IAttach>::Adopt(made);
    Write(*made, {}, attachment);
    Check(made->SaveChanges(0), S_OK, "SaveChanges of an attachment");
    attachment[PROP_ID(PR_ATTACH_NUM)] = Number(PT_LONG, number);
}

void RemoveAttachment(IMessage& message, const Properties& attachment)
{
    const auto number = static_cast<ULONG>(attachment.at(PROP_ID(PR_ATTACH_NUM)).number);
    Check(message.DeleteAttach(number, 0, nullptr, 0), S_OK, "DeleteAttach");
}

void Create(IMAPIFolder& folder, Mail& mail)
{
    IMessage* made = nullptr;
    Check(folder.CreateMessage(nullptr, mail.isAssociated ? MAPI_ASSOCIATED : 0, &made), S_OK, "CreateMessage");
    const Ref<IMessage> message = Ref<IMessage>::Adopt(made);
    Write(*message, {}, mail.item.own);
    if (!mail.item.recipients.empty())
    {
        WriteRecipients(*message, mail);
    }
    for (Properties& attachment : mail.item.attachments)
    {
        WriteAttachment(*message, attachment);
    }
    Check(message->SaveChanges(KEEP_OPEN_READONLY), S_OK, "SaveChanges of a new message");
    TakeIdentifiers(*message, mail.id, mail.key);
}

void Compare(IMessage& message, const Mail& mail)
{
    CompareProperties(message, mail);
    IMAPITable* table = nullptr;
    Check(message.GetRecipientTable(MAPI_UNICODE, &table), S_OK, "GetRecipientTable");
    CompareParts(table, mail.item.recipients, RecipientKinds(), PR_ROWID, "recipients");
    Check(message.GetAttachmentTable(MAPI_UNICODE, &table), S_OK, "GetAttachmentTable");
    CompareParts(table, mail.item.attachments, AttachmentKinds(), PR_ATTACH_NUM, "attachments");
}

void TakeIdentifiers(IMAPIProp& object, std::vector<BYTE>& id, std::string& key)
{
    id = GetBytes(&object, PR_ENTRYID);
    const std::vector<BYTE> bytes = GetBytes(&object, PR_INSTANCE_KEY);
    key.assign(bytes.begin(), bytes.end());
    Check(!id.empty() && !key.empty(), "a saved object has no identifiers");
}

test::CopiedRows ReadRows(IMAPITable& table)
{
    Check(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK, "SeekRow to the beginning");
    SRowSet* set = nullptr;
    Check(table.QueryRows(100000, 0, &set), S_OK, "QueryRows");
    const std::unique_ptr<SRowSet, FreeRows> owner(set);
    test::CopiedRows rows;
    for (ULONG i = 0; i < set->cRows; ++i)
    {
        rows.push_back(test::CopyOf(set->aRow[i]));
    }
    return rows;
}

void SetColumns(IMAPITable& table, const std::vector<ULONG>& columns)
{
    Check(table.SetColumns(test::TagArray(columns).Get(), 0), S_OK, "SetColumns");
}

void SortBy(IMAPITable& table, const Order& order)
{
    std::vector<SSortOrder> keys;
    for (const SortKey& key : order)
    {
        keys.push_back({key.tag, static_cast<ULONG>(key.descending ? TABLE_SORT_DESCEND : TABLE_SORT_ASCEND)});
    }
    Check(table.SortTable(test::SortSet(keys).Get(), 0), S_OK, "SortTable");
}

void RestrictTo(IMAPITable& table, const Condition* restriction)
{
    test::RestrictionMaker maker;
    Room room;
    Check(table.Restrict(restriction != nullptr ? Made(*restriction, maker, room) : nullptr, 0), S_OK, "Restrict");
}

} // namespace zebstore::model
